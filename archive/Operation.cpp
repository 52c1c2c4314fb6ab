// Operation.cpp - the opening, closing and other common steps of the archive operations.
#include "archive/Operation.h"

#include "files/Path.h"

ZorOperation::ZorOperation(Family operationFamily, ZorArchive& object, const char* archivePath)
    : family(operationFamily), owner(object), archive(ZorText(archivePath)) {}

int ZorOperation::Run() {
  owner.error = ZorErrorNone;
  finished = Guarded([&] {
    Open();
    Work();
  });
  Close();
  if (foreign) std::rethrow_exception(foreign);
  return owner.IsError();
}

// Runs a step and keeps what it throws, so that the closing steps follow.  The first failure wins.
bool ZorOperation::Guarded(const std::function<void()>& step) {
  const ZorOutcome outcome = ZorGuard(step);
  if (owner.error == ZorErrorNone) owner.error = outcome.error;
  if (!foreign) foreign = outcome.foreign;
  return outcome.complete;
}

void ZorOperation::Open() {
  TestArguments();
  const bool compresses = family == Family::Compress;
  progress.kind = compresses ? 0 : 1;
  progress.phase = ZorArchive::PhaseIdle;
  progress.archive = archive;
  if (!engine.IsReady()) throw ZorFailure{ZorErrorEngineUnavailable};
  if (engine.UnlhaGetRunning() != 0) throw ZorFailure{ZorErrorEngineBusy};

  if (!compresses) engine.UnlhaSetCursorMode(0);
  const ZorEngineCallback callback =
      compresses ? ZorArchive::OnAbortProc1 : ZorArchive::OnAbortProc2;
  callbackInstalled = engine.UnlhaSetOwnerWindowEx(nullptr, callback) != 0;
  if (!callbackInstalled) throw ZorFailure{ZorErrorEngineBusy};
  if (compresses) engine.UnlhaSetCursorMode(0);
}

void ZorOperation::Close() {
  owner.progress = nullptr;
  // Fixed by the interface: a failed argument test leaves the phase at 0, so OnAbort receives the
  // end of an operation that never began.
  if (progress.phase != ZorArchive::PhaseIdle) {
    progress.phase = ZorArchive::PhaseEnd;
    Guarded([&] { owner.OnAbort(progress); });
  }
  sweep.Sweep();
  if (callbackInstalled) engine.UnlhaKillOwnerWindowEx(nullptr);
  if (owner.error == ZorErrorNone && !finished) owner.error = ZorErrorCanceled;
}

void ZorOperation::Report(ZorArchive::Phase phase) {
  progress.phase = phase;
  if (owner.OnAbort(progress) != 0) throw ZorStopped{};
}

void ZorOperation::Begin(int filesTotal) {
  progress.filesTotal = filesTotal;
  Report(ZorArchive::PhaseBegin);
}

void ZorOperation::RunCommand(const ZorLineBuilder& line) {
  RequireSound(line);
  CallArchiver([&] { return engine.Unlha(nullptr, line.Text(), nullptr, 0); });
}

void ZorOperation::RunSilently(const ZorLineBuilder& line) {
  RequireSound(line);
  ZorRequire(ZorErrorFromEngine(engine.Unlha(nullptr, line.Text(), nullptr, 0)));
}

void ZorOperation::RequireSound(const ZorLineBuilder& line) {
  if (!line.IsSound()) throw ZorFailure{ZorErrorFileOpen};
}
