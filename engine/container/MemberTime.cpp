// MemberTime.cpp - see MemberTime.h.
#include "engine/container/MemberTime.h"

#include <ctime>

#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

constexpr DosTime kLastDosTime = {0xFF9F, 0xBF7D};  // 2107-12-31 23:59:58
constexpr std::uint64_t kFileTimeOf1980 = FileTimeOfUnix(315'532'800);

FILETIME Split(std::uint64_t fileTime) {
  FILETIME result;
  result.dwLowDateTime = static_cast<DWORD>(fileTime & 0xFFFFFFFF);
  result.dwHighDateTime = static_cast<DWORD>(fileTime >> 32);
  return result;
}

}  // namespace

DosTime ValidDosTime(DosTime words) {
  FILETIME ignored;
  return DosDateTimeToFileTime(words.date, words.time, &ignored) ? words : kFirstDosTime;
}

std::uint64_t FileTimeOfDos(DosTime local) {
  std::tm moment = {};
  moment.tm_year = 80 + (local.date >> 9);
  moment.tm_mon = (local.date >> 5 & 15) - 1;
  moment.tm_mday = local.date & 31;
  moment.tm_hour = local.time >> 11;
  moment.tm_min = local.time >> 5 & 63;
  moment.tm_sec = (local.time & 31) * 2;
  moment.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&moment);
  return seconds < 0 ? kFileTimeOf1980 : FileTimeOfUnix(static_cast<std::uint64_t>(seconds));
}

DosTime DosOfFileTime(std::uint64_t fileTime) {
  const FILETIME utc = Split(fileTime);
  FILETIME local;
  DosTime words;
  if (FileTimeToLocalFileTime(&utc, &local) &&
      FileTimeToDosDateTime(&local, &words.date, &words.time)) {
    return words;
  }
  return fileTime < kFileTimeOf1980 + kTicksPerSecond * 86'400 ? kFirstDosTime : kLastDosTime;
}

std::uint64_t CurrentFileTime() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
  return ticks - ticks % kTicksPerSecond;
}

}  // namespace kozor::container
