// FileCalls.cpp - the calls of Calls.h that take file names.
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string>

#include "platform/win32/windows/Calls.h"
#include "platform/win32/windows/Paths.h"

namespace kozor::windows {

namespace {

bool Makes(DWORD disposition) {
  return disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
}

// Stores a name in a search record.  A name that is too long is truncated and made unusable.
void SetName(char (&target)[MAX_PATH], const wchar_t* name) {
  std::string text;
  FromWide(name, text);
  const std::size_t room = std::size(target) - 1;
  if (text.size() > room) {
    text.resize(room);
    text.back() = '?';
  }
  std::memcpy(target, text.c_str(), text.size() + 1);
}

void Give(const WIN32_FIND_DATAW& found, WIN32_FIND_DATAA& data) {
  data = {};
  data.dwFileAttributes = found.dwFileAttributes;
  data.ftCreationTime = found.ftCreationTime;
  data.ftLastAccessTime = found.ftLastAccessTime;
  data.ftLastWriteTime = found.ftLastWriteTime;
  data.nFileSizeHigh = found.nFileSizeHigh;
  data.nFileSizeLow = found.nFileSizeLow;
  data.dwReserved0 = found.dwReserved0;
  data.dwReserved1 = found.dwReserved1;
  SetName(data.cFileName, found.cFileName);
}

// Copies a path to the caller's buffer.  Returns its length, or the size needed if the buffer is
// too small.
DWORD GivePath(std::wstring_view wide, LPSTR target, DWORD bytes) {
  std::string path;
  FromWide(wide, path);
  if (path.size() >= bytes) return static_cast<DWORD>(path.size() + 1);
  std::memcpy(target, path.c_str(), path.size() + 1);
  return static_cast<DWORD>(path.size());
}

}  // namespace

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile) {
  std::wstring path;
  if (!ToSystemPath(name, path, Use::Find)) return INVALID_HANDLE_VALUE;
  if (Makes(disposition) && !ToSystemPath(name, path, Use::Make)) {
    // An existing file of such a name may be opened, but none may be created.
    if (disposition == CREATE_NEW || GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
      SetLastError(ERROR_INVALID_NAME);
      return INVALID_HANDLE_VALUE;
    }
  }
  return CreateFileW(path.c_str(), access, share, security, disposition, flags, templateFile);
}

BOOL DeleteFileA(LPCSTR name) {
  std::wstring path;
  return ToSystemPath(name, path) && DeleteFileW(path.c_str());
}

BOOL MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags) {
  std::wstring from;
  std::wstring to;
  return ToSystemPath(existingName, from) && ToSystemPath(newName, to, Use::Make) &&
         MoveFileExW(from.c_str(), to.c_str(), flags);
}

BOOL CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security) {
  std::wstring path;
  return ToSystemPath(name, path, Use::Make) && CreateDirectoryW(path.c_str(), security);
}

BOOL RemoveDirectoryA(LPCSTR name) {
  std::wstring path;
  return ToSystemPath(name, path) && RemoveDirectoryW(path.c_str());
}

DWORD GetFileAttributesA(LPCSTR name) {
  std::wstring path;
  return ToSystemPath(name, path) ? GetFileAttributesW(path.c_str()) : INVALID_FILE_ATTRIBUTES;
}

BOOL GetFileAttributesExA(LPCSTR name, GET_FILEEX_INFO_LEVELS level, LPVOID information) {
  std::wstring path;
  return ToSystemPath(name, path) && GetFileAttributesExW(path.c_str(), level, information);
}

BOOL SetFileAttributesA(LPCSTR name, DWORD attributes) {
  std::wstring path;
  return ToSystemPath(name, path) && SetFileAttributesW(path.c_str(), attributes);
}

HANDLE FindFirstFileA(LPCSTR name, LPWIN32_FIND_DATAA data) {
  return windows::FindFirstFileExA(name, FindExInfoStandard, data, FindExSearchNameMatch, nullptr,
                                   0);
}

HANDLE FindFirstFileExA(LPCSTR name, FINDEX_INFO_LEVELS /*level*/, LPVOID data,
                        FINDEX_SEARCH_OPS operation, LPVOID filter, DWORD flags) {
  std::wstring path;
  if (!ToSystemPath(name, path)) return INVALID_HANDLE_VALUE;
  WIN32_FIND_DATAW found;
  const HANDLE find =
      FindFirstFileExW(path.c_str(), FindExInfoBasic, &found, operation, filter, flags);
  if (find != INVALID_HANDLE_VALUE) Give(found, *static_cast<WIN32_FIND_DATAA*>(data));
  return find;
}

BOOL FindNextFileA(HANDLE find, LPWIN32_FIND_DATAA data) {
  WIN32_FIND_DATAW found;
  if (!FindNextFileW(find, &found)) return FALSE;
  Give(found, *data);
  return TRUE;
}

DWORD GetFullPathNameA(LPCSTR path, DWORD bytes, LPSTR full, LPSTR* filePart) {
  std::wstring wide;
  if (filePart != nullptr) *filePart = nullptr;
  if (!ToSystemPath(path, wide)) return 0;
  return GivePath(WithoutPrefix(wide), full, bytes);
}

DWORD GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD bytes, DWORD flags) {
  std::wstring wide(GetFinalPathNameByHandleW(file, nullptr, 0, flags), L'\0');
  if (wide.empty()) return 0;
  wide.resize(GetFinalPathNameByHandleW(file, wide.data(), static_cast<DWORD>(wide.size()), flags));
  return GivePath(WithoutPrefix(wide), path, bytes);
}

DWORD GetTempPathA(DWORD bytes, LPSTR path) {
  std::array<wchar_t, MAX_PATH + 1> wide{};
  const DWORD length = GetTempPathW(static_cast<DWORD>(wide.size()), wide.data());
  if (length == 0 || length >= wide.size()) return 0;
  return GivePath({wide.data(), length}, path, bytes);
}

BOOL GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                       LPDWORD freeClusters, LPDWORD totalClusters) {
  std::wstring path;
  if (root != nullptr && !ToWide(root, path)) return FALSE;
  return GetDiskFreeSpaceW(root != nullptr ? path.c_str() : nullptr, sectorsPerCluster,
                           bytesPerSector, freeClusters, totalClusters);
}

UINT GetDriveTypeA(LPCSTR root) {
  std::wstring path;
  if (root != nullptr && !ToWide(root, path)) return DRIVE_NO_ROOT_DIR;
  return GetDriveTypeW(root != nullptr ? path.c_str() : nullptr);
}

}  // namespace kozor::windows
