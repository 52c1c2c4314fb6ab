// Operation.h - the frame that all archive operations share.
//
// Opening: bind the archiver, see that it is free, install the callback.  Closing, on every way
// out: report the end, sweep, take the callback back, free the archiver, turn the outcome into a
// result.  An operation derives from the class of its family and says in Work what lies between:
//
//   bool Work() override {
//     return Begin(1) && CallArchiver([&] { return engine.Unlha(...); });
//   }
//
// A step returns whether to go on.  One that returns false ends the operation, with the error that
// it has set, or as cancelled when it has set none.
#pragma once

#include <exception>

#include "ZorArchive.h"
#include "archive/CommandLine.h"
#include "archive/Engine.h"
#include "archive/Progress.h"
#include "archive/TempSweep.h"

class ZorOperation {
 public:
  ZorOperation(const ZorOperation&) = delete;
  ZorOperation& operator=(const ZorOperation&) = delete;

  // The whole operation.  Returns 1, or 0 with the cause in the object's error.  A CException of a
  // hook becomes an error; what else a hook throws is thrown on after the closing steps.
  int Run();

 protected:
  // What differs between writing an archive and the rest: the `kind` of the progress record, the
  // callback, and whether the cursor mode is set before or after installing it.
  enum class Family { kCompress, kExtract };

  // `archivePath` and `owner` outlive the operation.
  ZorOperation(Family family, ZorArchive& owner, const char* archivePath);
  virtual ~ZorOperation() = default;

  // The operation's own tests, before anything else; the record is still all zeros then.
  virtual bool TestArguments() { return true; }
  virtual bool Work() = 0;

  // Sets the error; returns false, so that a step can end with it.
  bool Fail(ZorError error);
  // Calls OnAbort with the record in this phase; false when it wants to stop.
  bool Report(ZorArchive::Phase phase);
  // Reports the begin of work on so many files.
  bool Begin(int filesTotal);

  // Makes a call that may take long and returns an archiver's code; meanwhile the archiver's own
  // reports reach OnAbort.  A code other than 0 becomes the error.
  template <typename Call>
  bool CallArchiver(Call call) {
    StartListening();
    const int code = call();
    return StopListening(code);
  }
  // Runs a line through Unlha, in that way or without any report.
  bool RunCommand(const ZorCommandLine& line);
  bool RunSilently(const ZorCommandLine& line);
  // A line is refused when a quote in one of its paths would change its meaning.
  bool Accepts(const ZorCommandLine& line);

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
  bool Open();
  void Close();
  void StartListening() { owner.progress = &progress; }
  bool StopListening(int code);
  template <typename Step>
  void Guarded(Step step);

  bool finished = false;
  bool callbackInstalled = false;
  std::exception_ptr thrown;
};
