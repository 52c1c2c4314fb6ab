// CException.h - the class library's exceptions, thrown by pointer.
//
//   try {
//     CFile::Remove(name);
//   } catch (CException* error) {
//     error->Delete();
//   }
//
// A handler owns the exception that it catches and must call Delete once, unless it rethrows with a
// bare `throw`.  The values of m_cause are part of the interface.
#pragma once

#include "platform/Export.h"
#include "platform/classlib/CObject.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CException : public CObject {
 public:
  ~CException() override;
  // Destroys an exception made with `new`, as every thrown one is.
  void Delete();

 protected:
  CException() = default;
};

// A file operation failed.  CFile::Open fills in the caller's object; other operations throw one.
class ZOR_PLATFORM_API CFileException : public CException {
 public:
  enum {
    none = 0,
    genericException = 1,
    fileNotFound = 2,
    badPath = 3,
    tooManyOpenFiles = 4,
    accessDenied = 5,
    invalidFile = 6,
    removeCurrentDir = 7,
    directoryFull = 8,
    badSeek = 9,
    hardIO = 10,
    sharingViolation = 11,
    lockViolation = 12,
    diskFull = 13,
    endOfFile = 14,
  };

  explicit CFileException(int cause = none, LONG osError = -1);
  ~CFileException() override;

  // The cause for a system error number from GetLastError.
  static int OsErrorToException(LONG osError);
  [[noreturn]] static void ThrowOsError(LONG osError);

  int m_cause;
  LONG m_lOsError;  // the system's number, -1 if it isn't a system error
};

// A stream of CArchive ended too early or isn't one.
class ZOR_PLATFORM_API CArchiveException : public CException {
 public:
  enum {
    none = 0,
    genericException = 1,
    readOnly = 2,   // storing into an archive opened for loading
    endOfFile = 3,  // the stream ended inside a value
    writeOnly = 4,  // loading from an archive opened for storing
    badIndex = 5,
    badClass = 6,
    badSchema = 7,  // text of a kind that isn't supported
  };

  explicit CArchiveException(int cause = none);
  ~CArchiveException() override;

  int m_cause;
};

}  // namespace kozor_names
