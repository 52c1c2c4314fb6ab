// CArchive.h - stores values in a file and loads them again, in the class library's stream format.
//
// Numbers are little-endian.  A count is 2 bytes, or 0xFFFF and 4 bytes from 0xFFFF on.  A string
// is its length and its bytes, with the length in 1 byte (below 0xFF), 0xFF and 2 bytes (below
// 0xFFFE), or 0xFF, 0xFFFF and 4 bytes.
//
// A stream that ends inside a value throws CArchiveException* (endOfFile).  Memory use follows the
// bytes actually read, not the lengths that the stream states.
#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/classlib/CFile.h"
#include "platform/classlib/CString.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CArchive {
 public:
  enum Mode : unsigned int { store = 0, load = 1 };

  // The stream begins at the current position of the file `stream`, which the caller owns and which
  // must outlive the archive.  `direction` is a Mode.
  CArchive(CFile* stream, unsigned int direction, int bufferSize = 4096);
  // Closes; errors are ignored.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  bool IsStoring() const { return mode == store; }
  bool IsLoading() const { return mode == load; }

  // Returns the number of bytes read, less than `count` only at the end of the file.
  unsigned int Read(void* buffer, unsigned int count);
  void Write(const void* buffer, unsigned int count);
  // Storing: writes the buffer to the file.  Loading: seeks the file back to the end of what was
  // read.
  void Flush();
  // Flushes and detaches from the file.
  void Close();

  DWORD ReadCount();
  void WriteCount(DWORD count);

  CArchive& operator<<(BYTE value);
  CArchive& operator<<(WORD value);
  CArchive& operator<<(DWORD value);
  CArchive& operator<<(const CString& value);
  CArchive& operator>>(BYTE& value);
  CArchive& operator>>(WORD& value);
  CArchive& operator>>(DWORD& value);
  // On failure `value` is unchanged.
  CArchive& operator>>(CString& value);

 private:
  template <class Number>
  void WriteNumber(Number value);
  template <class Number>
  Number ReadNumber();
  DWORD ReadStringLength();

  CFile* file;  // null once closed
  unsigned int mode;
  unsigned int capacity;
  std::unique_ptr<BYTE[]> buffer;
  unsigned int next = 0;    // storing: bytes to be written; loading: first unread byte
  unsigned int filled = 0;  // loading: end of the unread bytes
};

}  // namespace kozor_names
