// Times.cpp - conversions of FILETIME, SYSTEMTIME and DOS times; the clocks.
#include <chrono>
#include <ctime>
#include <limits>

#include "platform/base/Clock.h"
#include "platform/win32/PosixSystem.h"
#include "platform/win32/posix/Metadata.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor;
using namespace kozor::posix;
using namespace std::chrono;

using TickDuration = duration<std::int64_t, std::ratio<1, kTicksPerSecond>>;

constexpr sys_days kFirstDay{year{1601} / January / 1};
constexpr int kLastYear = 30827;
constexpr std::uint64_t kMaxTicks = std::numeric_limits<std::int64_t>::max();

// Converts a calendar day to days since 1601.  std::chrono's years, up to 32767, cover Win32's
// range.
bool DayNumber(int yearNumber, unsigned monthNumber, unsigned dayNumber, std::int64_t& days) {
  const year_month_day date{year{yearNumber}, month{monthNumber}, day{dayNumber}};
  if (!date.ok()) return false;
  days = (sys_days{date} - kFirstDay).count();
  return true;
}

// Adds seconds to a FILETIME; fails if the result is out of range.
BOOL Shift(const FILETIME* from, std::int64_t seconds, LPFILETIME to) {
  const std::uint64_t ticks = Ticks(*from);
  const std::int64_t shift = seconds * std::int64_t{kTicksPerSecond};
  const bool below = shift < 0 && ticks < static_cast<std::uint64_t>(-shift);
  if (ticks > kMaxTicks || below) return Fail(ERROR_INVALID_PARAMETER);
  const std::uint64_t moved = ticks + static_cast<std::uint64_t>(shift);
  if (moved > kMaxTicks) return Fail(ERROR_INVALID_PARAMETER);
  *to = FromTicks<FILETIME>(moved);
  return TRUE;
}

// The current offset from UTC in seconds, positive to the east.
std::int64_t OffsetNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  return local.tm_gmtoff;
}

}  // namespace

BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, LPSYSTEMTIME systemTime) {
  if (Ticks(*fileTime) > kMaxTicks) return Fail(ERROR_INVALID_PARAMETER);
  const TickDuration since(static_cast<std::int64_t>(Ticks(*fileTime)));
  const days wholeDays = duration_cast<days>(since);
  const sys_days date = kFirstDay + wholeDays;
  const year_month_day calendar{date};
  const hh_mm_ss clock{duration_cast<milliseconds>(since - wholeDays)};
  systemTime->wYear = static_cast<WORD>(static_cast<int>(calendar.year()));
  systemTime->wMonth = static_cast<WORD>(static_cast<unsigned>(calendar.month()));
  systemTime->wDayOfWeek = static_cast<WORD>(weekday{date}.c_encoding());
  systemTime->wDay = static_cast<WORD>(static_cast<unsigned>(calendar.day()));
  systemTime->wHour = static_cast<WORD>(clock.hours().count());
  systemTime->wMinute = static_cast<WORD>(clock.minutes().count());
  systemTime->wSecond = static_cast<WORD>(clock.seconds().count());
  systemTime->wMilliseconds = static_cast<WORD>(clock.subseconds().count());
  return TRUE;
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, LPFILETIME fileTime) {
  const SYSTEMTIME& from = *systemTime;
  std::int64_t dayNumber = 0;
  const bool goodClock =
      from.wHour < 24 && from.wMinute < 60 && from.wSecond < 60 && from.wMilliseconds < 1000;
  if (from.wYear < 1601 || from.wYear > kLastYear || !goodClock ||
      !DayNumber(from.wYear, from.wMonth, from.wDay, dayNumber)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const TickDuration since = days{dayNumber} + hours{from.wHour} + minutes{from.wMinute} +
                             seconds{from.wSecond} + milliseconds{from.wMilliseconds};
  *fileTime = FromTicks<FILETIME>(static_cast<std::uint64_t>(since.count()));
  return TRUE;
}

BOOL WINAPI DosDateTimeToFileTime(WORD date, WORD time, LPFILETIME fileTime) {
  const DosTime dos{date, time};
  if (!dos.IsValid()) return Fail(ERROR_INVALID_PARAMETER);
  *fileTime = FromTicks<FILETIME>(FileTimeOfDosAsUtc(dos));
  return TRUE;
}

BOOL WINAPI FileTimeToDosDateTime(const FILETIME* fileTime, LPWORD date, LPWORD time) {
  SYSTEMTIME fields{};
  if (!FileTimeToSystemTime(fileTime, &fields)) return FALSE;
  if (fields.wYear < kFirstDosTime.Year() || fields.wYear > kLastDosTime.Year()) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  *date = static_cast<WORD>((fields.wYear - kFirstDosTime.Year()) << 9 | fields.wMonth << 5 |
                            fields.wDay);
  *time = static_cast<WORD>(fields.wHour << 11 | fields.wMinute << 5 | fields.wSecond / 2);
  return TRUE;
}

BOOL WINAPI LocalFileTimeToFileTime(const FILETIME* localTime, LPFILETIME fileTime) {
  return Shift(localTime, -OffsetNow(), fileTime);
}

BOOL WINAPI FileTimeToLocalFileTime(const FILETIME* fileTime, LPFILETIME localTime) {
  return Shift(fileTime, OffsetNow(), localTime);
}

void WINAPI GetSystemTimeAsFileTime(LPFILETIME fileTime) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  *fileTime = ToFileTime(now);
}

ULONGLONG WINAPI GetTickCount64() {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<ULONGLONG>(now.tv_sec) * 1000 +
         static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}
