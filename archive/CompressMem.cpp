// CompressMem.cpp - ZorArchive::CompressMem: a block of memory becomes a member.
#include <cstdint>
#include <limits>

#include "archive/AddOperation.h"
#include "files/Path.h"

namespace {

class CompressMemOperation final : public ZorAddOperation {
 public:
  CompressMemOperation(ZorArchive& object, const char* archivePath, const char* memberName,
                       const unsigned char* bytes, unsigned long byteCount, int appendMode)
      : ZorAddOperation(object, archivePath),
        name(ZorText(memberName)),
        data(bytes),
        size(byteCount),
        append(appendMode) {}

 private:
  void Work() override {
    // `long` may be wider than the archiver's 32-bit count; truncating it would store only a part.
    if (size > std::numeric_limits<std::uint32_t>::max()) throw ZorFailure{ZorErrorFileFailure};
    RequireSoundOperand(name);
    ZorFileList names;
    names.AddTail(name);
    PrepareArchive(append, names);
    Begin(1);
    BeginSweep();
    Pack();
  }

  void Pack() {
    ZorLineBuilder line = ArchiveLine("");
    RequireSound(line.Operand(name));
    CallArchiver([&] {
      return engine.UnlhaCompressMem(nullptr, line.Text(), data, static_cast<std::uint32_t>(size),
                                     nullptr, nullptr, nullptr);
    });
  }

  const char* const name;
  const unsigned char* const data;
  const unsigned long size;
  const int append;
};

}  // namespace

int ZorArchive::CompressMem(const char* archive, const char* name, const unsigned char* data,
                            unsigned long size, int append) {
  return CompressMemOperation(*this, archive, name, data, size, append).Run();
}
