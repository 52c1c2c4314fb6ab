// Errors.cpp - archiver's codes and class library exceptions as values of ZorError.
#include "archive/Errors.h"

#include "platform/classlib/ClassLib.h"

ZorError ZorErrorFromEngine(int code) {
  constexpr int kBase = 0x8000;
  if (code == 0) return ZorErrorNone;
  if (code < kBase + ZorErrorDiskFull || code > kBase + ZorErrorEngine802C) {
    return ZorErrorEngineUnknown;
  }
  return static_cast<ZorError>(code - kBase);
}

ZorError ZorErrorFromException(const CException& exception) {
  const auto* file = dynamic_cast<const CFileException*>(&exception);
  const bool full = file != nullptr && file->m_cause == CFileException::diskFull;
  return full ? ZorErrorDiskFull : ZorErrorFileFailure;
}
