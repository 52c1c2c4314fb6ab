// MemberTime.h - conversions of header times (platform/base/Clock.h) with the machine's time zone:
// DOS words are in local time.
#pragma once

#include "platform/base/Clock.h"

namespace kozor::container {

// Returns the words, or the earliest DOS time if they aren't a valid date.
DosTime ValidDosTime(DosTime words);

// Converts local time to UTC, with the time zone offset of that date.
std::uint64_t FileTimeOfDos(DosTime local);

// Converts UTC to local time, rounded down; times outside 1980 to 2107 are clamped.  Uses the
// current time zone offset, because LocalFileTimeToFileTime, which converts back, does.
DosTime DosOfFileTime(std::uint64_t fileTime);

// The current time, in whole seconds.
std::uint64_t CurrentFileTime();

}  // namespace kozor::container
