// Reports.cpp - turns the archiver's reports into calls of OnAbort.
//
// The callbacks get no context from the archiver.  They find the object through ZorArchive::ths and
// the record of the running operation through the object's `progress`; if either is null they let
// the archiver go on and report nothing.
#include "archive/Reports.h"

#include <algorithm>

namespace {

// States of the archiver that are used here; others are ignored.
constexpr unsigned int kFileStarts = 0;
constexpr unsigned int kFileRuns = 1;
constexpr unsigned int kFileEnds = 6;

// The result of a callback.
constexpr int kGoOn = 1;
constexpr int kStop = 0;

// Copies a report into the record.  Returns whether OnAbort is called.
using Take = bool (ZorProgress::*)(unsigned int state, const ZorProgressRecord& report);

// Takes a report, calls `onAbort` if needed and returns the archiver's answer.  Once `onAbort` has
// thrown, it isn't called again.
template <typename OnAbort>
int Answer(ZorProgress& progress, Take take, unsigned int state, const void* report,
           OnAbort onAbort) {
  if (progress.thrown) return kStop;
  try {
    const bool told = (progress.*take)(state, *static_cast<const ZorProgressRecord*>(report));
    return !told || onAbort(progress) == 0 ? kGoOn : kStop;
  } catch (...) {
    progress.thrown = std::current_exception();
    return kStop;
  }
}

}  // namespace

bool ZorProgress::TakeFileReport(unsigned int state, const ZorProgressRecord& report) {
  switch (state) {
    case kFileStarts:
      phase = ZorArchive::PhaseFileBegin;
      return false;
    case kFileRuns:
      // The end of a file has a state of its own, so a report of progress after it or at 100 % is
      // ignored.
      if (phase == ZorArchive::PhaseFileEnd || report.bytesDone >= report.fileSize) return false;
      if (report.bytesDone > 0) phase = ZorArchive::PhaseFileRunning;
      bytesDone = report.bytesDone;
      break;
    case kFileEnds:
      phase = ZorArchive::PhaseFileEnd;
      bytesDone = report.fileSize;
      ++filesDone;
      break;
    default:
      return false;
  }
  bytesTotal = report.fileSize;
  // Byte by byte is safe: 0x2F is no trail byte in any supported code page.
  reportedName = report.fileName;
  std::replace(reportedName.begin(), reportedName.end(), '/', '\\');
  fileName = reportedName.c_str();
  return true;
}

bool ZorProgress::TakeRunningReport(unsigned int state, const ZorProgressRecord& report) {
  if (state != kFileRuns || report.bytesDone == 0 || report.bytesDone >= report.fileSize) {
    return false;
  }
  phase = ZorArchive::PhaseFileRunning;
  bytesDone = report.bytesDone;
  bytesTotal = report.fileSize;
  return true;
}

int ZorArchive::OnAbort(const ONABORTPARAM& /*param*/) {
  return 0;
}

int CALLBACK ZorArchive::OnAbortProc1(HWND /*window*/, unsigned int /*message*/, unsigned int state,
                                      void* record) {
  if (ths == nullptr || ths->progress == nullptr) return kGoOn;
  return Answer(static_cast<ZorProgress&>(*ths->progress), &ZorProgress::TakeFileReport, state,
                record, [](const ONABORTPARAM& param) { return ths->OnAbort(param); });
}

int CALLBACK ZorArchive::OnAbortProc2(HWND /*window*/, unsigned int /*message*/, unsigned int state,
                                      void* record) {
  if (ths == nullptr || ths->progress == nullptr) return kGoOn;
  return Answer(static_cast<ZorProgress&>(*ths->progress), &ZorProgress::TakeRunningReport, state,
                record, [](const ONABORTPARAM& param) { return ths->OnAbort(param); });
}
