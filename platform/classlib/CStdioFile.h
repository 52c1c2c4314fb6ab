// CStdioFile.h - a file read or written through a buffer, for text line by line.
//
// Opened with CFile::typeText, a "\n" that is written becomes the platform's line end in the file,
// and ReadString takes that off; with CFile::typeBinary, or neither, a line ends in "\n" alone.
// What is written may stay in the buffer until Flush or Close, so both can throw CFileException*
// (diskFull) for an earlier write.
#pragma once

#include <memory>

#include "platform/classlib/CFile.h"
#include "platform/classlib/CString.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CStdioFile : public CFile {
 public:
  CStdioFile();
  CStdioFile(const char* fileName, unsigned int openFlags);
  // Writes out and closes; failures are dropped.
  ~CStdioFile() override;

  int Open(const char* fileName, unsigned int openFlags, CFileException* error = nullptr) override;
  unsigned int Read(void* buffer, unsigned int count) override;
  void Write(const void* buffer, unsigned int count) override;
  std::uint64_t Seek(std::int64_t offset, unsigned int from) override;
  std::uint64_t GetLength() override;
  void Flush() override;
  // Writes out and closes.  When that throws, the file is closed all the same.
  void Close() override;
  void Abort() override;

  // Writes `text` without its terminator and adds nothing.  A null `text` is an empty one.
  void WriteString(const char* text);
  // Reads up to the next "\n", which is taken off.  Returns 0 at the end of the file, when nothing
  // was left to read; `line` is then empty.
  int ReadString(CString& line);

 private:
  static constexpr unsigned int kBufferBytes = 8192;

  void WriteBytes(const char* bytes, unsigned int count);
  void WriteOut();
  void DropUnread();
  bool FillBuffer();

  bool isText = false;
  std::unique_ptr<char[]> buffer;  // kBufferBytes, while open
  unsigned int unwritten = 0;      // bytes at the start of the buffer that wait to be written
  unsigned int next = 0;           // the bytes from `next` to `filled` wait to be read
  unsigned int filled = 0;
};

}  // namespace kozor_names
