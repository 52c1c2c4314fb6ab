// Records.h - fills the records that cross the binding.
#pragma once

#include "engine/api/Unlha32.h"
#include "engine/commands/Progress.h"
#include "engine/container/ArchiveIndex.h"

namespace kozor::api {

void FillMemberRecord(const container::Member& member, UnlhaMemberRecord& record);

// Hands an event on to a callback; false when the callback asks to stop.
bool TellCallback(UnlhaCallback callback, const commands::ProgressEvent& event);

}  // namespace kozor::api
