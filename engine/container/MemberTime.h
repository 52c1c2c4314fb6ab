// MemberTime.h - the clocks of member headers (platform/base/Clock.h) with the zone of the machine:
// DOS words are local time of whoever wrote them.
#pragma once

#include "platform/base/Clock.h"

namespace kozor::container {

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
