// Failure.h - how an operation of the library ends early.
//
//   const ZorOutcome outcome = ZorGuard([&] {
//     ZorRequire(ZorErrorFromEngine(code));       // throws unless the error is 0
//     if (name.IsEmpty()) throw ZorFailure{ZorErrorFileOpen};
//   });
//
// Steps inside an operation throw.  Only the frame around them (archive/Operation,
// volume/VolumeRun) turns that into the error of the object.  See docs/errors.md.
#pragma once

#include <exception>
#include <functional>

#include "ZorError.h"
#include "platform/classlib/CException.h"

// A step failed for this reason.
struct ZorFailure {
  ZorError error;
};

// The operation ends early without an error of its own: OnAbort stopped it, or nothing was
// selected.  The frame turns it into ZorErrorCanceled, but only after OnAbort has seen the end.
struct ZorStopped {};

inline void ZorRequire(ZorError error) {
  if (error != ZorErrorNone) throw ZorFailure{error};
}

// ZorErrorDiskFull if a file operation ran out of space, else ZorErrorFileFailure.  The caller
// still has to delete the exception.
ZorError ZorErrorFromException(const CException& exception);

// How a guarded step ended.
struct ZorOutcome {
  bool complete = false;          // it ran to its end
  ZorError error = ZorErrorNone;  // why it failed; none if it was stopped
  std::exception_ptr foreign;     // an exception that isn't the library's, for rethrowing
};

// Runs `step`.  A failure, an exception of the class library and exhausted memory become the
// outcome's error; any other exception is kept in `foreign`.
ZorOutcome ZorGuard(const std::function<void()>& step);
