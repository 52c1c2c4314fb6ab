// Failure.h - how an operation of the library is left before its end.
//
//   const ZorOutcome outcome = ZorGuard([&] {
//     ZorRequire(ZorErrorFromEngine(code));       // throws unless the error is 0
//     if (name.IsEmpty()) throw ZorFailure{ZorErrorFileOpen};
//   });
//
// Steps inside an operation throw; the frame around them (archive/Operation, volume/VolumeRun) is
// the one place where that becomes the error of the object.  docs/errors.md tells the whole story.
#pragma once

#include <exception>
#include <functional>

#include "ZorError.h"
#include "platform/classlib/CException.h"

// A step failed for this reason.
struct ZorFailure {
  ZorError error;
};

// The operation ends early without an error of its own: OnAbort said so, or nothing was selected.
// The frame makes it ZorErrorCanceled, but only after OnAbort has heard of the end.
struct ZorStopped {};

inline void ZorRequire(ZorError error) {
  if (error != ZorErrorNone) throw ZorFailure{error};
}

// ZorErrorDiskFull when a file operation ran out of room, else ZorErrorFileFailure.  The exception
// remains the caller's to delete.
ZorError ZorErrorFromException(const CException& exception);

// How a guarded stretch ended.
struct ZorOutcome {
  bool complete = false;          // it came to its end
  ZorError error = ZorErrorNone;  // why it failed; none when it was stopped
  std::exception_ptr foreign;     // an exception that isn't the library's: to be thrown on
};

// Runs `stretch`.  Its failures, exceptions of the class library and exhausted memory become the
// outcome's error; any other exception is kept there.
ZorOutcome ZorGuard(const std::function<void()>& stretch);
