// Clock.h - conversions of file times: FILETIME, seconds since 1970, DOS date and time.
//
// A FILETIME is mostly passed as one number: ticks of 100 nanoseconds since 1601-01-01 00:00:00
// UTC.  Neither count includes leap seconds, so they differ by a factor and an offset only.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/base/ByteOrder.h"

namespace kozor {

inline constexpr std::uint64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
inline constexpr std::uint64_t kFileTimeOf1970 = kSecondsFrom1601To1970 * kTicksPerSecond;

static_assert(std::chrono::sys_days(std::chrono::year(1601) / 1 / 1).time_since_epoch() ==
              -std::chrono::seconds(kSecondsFrom1601To1970));

// `seconds` must be at least -kSecondsFrom1601To1970, the year 1601.
constexpr std::uint64_t FileTimeOfUnix(std::int64_t seconds) {
  return static_cast<std::uint64_t>(seconds + kSecondsFrom1601To1970) * kTicksPerSecond;
}

// Whole seconds since 1970, rounded down; negative before.
constexpr std::int64_t UnixOfFileTime(std::uint64_t fileTime) {
  return static_cast<std::int64_t>(fileTime / kTicksPerSecond) - kSecondsFrom1601To1970;
}
// The same in 31 bits, as archives and volumes keep it; none before 1970 and after 2038.
constexpr std::optional<std::int32_t> UnixIn31Bits(std::uint64_t fileTime) {
  const std::int64_t seconds = UnixOfFileTime(fileTime);
  if (seconds < 0 || seconds > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(seconds);
}
// The rest of UnixOfFileTime: nanoseconds within that second.
constexpr std::int32_t NanosecondsOfFileTime(std::uint64_t fileTime) {
  return static_cast<std::int32_t>(fileTime % kTicksPerSecond * (1'000'000'000 / kTicksPerSecond));
}

// The same in a struct timespec.
template <typename Timespec>
constexpr Timespec TimespecOfFileTime(std::uint64_t fileTime) {
  Timespec time{};
  time.tv_sec = UnixOfFileTime(fileTime);
  time.tv_nsec = NanosecondsOfFileTime(fileTime);
  return time;
}

// Convert a FILETIME to ticks and back.
template <typename FileTime>
constexpr std::uint64_t Ticks(const FileTime& time) {
  return JoinHalves(time.dwHighDateTime, time.dwLowDateTime);
}
template <typename FileTime>
constexpr FileTime FromTicks(std::uint64_t ticks) {
  FileTime time{};
  time.dwLowDateTime = static_cast<std::uint32_t>(ticks);
  time.dwHighDateTime = static_cast<std::uint32_t>(ticks >> 32);
  return time;
}

// A DOS date and time: no time zone, a resolution of two seconds.
struct DosTime {
  std::uint16_t date = 0;  // year - 1980 (7 bits), month (4), day (5)
  std::uint16_t time = 0;  // hour (5 bits), minute (6), second / 2 (5)

  constexpr int Year() const { return 1980 + (date >> 9); }
  constexpr int Month() const { return date >> 5 & 15; }
  constexpr int Day() const { return date & 31; }
  constexpr int Hour() const { return time >> 11; }
  constexpr int Minute() const { return time >> 5 & 63; }
  constexpr int Second() const { return (time & 31) * 2; }

  constexpr std::chrono::year_month_day CalendarDay() const {
    return std::chrono::year(Year()) / Month() / Day();
  }
  constexpr bool IsValid() const {
    return CalendarDay().ok() && Hour() < 24 && Minute() < 60 && Second() < 60;
  }
};

inline constexpr DosTime kFirstDosTime = {0x0021, 0x0000};  // 1980-01-01 00:00:00
inline constexpr DosTime kLastDosTime = {0xFF9F, 0xBF7D};   // 2107-12-31 23:59:58

// Reads a valid DOS time as UTC.
constexpr std::uint64_t FileTimeOfDosAsUtc(DosTime dos) {
  using namespace std::chrono;
  const seconds since1970 = sys_days(dos.CalendarDay()).time_since_epoch() + hours(dos.Hour()) +
                            minutes(dos.Minute()) + seconds(dos.Second());
  return FileTimeOfUnix(since1970.count());
}

static_assert(UnixOfFileTime(FileTimeOfDosAsUtc(kFirstDosTime)) == 315'532'800);
static_assert(UnixOfFileTime(FileTimeOfDosAsUtc(kLastDosTime)) == 4'354'819'198);
static_assert(kLastDosTime.IsValid() && !DosTime{0, 0}.IsValid());

}  // namespace kozor
