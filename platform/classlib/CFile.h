// CFile.h - a file opened for reading and writing, unbuffered; and what can be asked of a path.
//
// A null path reads as the empty one, which names no file.
// Operations throw CFileException* on failure unless they say otherwise.  Positions and sizes are
// bytes, 64 bits wide.
#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "platform/classlib/CException.h"
#include "platform/classlib/CObject.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

// What CFile::GetStatus tells.  Times are UTC.
struct CFileStatus {
  FILETIME m_ctime;           // created
  FILETIME m_mtime;           // last written
  FILETIME m_atime;           // last read
  std::uint64_t m_size;       // 0 for a directory
  unsigned char m_attribute;  // CFile::readOnly and its like
};

class ZOR_PLATFORM_API CFile : public CObject {
 public:
  enum OpenFlags : unsigned int {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,  // as shareExclusive
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeCreate = 0x1000,      // makes the file, or empties an existing one
    modeNoTruncate = 0x2000,  // with modeCreate: keeps the contents of an existing file
    typeText = 0x4000,        // for CStdioFile
    typeBinary = 0x8000,
  };
  enum SeekPosition : unsigned int { begin = 0, current = 1, end = 2 };
  // Bits of CFileStatus::m_attribute.
  enum Attribute : unsigned char {
    normal = 0x00,
    readOnly = 0x01,
    hidden = 0x02,
    system = 0x04,
    volume = 0x08,
    directory = 0x10,
    archive = 0x20,
  };

  CFile();
  // Opens, and throws where Open returns 0.
  CFile(const char* fileName, unsigned int openFlags);
  // Closes; a failure of that is dropped.
  ~CFile() override;

  // Opens `fileName` with flags of OpenFlags.  Returns non-zero on success.  Returns 0 on failure,
  // throws nothing, and fills `error` if it isn't null; so it does when the object has a file open
  // already.
  virtual int Open(const char* fileName, unsigned int openFlags, CFileException* error = nullptr);

  // Returns the number of bytes read, fewer than `count` at the end of the file only.
  virtual unsigned int Read(void* buffer, unsigned int count);
  // Writes all bytes, or throws; a write that comes up short is diskFull.
  virtual void Write(const void* buffer, unsigned int count);
  // Moves to `offset` bytes from SeekPosition `from`, and returns the new position.
  virtual std::uint64_t Seek(std::int64_t offset, unsigned int from);
  virtual std::uint64_t GetLength();
  // Waits until everything written has reached the medium.
  virtual void Flush();
  // Closes, and throws if the system reports a failure; the file is closed all the same.  Closing
  // a closed file does nothing.
  virtual void Close();
  // Closes and reports nothing; what a buffer holds is dropped.
  virtual void Abort();

  bool IsOpen() const { return file != INVALID_HANDLE_VALUE; }

  // Describes the file or directory at `path`, with or without a trailing backslash.  Returns
  // non-zero on success; 0, with `status` unchanged, if there is none, for a name with wild-cards
  // and for a root.
  static int GetStatus(const char* path, CFileStatus& status);
  // Deletes a file.  A read-only file isn't deleted (accessDenied).
  static void Remove(const char* fileName);

 private:
  HANDLE file = INVALID_HANDLE_VALUE;
};

}  // namespace kozor_names
