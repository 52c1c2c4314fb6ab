// Operation.cpp - opening and closing steps of the archive operations, and what they do alike.
#include "archive/Operation.h"

#include "archive/Errors.h"
#include "files/Path.h"

ZorOperation::ZorOperation(Family operationFamily, ZorArchive& object, const char* archivePath)
    : family(operationFamily), owner(object), archive(ZorText(archivePath)) {}

int ZorOperation::Run() {
  owner.error = ZorErrorNone;
  Guarded([&] { finished = Open() && Work(); });
  Close();
  if (thrown) std::rethrow_exception(thrown);
  return owner.IsError();
}

// Runs a step in such a way that the closing steps come afterwards, whatever it throws.
template <typename Step>
void ZorOperation::Guarded(Step step) {
  try {
    step();
  } catch (CException* exception) {
    const ZorError error = ZorErrorFromException(*exception);
    exception->Delete();
    if (owner.error == ZorErrorNone) Fail(error);
  } catch (...) {
    if (!thrown) thrown = std::current_exception();
  }
}

bool ZorOperation::Open() {
  if (!TestArguments()) return false;
  const bool compresses = family == Family::kCompress;
  progress.kind = compresses ? 0 : 1;
  progress.phase = ZorArchive::PhaseIdle;
  progress.archive = archive;
  if (!engine.IsReady()) return Fail(ZorErrorEngineUnavailable);
  if (engine.UnlhaGetRunning() != 0) return Fail(ZorErrorEngineBusy);

  if (!compresses) engine.UnlhaSetCursorMode(0);
  const ZorEngineCallback callback =
      compresses ? ZorArchive::OnAbortProc1 : ZorArchive::OnAbortProc2;
  callbackInstalled = engine.UnlhaSetOwnerWindowEx(nullptr, callback) != 0;
  if (!callbackInstalled) return Fail(ZorErrorEngineBusy);
  if (compresses) engine.UnlhaSetCursorMode(0);
  return true;
}

void ZorOperation::Close() {
  owner.progress = nullptr;
  // A failed argument test leaves the phase at its zero, and so OnAbort hears of it, too.
  if (progress.phase != ZorArchive::PhaseIdle) {
    Guarded([&] { Report(ZorArchive::PhaseEnd); });
  }
  sweep.Sweep();
  if (callbackInstalled) engine.UnlhaKillOwnerWindowEx(nullptr);
  if (owner.error == ZorErrorNone && !finished) Fail(ZorErrorCanceled);
}

bool ZorOperation::Fail(ZorError error) {
  owner.error = error;
  return false;
}

bool ZorOperation::Report(ZorArchive::Phase phase) {
  progress.phase = phase;
  return owner.OnAbort(progress) == 0;
}

bool ZorOperation::Begin(int filesTotal) {
  progress.filesTotal = filesTotal;
  return Report(ZorArchive::PhaseBegin);
}

bool ZorOperation::StopListening(int code) {
  owner.progress = nullptr;
  if (progress.thrown) std::rethrow_exception(progress.thrown);
  return code == 0 || Fail(ZorErrorFromEngine(code));
}

bool ZorOperation::RunCommand(const ZorCommandLine& line) {
  return Accepts(line) &&
         CallArchiver([&] { return engine.Unlha(nullptr, line.Text(), nullptr, 0); });
}

bool ZorOperation::RunSilently(const ZorCommandLine& line) {
  if (!Accepts(line)) return false;
  const int code = engine.Unlha(nullptr, line.Text(), nullptr, 0);
  return code == 0 || Fail(ZorErrorFromEngine(code));
}

bool ZorOperation::Accepts(const ZorCommandLine& line) {
  return line.IsSound() || Fail(ZorErrorFileOpen);
}
