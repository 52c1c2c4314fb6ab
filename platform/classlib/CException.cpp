// CException.cpp - the class library's exceptions, and the mapping of system errors to causes.
#include "platform/classlib/CException.h"

CException::~CException() = default;

void CException::Delete() {
  delete this;
}

CFileException::CFileException(int cause, LONG osError) : m_cause(cause), m_lOsError(osError) {}

CFileException::~CFileException() = default;

int CFileException::OsErrorToException(LONG osError) {
  switch (static_cast<DWORD>(osError)) {
    case NO_ERROR:
      return none;
    case ERROR_FILE_NOT_FOUND:
      return fileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
      return badPath;
    case ERROR_TOO_MANY_OPEN_FILES:
      return tooManyOpenFiles;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return accessDenied;
    case ERROR_INVALID_HANDLE:
      return invalidFile;
    case ERROR_CURRENT_DIRECTORY:
      return removeCurrentDir;
    case ERROR_SEEK:
    case ERROR_NEGATIVE_SEEK:
      return badSeek;
    case ERROR_NOT_READY:
    case ERROR_CRC:
    case ERROR_WRITE_FAULT:
    case ERROR_READ_FAULT:
    case ERROR_GEN_FAILURE:
    case ERROR_IO_DEVICE:
      return hardIO;
    case ERROR_SHARING_VIOLATION:
      return sharingViolation;
    case ERROR_LOCK_VIOLATION:
      return lockViolation;
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_DISK_FULL:
      return diskFull;
    case ERROR_HANDLE_EOF:
      return endOfFile;
    default:
      return genericException;
  }
}

void CFileException::ThrowOsError(LONG osError) {
  throw new CFileException(OsErrorToException(osError), osError);
}

CArchiveException::CArchiveException(int cause) : m_cause(cause) {}

CArchiveException::~CArchiveException() = default;
