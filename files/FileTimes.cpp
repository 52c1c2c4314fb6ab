// FileTimes.cpp - last-write times as seconds since 1970, and attributes in which a plain file is
// 0.
#include <cstdint>
#include <optional>

#include "ZorFileServices.h"
#include "files/Path.h"

namespace {

// A FILETIME counts 100 nanoseconds since 1601-01-01 00:00:00 UTC; file times here count seconds
// since 1970-01-01 00:00:00 UTC.  Neither knows zones or leap seconds, so converting needs no
// calendar.
constexpr std::uint64_t kTicksPerSecond = 10'000'000;
constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;
// Whatever the width of `long`: volumes store 32 bits.
constexpr long kLastTime = 0x7FFFFFFF;

FILETIME FileTimeOf(long time) {
  const std::uint64_t ticks =
      (static_cast<std::uint64_t>(time) + kSecondsFrom1601To1970) * kTicksPerSecond;
  FILETIME fileTime;
  fileTime.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFF);
  fileTime.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
  return fileTime;
}

// Parts of a second are dropped.
std::optional<long> SecondsOf(const FILETIME& fileTime) {
  const std::uint64_t ticks = std::uint64_t{fileTime.dwHighDateTime} << 32 | fileTime.dwLowDateTime;
  const std::uint64_t seconds = ticks / kTicksPerSecond;
  if (seconds < kSecondsFrom1601To1970) return std::nullopt;
  if (seconds - kSecondsFrom1601To1970 > std::uint64_t{kLastTime}) return std::nullopt;
  return static_cast<long>(seconds - kSecondsFrom1601To1970);
}

// The directory entry of `name`, or of the first that a mask matches.
std::optional<WIN32_FIND_DATAA> EntryOf(const char* name) {
  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA(ZorText(name), &entry);
  if (search == INVALID_HANDLE_VALUE) return std::nullopt;
  FindClose(search);
  return entry;
}

}  // namespace

int ZorSetFileTimeStamp(const char* name, long time) {
  if (time < 0 || time > kLastTime) return 0;
  HANDLE file = CreateFileA(ZorText(name), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 0;
  const FILETIME lastWrite = FileTimeOf(time);
  const BOOL isSet = SetFileTime(file, nullptr, nullptr, &lastWrite);
  CloseHandle(file);
  return isSet;
}

int ZorGetFileTimeStamp(const char* name, long& time) {
  const auto entry = EntryOf(name);
  if (!entry) return 0;
  const auto seconds = SecondsOf(entry->ftLastWriteTime);
  if (!seconds) return 0;
  time = *seconds;
  return 1;
}

int ZorSetFileAttribute(const char* name, unsigned int attribute) {
  return SetFileAttributesA(ZorText(name), attribute != 0 ? attribute : FILE_ATTRIBUTE_NORMAL);
}

int ZorGetFileAttribute(const char* name, unsigned int& attribute) {
  const auto entry = EntryOf(name);
  if (!entry) return 0;
  attribute = entry->dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_NORMAL};
  return 1;
}
