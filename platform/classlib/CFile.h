// CFile.h - an unbuffered file, and operations on paths.
//
// A null path reads as the empty one, which names no file.  Operations throw CFileException* on
// failure unless their comment says otherwise.  Positions and sizes are 64-bit byte counts.
#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "platform/classlib/CException.h"
#include "platform/classlib/CObject.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

// The result of CFile::GetStatus.  Times are UTC.
struct CFileStatus {
  FILETIME m_ctime;           // created
  FILETIME m_mtime;           // last written
  FILETIME m_atime;           // last read
  std::uint64_t m_size;       // 0 for a directory
  unsigned char m_attribute;  // CFile::Attribute bits
};

class ZOR_PLATFORM_API CFile : public CObject {
 public:
  enum OpenFlags : unsigned int {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,  // the same as shareExclusive
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeCreate = 0x1000,      // creates the file, or truncates an existing one
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
  // Opens; throws if Open would return 0.
  CFile(const char* fileName, unsigned int openFlags);
  // Closes; errors are ignored.
  ~CFile() override;

  // Opens `fileName` with flags of OpenFlags.  Returns non-zero on success.  On failure returns 0
  // and fills in `error` if it isn't null; never throws.  Fails if the object already has a file
  // open.
  virtual int Open(const char* fileName, unsigned int openFlags, CFileException* error = nullptr);

  // Returns the number of bytes read, less than `count` only at the end of the file.
  virtual unsigned int Read(void* buffer, unsigned int count);
  // Writes all bytes, or throws; a short write is diskFull.
  virtual void Write(const void* buffer, unsigned int count);
  // Moves to `offset` bytes from SeekPosition `from`, and returns the new position.
  virtual std::uint64_t Seek(std::int64_t offset, unsigned int from);
  virtual std::uint64_t GetLength();
  // Returns after everything written has reached the medium.
  virtual void Flush();
  // Closes.  Throws if the system reports a failure; the file is closed even then.  Does nothing if
  // the file isn't open.
  virtual void Close();
  // Closes without reporting errors; buffered data is discarded.
  virtual void Abort();

  // Describes the open file.  Returns non-zero on success, else 0.
  int GetStatus(CFileStatus& status) const;

  bool IsOpen() const { return file != INVALID_HANDLE_VALUE; }

  // Describes the file or directory at `path`, with or without a trailing backslash.  Returns
  // non-zero on success.  Returns 0 and leaves `status` unchanged if there is none, for a name with
  // wild-cards and for a root.
  static int GetStatus(const char* path, CFileStatus& status);
  // Deletes a file.  Fails for a read-only file (accessDenied).
  static void Remove(const char* fileName);

 private:
  HANDLE file = INVALID_HANDLE_VALUE;
};

}  // namespace kozor_names
