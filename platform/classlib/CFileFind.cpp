// CFileFind.cpp - enumerates the entries of a directory that match a mask, reading one entry ahead.
#include "platform/classlib/CFileFind.h"

#include <cstring>

#include "platform/base/ByteOrder.h"
#include "platform/win32/HostRules.h"

namespace {

// The part of a path before its last name.
CString DirectoryOf(const char* path) {
  const char* name = path;
  for (const char* p = path; *p != '\0'; p = CharNextA(p)) {
    if (*p == '\\' || (*p == ':' && p == path + 1)) name = p + 1;
  }
  return CString(path, static_cast<int>(name - path));
}

}  // namespace

CFileFind::CFileFind() = default;

CFileFind::~CFileFind() {
  Close();
}

int CFileFind::FindFile(const char* name, DWORD /*unused*/) {
  Close();
  if (name == nullptr) name = "*.*";
  directory = DirectoryOf(name);
  search = FindFirstFileA(name, &next);
  hasNext = search != INVALID_HANDLE_VALUE;
  return hasNext;
}

int CFileFind::FindNextFileA() {
  if (!hasNext) return 0;
  current = next;
  hasNext = KzFindNextFile(search, &next) != 0;
  return hasNext;
}

void CFileFind::Close() {
  if (search == INVALID_HANDLE_VALUE) return;
  FindClose(search);
  search = INVALID_HANDLE_VALUE;
  hasNext = false;
}

bool CFileFind::IsDots() const {
  return std::strcmp(GetFileName(), ".") == 0 || std::strcmp(GetFileName(), "..") == 0;
}

bool CFileFind::IsDirectory() const {
  return MatchesMask(FILE_ATTRIBUTE_DIRECTORY);
}

bool CFileFind::MatchesMask(DWORD mask) const {
  return (GetAttributes() & mask) != 0;
}

DWORD CFileFind::GetAttributes() const {
  return current.dwFileAttributes;
}

const char* CFileFind::GetFileName() const {
  return current.cFileName;
}

CString CFileFind::GetFilePath() const {
  return directory + GetFileName();
}

std::uint64_t CFileFind::GetLength() const {
  return kozor::JoinHalves(current.nFileSizeHigh, current.nFileSizeLow);
}
