// CException.h - failures of the class library, thrown by pointer.
//
//   try {
//     CFile::Remove(name);
//   } catch (CException* error) {
//     error->Delete();
//   }
//
// Whoever catches an exception owns it, and must call Delete once, unless it rethrows with a bare
// `throw`.  Values of m_cause are published numbers.
#pragma once

#include "platform/Export.h"
#include "platform/classlib/CObject.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CException : public CObject {
 public:
  ~CException() override;
  // Ends an exception that was made with `new`, as every thrown one is.
  void Delete();

 protected:
  CException() = default;
};

// A file operation failed.  CFile::Open fills one that its caller made; all others are thrown.
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

  // The cause that stands for a system error number, as GetLastError gives it.
  static int OsErrorToException(LONG osError);
  [[noreturn]] static void ThrowOsError(LONG osError);

  int m_cause;
  LONG m_lOsError;  // the system's number, -1 when the system has no part in it
};

// A stream of CArchive ended too early or isn't one.
class ZOR_PLATFORM_API CArchiveException : public CException {
 public:
  enum {
    none = 0,
    genericException = 1,
    readOnly = 2,   // storing into an archive that loads
    endOfFile = 3,  // the stream ended inside a value
    writeOnly = 4,  // loading from an archive that stores
    badIndex = 5,
    badClass = 6,
    badSchema = 7,  // text of a kind that isn't read here
  };

  explicit CArchiveException(int cause = none);
  ~CArchiveException() override;

  int m_cause;
};

}  // namespace kozor_names
