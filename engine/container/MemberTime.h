// MemberTime.h - the three clocks of member headers: DOS words, UNIX seconds and FILETIMEs.
//
// A FILETIME here is one number: 100 ns since 1601-01-01 00:00:00 UTC.  DOS words are local time
// with a grain of two seconds, from 1980 to 2107.
#pragma once

#include <cstdint>

namespace kozor::container {

inline constexpr std::uint64_t kTicksPerSecond = 10'000'000;
inline constexpr std::uint64_t kFileTimeOf1970 = 116'444'736'000'000'000;

constexpr std::uint64_t FileTimeOfUnix(std::uint64_t seconds) {
  return kFileTimeOf1970 + seconds * kTicksPerSecond;
}

// Whole seconds since 1970, rounded down; negative before.
constexpr std::int64_t UnixOfFileTime(std::uint64_t fileTime) {
  const std::uint64_t seconds = fileTime / kTicksPerSecond;
  return static_cast<std::int64_t>(seconds) -
         static_cast<std::int64_t>(kFileTimeOf1970 / kTicksPerSecond);
}

// A moment in DOS words.
struct DosTime {
  std::uint16_t date = 0;  // year - 1980 (7 bits), month (4), day (5)
  std::uint16_t time = 0;  // hour (5 bits), minute (6), second / 2 (5)
};

inline constexpr DosTime kFirstDosTime = {0x21, 0};  // 1980-01-01 00:00:00

// The same moment, or the first that DOS words can hold when these are no date.
DosTime ValidDosTime(DosTime words);

// Local time to UTC, with the zone's offset of that day.
std::uint64_t FileTimeOfDos(DosTime local);

// UTC to local time, rounded down; outside 1980 to 2107 the nearest moment that the words can hold.
// Goes by the zone's present offset, because the system's way back, LocalFileTimeToFileTime, does.
DosTime DosOfFileTime(std::uint64_t fileTime);

// The present moment, in whole seconds.
std::uint64_t CurrentFileTime();

}  // namespace kozor::container
