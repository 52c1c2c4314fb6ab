// ExtractMem.cpp - ZorArchive::ExtractMem: unpacks one member into the caller's memory.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "archive/MemberOperation.h"
#include "files/Path.h"

namespace {

class ExtractMemOperation final : public ZorUnpackOperation {
 public:
  ExtractMemOperation(ZorArchive& object, const char* archivePath, const char* memberName,
                      unsigned char* target, unsigned long capacity)
      : ZorUnpackOperation(object, archivePath),
        name(ZorText(memberName)),
        buffer(target),
        // The archiver counts in 32 bits, and no member is larger.
        size(static_cast<std::uint32_t>(
            std::min<std::uint64_t>(capacity, std::numeric_limits<std::uint32_t>::max()))) {}

 private:
  void Work() override {
    Begin(1);
    const ZorLineBuilder line = MemberLine(name);
    FindMember(name);
    BeginMember(name);
    RequireSound(line);
    std::uint32_t written = 0;  // not needed: the result code is enough
    CallArchiver([&] {
      return engine.UnlhaExtractMem(nullptr, line.Text(), buffer, size, nullptr, nullptr, &written);
    });
    EndMember();
  }

  const char* const name;
  unsigned char* const buffer;
  const std::uint32_t size;
};

}  // namespace

int ZorArchive::ExtractMem(const char* archive, const char* name, unsigned char* buffer,
                           unsigned long size) {
  return ExtractMemOperation(*this, archive, name, buffer, size).Run();
}
