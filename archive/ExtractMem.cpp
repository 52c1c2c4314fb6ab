// ExtractMem.cpp - ZorArchive::ExtractMem: one member is unpacked into the caller's memory.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "archive/ExtractOperation.h"
#include "files/Path.h"

namespace {

class ExtractMemOperation final : public ZorExtractOperation {
 public:
  ExtractMemOperation(ZorArchive& object, const char* archivePath, const char* memberName,
                      unsigned char* target, unsigned long capacity)
      : ZorExtractOperation(object, archivePath),
        name(ZorText(memberName)),
        buffer(target),
        // No member is larger than what the archiver can count, so no more is needed.
        size(static_cast<std::uint32_t>(
            std::min<std::uint64_t>(capacity, std::numeric_limits<std::uint32_t>::max()))) {}

 private:
  bool Work() override {
    if (!Begin(1)) return false;
    const ZorCommandLine line = MemberLine(name);
    return FindMember(name) && BeginMember(name) && Accepts(line) && Unpack(line) && EndMember();
  }

  bool Unpack(const ZorCommandLine& line) {
    std::uint32_t written = 0;  // the archiver's result says all that counts
    return CallArchiver([&] {
      return engine.UnlhaExtractMem(nullptr, line.Text(), buffer, size, nullptr, nullptr, &written);
    });
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
