// Archive.cpp - the archive object: construction, settings, IsEnabled and IsArchive.
#include <utility>

#include "ZorArchive.h"
#include "archive/Engine.h"
#include "files/Path.h"

// The only way from the archiver's callbacks to an object.
ZorArchive* ZorArchive::ths = nullptr;

ZorArchive::ZorArchive()
    : error(ZorErrorNone),
      useResponseFile(1),
      extractFileAttributeMode(1),
      overwriteMode(0),
      backgroundMode(1),
      progress(nullptr) {
  ths = this;
}

ZorArchive::ZorArchive(const ZorArchive& other) = default;
ZorArchive& ZorArchive::operator=(const ZorArchive& other) = default;

// Fixed by the interface: destroying any object, even a copy, detaches the callbacks.
ZorArchive::~ZorArchive() {
  ths = nullptr;
}

int ZorArchive::IsEnabled() {
  error = ZorErrorNone;
  const ZorEngine engine;
  if (!engine.IsReady()) error = ZorErrorEngineUnavailable;
  return IsError();
}

int ZorArchive::IsArchive(const char* path) {
  error = ZorErrorNone;
  const ZorEngine engine;
  if (!engine.IsReady()) {
    error = ZorErrorEngineUnavailable;
    return 0;
  }
  engine.UnlhaSetCursorMode(0);
  return engine.UnlhaCheckArchive(ZorText(path), 1);
}

ZorError ZorArchive::GetError() const {
  return error;
}

int ZorArchive::IsError() const {
  return error == ZorErrorNone ? 1 : 0;
}

int ZorArchive::SetOverwriteMode(int mode) {
  return std::exchange(overwriteMode, mode);
}

int ZorArchive::GetOverwriteMode() const {
  return overwriteMode;
}

int ZorArchive::SetExtractFileAttibuteMode(int mode) {
  return std::exchange(extractFileAttributeMode, mode);
}

int ZorArchive::GetExtractFileAttibuteMode() const {
  return extractFileAttributeMode;
}

int ZorArchive::SetBackgroundMode(int mode) {
  return std::exchange(backgroundMode, mode);
}

int ZorArchive::GetBackgroundMode() const {
  return backgroundMode;
}

void ZorArchive::SetWorkDirectory(const char* directory) {
  workDirectory = directory;
}

const char* ZorArchive::GetWorkDirectory() const {
  return workDirectory;
}
