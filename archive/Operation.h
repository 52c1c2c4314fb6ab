// Operation.h - the frame that all archive operations share.
//
// Opening: bind the archiver, check that it isn't busy, install the callback.  Closing, on every
// path: report the end, remove temporaries, remove the callback, free the archiver, turn the
// outcome into a result.  An operation derives from the class of its family and implements Work:
//
//   void Work() override {
//     Begin(1);
//     CallArchiver([&] { return engine.Unlha(...); });
//   }
//
// A step that fails, or that OnAbort stops, throws (files/Failure.h), which ends the operation.
#pragma once

#include <exception>
#include <functional>

#include "ZorArchive.h"
#include "archive/Engine.h"
#include "archive/LineBuilder.h"
#include "archive/Reports.h"
#include "archive/RunFiles.h"
#include "files/Failure.h"

class ZorOperation {
 public:
  ZorOperation(const ZorOperation&) = delete;
  ZorOperation& operator=(const ZorOperation&) = delete;

  // Runs the whole operation.  Returns 1, or 0 with the cause in the object's error.  An exception
  // of a hook that isn't the class library's is rethrown after the closing steps.
  int Run();

 protected:
  // Selects what differs between writing an archive and the rest: the `kind` of the progress
  // record, the callback, and whether the cursor mode is set before or after it is installed.
  enum class Family { Compress, Extract };

  // `archivePath` and `owner` must outlive the operation; a null path reads as the empty one.
  ZorOperation(Family family, ZorArchive& owner, const char* archivePath);
  virtual ~ZorOperation() = default;

  // The operation's own tests.  They run first, while the record is still all zeros.
  virtual void TestArguments() {}
  virtual void Work() = 0;

  // Calls OnAbort in this phase; stops the operation if it returns non-zero.
  void Report(ZorArchive::Phase phase);
  // Reports PhaseBegin with this number of files.
  void Begin(int filesTotal);

  // Calls the archiver and forwards its progress reports to OnAbort meanwhile.  `call` returns the
  // archiver's code; any but 0 is thrown as a failure.
  template <typename Call>
  void CallArchiver(Call call) {
    owner.progress = &progress;
    const int code = call();
    owner.progress = nullptr;
    if (progress.thrown) std::rethrow_exception(progress.thrown);
    ZorRequire(ZorErrorFromEngine(code));
  }
  // Run a line through Unlha: by CallArchiver, or without any report.
  void RunCommand(const ZorLineBuilder& line);
  void RunSilently(const ZorLineBuilder& line);
  // Throws if the line is unsound: a quote in a path would change its meaning.
  static void RequireSound(const ZorLineBuilder& line);

  // Access to the object for derived operations: only this class is its friend.
  const char* WorkDirectory() const { return owner.workDirectory; }
  bool MayUseResponseFile() const { return owner.useResponseFile != 0; }
  CString MakeFileName(const char* directory, const char* name) {
    return owner.OnMakeFileName(directory, name);
  }
  // `piece` if the background mode is 0, else the empty text.
  const char* BackgroundPiece(const char* piece) const {
    return owner.backgroundMode == 0 ? piece : "";
  }

  const Family family;
  ZorArchive& owner;
  const char* const archive;
  const ZorEngine engine;
  ZorProgress progress;
  ZorTempSweep sweep;  // begun by the compress family only

 private:
  void Open();
  void Close();
  bool Guarded(const std::function<void()>& step);

  bool finished = false;
  bool callbackInstalled = false;
  std::exception_ptr foreign;
};
