// Reports.h - the progress record of a running operation, and what the archiver contributes to it.
#pragma once

#include <exception>
#include <string>

#include "ZorArchive.h"
#include "archive/Engine.h"

// ZorArchive::progress always points to one of these.  Its texts live as long as the operation, so
// that no record handed to OnAbort ever refers to something that has ended.
struct ZorProgress final : ZorArchive::ONABORTPARAM {
  ZorProgress() : ONABORTPARAM{} {}

  // What OnAbort threw while the archiver was calling.  An exception can't pass through the
  // archiver's frames; the operation throws it on once the archiver has returned.
  std::exception_ptr thrown;

  // Take a report of the archiver into the record, and tell whether OnAbort is to hear of it: of
  // every file's begin, progress and end (TakeFileReport), or, where the operation reports begin
  // and end itself, of the progress between them (TakeRunningReport).
  bool TakeFileReport(unsigned int state, const ZorProgressRecord& report);
  bool TakeRunningReport(unsigned int state, const ZorProgressRecord& report);

 private:
  std::string reportedName;  // what fileName points to after TakeFileReport
};
