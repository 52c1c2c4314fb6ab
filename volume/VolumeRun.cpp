// VolumeRun.cpp - see VolumeRun.h.
#include "volume/VolumeRun.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

// On its way from where a run stops to the end of the guarded stretch.  ZorErrorNone says that
// OnAbort stopped it.
struct RunLeft {
  ZorError error;
};

}  // namespace

ZorVolumeRun::ZorVolumeRun(Kind kind, const char* path, ZorError& objectError, AbortHook abortHook)
    : slice(std::make_unique_for_overwrite<std::uint8_t[]>(kSliceBytes)),
      error(objectError),
      onAbort(std::move(abortHook)) {
  error = ZorErrorNone;
  progress.kind = kind;
  SetVolumePath(path);
}

void ZorVolumeRun::Perform(const std::function<void()>& copy) {
  bool complete = false;
  if (CallOnAbort(ZorMultiVolume::PhaseBegin) == 0) {
    try {
      copy();
      complete = true;
    } catch (const RunLeft& left) {
      error = left.error;
    } catch (CFileException* failure) {  // NOLINT(misc-throw-by-value-catch-by-reference)
      error = failure->m_cause == CFileException::diskFull ? ZorErrorDiskFull : ZorErrorFileFailure;
      failure->Delete();
    } catch (CException* failure) {  // NOLINT(misc-throw-by-value-catch-by-reference)
      error = ZorErrorFileFailure;
      failure->Delete();
    } catch (const std::bad_alloc&) {  // the class library's exception for exhausted memory
      error = ZorErrorFileFailure;
    }
  }
  progress.fileName = nullptr;
  CallOnAbort(ZorMultiVolume::PhaseEnd);
  // Only now, so that OnAbort sees no error at the end of a run that it stopped itself.
  if (error == ZorErrorNone && !complete) error = ZorErrorCanceled;
}

void ZorVolumeRun::Leave(ZorError error) {
  throw RunLeft{error};
}

void ZorVolumeRun::AskForVolume(const std::function<ZorMultiVolume::VolumeResult()>& take) {
  progress.volumeResult = ZorMultiVolume::VolumeFirstAsk;
  do {
    Report(ZorMultiVolume::PhaseVolume);
    progress.volumeResult = take();
  } while (progress.volumeResult != ZorMultiVolume::VolumeFirstAsk);
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
  if (file.Read(buffer, count) != count) Leave(ZorErrorFileFailure);
}

void ZorVolumeRun::SetVolumePath(const CString& path) {
  volumePath = path;
  progress.volumePath = volumePath;
}

int ZorVolumeRun::CallOnAbort(ZorMultiVolume::Phase phase) {
  progress.phase = phase;
  return onAbort(progress);
}

void ZorVolumeRun::Report(ZorMultiVolume::Phase phase) {
  if (CallOnAbort(phase) != 0) Leave(ZorErrorNone);
}
