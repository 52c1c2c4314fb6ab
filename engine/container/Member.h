// Member.h - one member of an archive in the index.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/container/Failure.h"
#include "engine/container/MemberHeader.h"
#include "engine/container/MemberTime.h"

namespace kozor::container {

enum class MemberKind : std::uint8_t {
  File,
  Directory,
  Unlisted,  // a symbolic link, or a member without a usable name: kept, but never shown
};

// The last-write time in a member's header: UTC, or DOS words of local time.  The other form is
// computed on request.
class LastWrite {
 public:
  LastWrite() = default;
  explicit LastWrite(std::uint64_t utc) : fileTime(utc) {}
  explicit LastWrite(DosTime local) : words(ValidDosTime(local)) {}

  bool IsUtc() const { return fileTime != 0; }
  // 100 ns since 1601.
  std::uint64_t Utc() const { return IsUtc() ? fileTime : FileTimeOfDos(words); }
  DosTime Local() const { return IsUtc() ? DosOfFileTime(fileTime) : words; }

 private:
  std::uint64_t fileTime = 0;
  DosTime words = kFirstDosTime;
};

struct Member {
  MemberKind kind = MemberKind::File;
  MethodId method{};
  std::optional<codec::Method> unpacking = {};  // empty if there is no decoder for it
  std::string name;  // as it is shown (MemberName.h); a directory's ends in '\'

  std::uint64_t offset = 0;  // of the header in the file
  std::uint32_t headerBytes = 0;
  std::uint64_t packedBytes = 0;
  std::uint64_t originalBytes = 0;
  std::optional<std::uint16_t> crc;
  std::optional<ResultCode> fault;  // why the data can't be extracted, if already known

  LastWrite lastWrite;
  std::uint16_t attribute = 0;  // DOS bits

  std::uint64_t DataOffset() const { return offset + headerBytes; }
  std::uint64_t EndOffset() const { return DataOffset() + packedBytes; }
};

}  // namespace kozor::container
