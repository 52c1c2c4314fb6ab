// Operation.h - the frame that all archive operations share.
//
// Opening: bind the archiver, see that it is free, install the callback.  Closing, on every way
// out: report the end, sweep, take the callback back, free the archiver, turn the outcome into a
// result.  An operation derives from the class of its family and says in Work what lies between:
//
//   void Work() override {
//     Begin(1);
//     CallArchiver([&] { return engine.Unlha(...); });
//   }
//
// A step that fails, or that OnAbort stops, throws (files/Failure.h), and so ends the operation.
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

  // The whole operation.  Returns 1, or 0 with the cause in the object's error.  An exception that
  // a hook throws and that isn't of the class library is thrown on after the closing steps.
  int Run();

 protected:
  // What differs between writing an archive and the rest: the `kind` of the progress record, the
  // callback, and whether the cursor mode is set before or after installing it.
  enum class Family { Compress, Extract };

  // `archivePath` and `owner` outlive the operation; a null path is an empty one.
  ZorOperation(Family family, ZorArchive& owner, const char* archivePath);
  virtual ~ZorOperation() = default;

  // The operation's own tests, before anything else; the record is still all zeros then.
  virtual void TestArguments() {}
  virtual void Work() = 0;

  // Calls OnAbort with the record in this phase, and stops the operation if it says so.
  void Report(ZorArchive::Phase phase);
  // Reports the begin of work on so many files.
  void Begin(int filesTotal);

  // Makes a call that may take long and returns an archiver's code; meanwhile the archiver's own
  // reports reach OnAbort.  A code other than 0 is a failure.
  template <typename Call>
  void CallArchiver(Call call) {
    owner.progress = &progress;
    const int code = call();
    owner.progress = nullptr;
    if (progress.thrown) std::rethrow_exception(progress.thrown);
    ZorRequire(ZorErrorFromEngine(code));
  }
  // Runs a line through Unlha, in that way or without any report.
  void RunCommand(const ZorLineBuilder& line);
  void RunSilently(const ZorLineBuilder& line);
  // A quote in one of its paths would change the meaning of a line: such a line is refused.
  static void RequireSound(const ZorLineBuilder& line);

  // What operations may know and ask of their object, whose friend this class alone is.
  const char* WorkDirectory() const { return owner.workDirectory; }
  bool MayUseResponseFile() const { return owner.useResponseFile != 0; }
  CString MakeFileName(const char* directory, const char* name) {
    return owner.OnMakeFileName(directory, name);
  }
  // The piece that a line gets when the object isn't to show itself, else an empty text.
  const char* BackgroundPiece(const char* piece) const {
    return owner.backgroundMode == 0 ? piece : "";
  }

  const Family family;
  ZorArchive& owner;
  const char* const archive;
  const ZorEngine engine;
  ZorProgress progress;
  ZorTempSweep sweep;  // begun by the compress family alone

 private:
  void Open();
  void Close();
  bool Guarded(const std::function<void()>& stretch);

  bool finished = false;
  bool callbackInstalled = false;
  std::exception_ptr foreign;
};
