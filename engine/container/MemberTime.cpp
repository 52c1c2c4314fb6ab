// MemberTime.cpp - see MemberTime.h.
#include "engine/container/MemberTime.h"

#include <ctime>

#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

constexpr std::uint64_t kFileTimeOf1980 = FileTimeOfDosAsUtc(kFirstDosTime);

}  // namespace

DosTime ValidDosTime(DosTime words) {
  return words.IsValid() ? words : kFirstDosTime;
}

std::uint64_t FileTimeOfDos(DosTime local) {
  std::tm moment = {};
  moment.tm_year = local.Year() - 1900;
  moment.tm_mon = local.Month() - 1;
  moment.tm_mday = local.Day();
  moment.tm_hour = local.Hour();
  moment.tm_min = local.Minute();
  moment.tm_sec = local.Second();
  moment.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&moment);
  return seconds < 0 ? kFileTimeOf1980 : FileTimeOfUnix(seconds);
}

DosTime DosOfFileTime(std::uint64_t fileTime) {
  const auto utc = FromTicks<FILETIME>(fileTime);
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
  return Ticks(now) - Ticks(now) % kTicksPerSecond;
}

}  // namespace kozor::container
