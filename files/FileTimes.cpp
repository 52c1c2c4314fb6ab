// FileTimes.cpp - last-write times as seconds since 1970, and attributes, 0 for a plain file.
#include <cstdint>
#include <optional>

#include "ZorFileServices.h"
#include "files/Path.h"
#include "platform/base/Clock.h"

namespace {

// Independent of the width of `long`: volumes store 32 bits.
constexpr long kLastTime = 0x7FFFFFFF;

// The directory entry of `name`, or of the first match if it is a mask.
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
  const auto ticks = kozor::FileTimeOfUnix(time);
  const auto lastWrite = kozor::FromTicks<FILETIME>(ticks);
  const BOOL isSet = SetFileTime(file, nullptr, nullptr, &lastWrite);
  CloseHandle(file);
  return isSet;
}

int ZorGetFileTimeStamp(const char* name, long& time) {
  const auto entry = EntryOf(name);
  if (!entry) return 0;
  const auto seconds = kozor::UnixIn31Bits(kozor::Ticks(entry->ftLastWriteTime));
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
