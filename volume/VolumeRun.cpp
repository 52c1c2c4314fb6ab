// VolumeRun.cpp - see VolumeRun.h.
#include "volume/VolumeRun.h"

#include <algorithm>
#include <utility>

ZorVolumeRun::ZorVolumeRun(Kind kind, ZorMultiVolume& object, const char* path)
    : slice(std::make_unique_for_overwrite<std::uint8_t[]>(kSliceBytes)),
      volumes(object),
      namedByHook(path == nullptr),
      volumePath(path) {
  progress.kind = kind;
  progress.volumePath = volumePath;
}

int ZorVolumeRun::Run() {
  volumes.error = ZorErrorNone;
  ZorOutcome outcome;
  if (Prepare()) {
    if (CallOnAbort(ZorMultiVolume::PhaseBegin) == 0) {
      outcome = ZorGuard([&] { Work(); });
      ReleaseFiles();
    }
    volumes.error = outcome.error;
    progress.fileName = nullptr;
    CallOnAbort(ZorMultiVolume::PhaseEnd);
  }
  // Set only now: at the end of a run that OnAbort stopped, OnAbort must see no error.
  if (volumes.error == ZorErrorNone && !outcome.complete) volumes.error = ZorErrorCanceled;
  if (outcome.foreign) std::rethrow_exception(outcome.foreign);
  return volumes.IsError();
}

void ZorVolumeRun::AskForVolume(
    const std::function<std::optional<ZorMultiVolume::VolumeResult>()>& take) {
  if (namedByHook) {
    volumePath = volumes.OnMakeVolumeName(progress.volume + 1);
    progress.volumePath = volumePath;
  }
  std::optional<ZorMultiVolume::VolumeResult> objection = ZorMultiVolume::VolumeFirstAsk;
  while (objection) {
    progress.volumeResult = *objection;
    Report(ZorMultiVolume::PhaseVolume);
    objection = take();
  }
  progress.volumeResult = ZorMultiVolume::VolumeFirstAsk;
}

void ZorVolumeRun::BeginFile(const char* path, std::uint32_t bytes) {
  progress.fileName = path;
  progress.bytesDone = 0;
  progress.bytesTotal = bytes;
  Report(ZorMultiVolume::PhaseFileBegin);
}

void ZorVolumeRun::CountSlice(std::uint32_t bytes) {
  progress.bytesDone += bytes;
  Report(ZorMultiVolume::PhaseFileRunning);
}

void ZorVolumeRun::EndFile() {
  ++progress.filesDone;
  Report(ZorMultiVolume::PhaseFileEnd);
}

std::uint32_t ZorVolumeRun::SliceBytes(std::uint32_t room) const {
  return std::min({progress.bytesTotal - progress.bytesDone, kSliceBytes, room});
}

void ZorVolumeRun::ReadWhole(CFile& file, void* buffer, std::uint32_t count) {
  if (file.Read(buffer, count) != count) throw ZorFailure{ZorErrorFileFailure};
}

std::array<ZorVolumeRun::Area, 3> ZorVolumeRun::Areas() const {
  return {{{volumes.applicationId, volumes.applicationIdLength},
           {volumes.volumeLabel, volumes.volumeLabelLength},
           {volumes.memo, volumes.memoLength}}};
}

int ZorVolumeRun::CallOnAbort(ZorMultiVolume::Phase phase) {
  progress.phase = phase;
  return volumes.OnAbort(progress);
}

void ZorVolumeRun::Report(ZorMultiVolume::Phase phase) {
  if (CallOnAbort(phase) != 0) throw ZorStopped{};
}
