// CompressMem.cpp - ZorArchive::CompressMem: a block of memory becomes a member.
#include <cstdint>
#include <limits>

#include "archive/CompressOperation.h"
#include "files/Path.h"

namespace {

class CompressMemOperation final : public ZorCompressOperation {
 public:
  CompressMemOperation(ZorArchive& object, const char* archivePath, const char* memberName,
                       const unsigned char* bytes, unsigned long byteCount, int appendMode)
      : ZorCompressOperation(object, archivePath),
        name(ZorText(memberName)),
        data(bytes),
        size(byteCount),
        append(appendMode) {}

 private:
  bool Work() override {
    // Where `long` is wider than the archiver's count, a part of the data must not pass for it.
    if (size > std::numeric_limits<std::uint32_t>::max()) return Fail(ZorErrorFileFailure);
    if (!AcceptsOperand(name)) return false;
    ZorFileList names;
    names.AddTail(name);
    if (!PrepareArchive(append, names) || !Begin(1)) return false;
    BeginSweep();
    return Pack();
  }

  bool Pack() {
    ZorCommandLine line = ArchiveLine("");
    return Accepts(line.Operand(name)) && CallArchiver([&] {
             return engine.UnlhaCompressMem(nullptr, line.Text(), data,
                                            static_cast<std::uint32_t>(size), nullptr, nullptr,
                                            nullptr);
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
