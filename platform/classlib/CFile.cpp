// CFile.cpp - see CFile.h.
#include "platform/classlib/CFile.h"

#include <cstring>
#include <utility>

#include "platform/base/ByteOrder.h"
#include "platform/classlib/CString.h"
#include "platform/win32/AnsiPath.h"

namespace {

using kozor::AnsiPath;

[[noreturn]] void ThrowLastError() {
  CFileException::ThrowOsError(static_cast<LONG>(GetLastError()));
}

void Report(CFileException* error, LONG osError) {
  if (error == nullptr) return;
  error->m_lOsError = osError;
  error->m_cause = CFileException::OsErrorToException(osError);
}

DWORD AccessOf(unsigned int openFlags) {
  switch (openFlags & 0x3) {
    case CFile::modeWrite:
      return GENERIC_WRITE;
    case CFile::modeReadWrite:
      return GENERIC_READ | GENERIC_WRITE;
    default:
      return GENERIC_READ;
  }
}

DWORD SharingOf(unsigned int openFlags) {
  switch (openFlags & 0x70) {
    case CFile::shareDenyWrite:
      return FILE_SHARE_READ;
    case CFile::shareDenyRead:
      return FILE_SHARE_WRITE;
    case CFile::shareDenyNone:
      return FILE_SHARE_READ | FILE_SHARE_WRITE;
    default:
      return 0;
  }
}

DWORD DispositionOf(unsigned int openFlags) {
  if ((openFlags & CFile::modeCreate) == 0) return OPEN_EXISTING;
  return (openFlags & CFile::modeNoTruncate) != 0 ? OPEN_ALWAYS : CREATE_ALWAYS;
}

const char* TextOf(const char* path) {
  return path != nullptr ? path : "";
}

// For the records of searches and of open files.
template <typename Record>
void Fill(CFileStatus& status, const Record& entry) {
  status.m_ctime = entry.ftCreationTime;
  status.m_mtime = entry.ftLastWriteTime;
  status.m_atime = entry.ftLastAccessTime;
  status.m_size = kozor::JoinHalves(entry.nFileSizeHigh, entry.nFileSizeLow);
  status.m_attribute =
      static_cast<unsigned char>(entry.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_NORMAL});
}

// A path as a search accepts it: without a trailing backslash, unless that is part of a root.
CString WithoutTrailingBackslash(const char* path) {
  std::string_view entry = path;
  if (!AnsiPath(entry).EndsInSeparator()) return path;
  entry.remove_suffix(1);
  const bool isRoot = entry.empty() || AnsiPath(entry).IsFolder();
  return isRoot ? CString(path) : CString(path, static_cast<int>(entry.size()));
}

}  // namespace

CFile::CFile() = default;

CFile::CFile(const char* fileName, unsigned int openFlags) {
  CFileException error;
  if (!CFile::Open(fileName, openFlags, &error)) {
    throw new CFileException(error.m_cause, error.m_lOsError);
  }
}

CFile::~CFile() {
  CFile::Abort();
}

int CFile::Open(const char* fileName, unsigned int openFlags, CFileException* error) {
  if (IsOpen()) {
    Report(error, ERROR_OPEN_FAILED);
    return 0;
  }
  file = CreateFileA(TextOf(fileName), AccessOf(openFlags), SharingOf(openFlags), nullptr,
                     DispositionOf(openFlags), FILE_ATTRIBUTE_NORMAL, nullptr);
  if (IsOpen()) return 1;
  Report(error, static_cast<LONG>(GetLastError()));
  return 0;
}

unsigned int CFile::Read(void* buffer, unsigned int count) {
  DWORD bytesRead = 0;
  if (!ReadFile(file, buffer, count, &bytesRead, nullptr)) ThrowLastError();
  return bytesRead;
}

void CFile::Write(const void* buffer, unsigned int count) {
  DWORD written = 0;
  if (!WriteFile(file, buffer, count, &written, nullptr)) ThrowLastError();
  if (written != count) CFileException::ThrowOsError(ERROR_DISK_FULL);
}

std::uint64_t CFile::Seek(std::int64_t offset, unsigned int from) {
  static_assert(begin == FILE_BEGIN && current == FILE_CURRENT && end == FILE_END);
  LARGE_INTEGER distance;
  distance.QuadPart = offset;
  LARGE_INTEGER position;
  if (!SetFilePointerEx(file, distance, &position, from)) ThrowLastError();
  return static_cast<std::uint64_t>(position.QuadPart);
}

std::uint64_t CFile::GetLength() {
  LARGE_INTEGER length;
  if (!GetFileSizeEx(file, &length)) ThrowLastError();
  return static_cast<std::uint64_t>(length.QuadPart);
}

void CFile::Flush() {
  if (IsOpen() && !FlushFileBuffers(file)) ThrowLastError();
}

void CFile::Close() {
  if (!IsOpen()) return;
  if (!CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE))) ThrowLastError();
}

void CFile::Abort() {
  if (IsOpen()) CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE));
}

int CFile::GetStatus(const char* path, CFileStatus& status) {
  path = TextOf(path);
  if (std::strpbrk(path, "*?") != nullptr) return 0;
  WIN32_FIND_DATAA entry;
  HANDLE search = FindFirstFileA(WithoutTrailingBackslash(path), &entry);
  if (search == INVALID_HANDLE_VALUE) return 0;
  FindClose(search);
  Fill(status, entry);
  return 1;
}

int CFile::GetStatus(CFileStatus& status) const {
  BY_HANDLE_FILE_INFORMATION information;
  if (!GetFileInformationByHandle(file, &information)) return 0;
  Fill(status, information);
  return 1;
}

void CFile::Remove(const char* fileName) {
  if (!DeleteFileA(TextOf(fileName))) ThrowLastError();
}
