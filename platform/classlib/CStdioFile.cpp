// CStdioFile.cpp - a buffered file; the buffer holds either unread or unwritten bytes.
#include "platform/classlib/CStdioFile.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// The line end of text files on this system.
#if defined(_WIN32)
constexpr std::string_view kLineEnd = "\r\n";
#else
constexpr std::string_view kLineEnd = "\n";
#endif

bool EndsInReturn(const CString& line) {
  return !line.IsEmpty() && line.GetAt(line.GetLength() - 1) == '\r';
}

}  // namespace

CStdioFile::CStdioFile() = default;

CStdioFile::CStdioFile(const char* fileName, unsigned int openFlags)
    : CFile(fileName, openFlags),
      isText((openFlags & typeText) != 0),
      buffer(std::make_unique<char[]>(kBufferBytes)) {}

CStdioFile::~CStdioFile() {
  try {
    CStdioFile::Close();
  } catch (CException* error) {
    error->Delete();
  }
}

int CStdioFile::Open(const char* fileName, unsigned int openFlags, CFileException* error) {
  if (!CFile::Open(fileName, openFlags, error)) return 0;
  isText = (openFlags & typeText) != 0;
  if (buffer == nullptr) buffer = std::make_unique<char[]>(kBufferBytes);
  return 1;
}

unsigned int CStdioFile::Read(void* target, unsigned int count) {
  WriteOut();
  auto* bytes = static_cast<char*>(target);
  unsigned int done = 0;
  while (done < count && (next < filled || FillBuffer())) {
    const unsigned int piece = std::min(count - done, filled - next);
    std::memcpy(bytes + done, &buffer[next], piece);
    next += piece;
    done += piece;
  }
  return done;
}

void CStdioFile::Write(const void* source, unsigned int count) {
  const auto* bytes = static_cast<const char*>(source);
  if (!isText || kLineEnd == "\n") return WriteBytes(bytes, count);
  for (const char* last = bytes + count; bytes != last;) {
    const char* lineEnd = std::find(bytes, last, '\n');
    WriteBytes(bytes, static_cast<unsigned int>(lineEnd - bytes));
    if (lineEnd == last) return;
    WriteBytes(kLineEnd.data(), static_cast<unsigned int>(kLineEnd.size()));
    bytes = lineEnd + 1;
  }
}

std::uint64_t CStdioFile::Seek(std::int64_t offset, unsigned int from) {
  WriteOut();
  DropUnread();
  return CFile::Seek(offset, from);
}

std::uint64_t CStdioFile::GetLength() {
  WriteOut();
  return CFile::GetLength();
}

void CStdioFile::Flush() {
  WriteOut();
  CFile::Flush();
}

void CStdioFile::Close() {
  try {
    WriteOut();
  } catch (CException*) {
    Abort();
    throw;
  }
  next = filled = 0;
  CFile::Close();
}

void CStdioFile::Abort() {
  unwritten = next = filled = 0;
  CFile::Abort();
}

void CStdioFile::WriteString(const char* text) {
  if (text == nullptr) return;
  for (std::size_t left = std::strlen(text); left > 0;) {
    const auto piece = static_cast<unsigned int>(std::min<std::size_t>(left, kBufferBytes));
    Write(text, piece);
    text += piece;
    left -= piece;
  }
}

int CStdioFile::ReadString(CString& line) {
  WriteOut();
  line.Empty();
  bool any = false;
  for (bool ended = false; !ended && (next < filled || FillBuffer());) {
    const char* unread = buffer.get() + next;
    const char* last = buffer.get() + filled;
    const char* lineEnd = std::find(unread, last, '\n');
    line += CString(unread, static_cast<int>(lineEnd - unread));
    any = true;
    ended = lineEnd != last;
    next = static_cast<unsigned int>(lineEnd - buffer.get()) + ended;
  }
  if (isText && kLineEnd != "\n" && EndsInReturn(line)) line = line.Left(line.GetLength() - 1);
  return any;
}

void CStdioFile::WriteBytes(const char* bytes, unsigned int count) {
  DropUnread();
  if (count > kBufferBytes - unwritten) WriteOut();
  if (count > kBufferBytes) return CFile::Write(bytes, count);
  std::memcpy(&buffer[unwritten], bytes, count);
  unwritten += count;
}

// Writes the buffer to the file.  Bytes that a failed write didn't take are discarded, so that the
// failure is reported once and Close doesn't try again.
void CStdioFile::WriteOut() {
  if (unwritten == 0) return;
  const unsigned int count = std::exchange(unwritten, 0);
  CFile::Write(buffer.get(), count);
}

// Seeks the file back to where the program has read to.
void CStdioFile::DropUnread() {
  if (next == filled) return;
  const std::int64_t unread = filled - next;
  next = filled = 0;
  CFile::Seek(-unread, current);
}

bool CStdioFile::FillBuffer() {
  next = 0;
  filled = 0;
  filled = CFile::Read(buffer.get(), kBufferBytes);
  return filled > 0;
}
