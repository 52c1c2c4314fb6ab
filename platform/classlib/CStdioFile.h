// CStdioFile.h - a buffered file, for reading and writing text line by line.
//
// If opened with CFile::typeText, "\n" is written as the platform's line end, which ReadString
// removes.  With CFile::typeBinary, or neither, a line ends in "\n" alone.  Written data may stay
// in the buffer until Flush or Close, so both can throw CFileException* (diskFull) for an earlier
// write.
#pragma once

#include <memory>

#include "platform/classlib/CFile.h"
#include "platform/classlib/CString.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CStdioFile : public CFile {
 public:
  CStdioFile();
  CStdioFile(const char* fileName, unsigned int openFlags);
  // Writes the buffer and closes; errors are ignored.
  ~CStdioFile() override;

  int Open(const char* fileName, unsigned int openFlags, CFileException* error = nullptr) override;
  unsigned int Read(void* buffer, unsigned int count) override;
  void Write(const void* buffer, unsigned int count) override;
  std::uint64_t Seek(std::int64_t offset, unsigned int from) override;
  std::uint64_t GetLength() override;
  void Flush() override;
  // Writes the buffer and closes.  The file is closed even if this throws.
  void Close() override;
  void Abort() override;

  // Writes `text` without its terminator; adds no line end.  A null `text` reads as the empty one.
  void WriteString(const char* text);
  // Reads up to the next "\n", which is removed.  Returns 0, with `line` empty, if nothing was left
  // to read.
  int ReadString(CString& line);

 private:
  static constexpr unsigned int kBufferBytes = 8192;

  void WriteBytes(const char* bytes, unsigned int count);
  void WriteOut();
  void DropUnread();
  bool FillBuffer();

  bool isText = false;
  std::unique_ptr<char[]> buffer;  // kBufferBytes, while open
  unsigned int unwritten = 0;      // bytes at the start of the buffer still to be written
  unsigned int next = 0;           // the bytes from `next` to `filled` are unread
  unsigned int filled = 0;
};

}  // namespace kozor_names
