// Records.h - fills the records that cross the binding.
#pragma once

#include "engine/api/Unlha32.h"
#include "engine/commands/Progress.h"
#include "engine/container/ArchiveIndex.h"

namespace kozor::api {

void FillMemberRecord(const container::Member& member, UnlhaMemberRecord& record);

// Passes an event to a callback; returns false if the callback asks to stop.
bool TellCallback(UnlhaCallback callback, const commands::ProgressEvent& event);

}  // namespace kozor::api
