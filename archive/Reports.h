// Reports.h - the progress record of a running operation, and how the archiver's reports update it.
#pragma once

#include <exception>
#include <string>

#include "ZorArchive.h"
#include "archive/Engine.h"

// ZorArchive::progress always points to one of these.  Its texts live as long as the operation, so
// OnAbort never gets a dangling pointer.
struct ZorProgress final : ZorArchive::ONABORTPARAM {
  ZorProgress() : ONABORTPARAM{} {}

  // An exception that OnAbort threw inside a callback.  It can't pass through the archiver's
  // frames, so the operation rethrows it after the archiver has returned.
  std::exception_ptr thrown;

  // Copy a report of the archiver into the record and return whether OnAbort is to be called.
  // TakeFileReport handles begin, progress and end of each file; TakeRunningReport only progress,
  // for operations that report begin and end themselves.
  bool TakeFileReport(unsigned int state, const ZorProgressRecord& report);
  bool TakeRunningReport(unsigned int state, const ZorProgressRecord& report);

 private:
  std::string reportedName;  // owns the text of fileName after TakeFileReport
};
