// Calls.h - replaces the narrow Win32 calls that take names in our own code on Windows.
//
// Names are byte strings in the active code page (CodePages.h), as everywhere.  They go through the
// system's wide calls in the \\?\ form, so that
//
// - a path may be as long as the file system permits;
// - a name means exactly the file of that name: trailing dots and blanks count, and no name means
//   a device.  Names that ordinary Windows calls can't create aren't created: ERROR_INVALID_NAME;
// - in names that the code page can't express, each such character is listed as '?', and such a
//   name opens nothing.  The system's narrow calls would use a similar character instead, which
//   may give the name of another file.
//
// Everything else is the system's: results, last errors, and all other calls.  Include Win32.h,
// never this file.
#pragma once

#include <mbstring.h>
#include <windows.h>

namespace kozor::windows {

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);
BOOL DeleteFileA(LPCSTR name);
BOOL MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags);
BOOL CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security);
BOOL RemoveDirectoryA(LPCSTR name);
DWORD GetFileAttributesA(LPCSTR name);
BOOL GetFileAttributesExA(LPCSTR name, GET_FILEEX_INFO_LEVELS level, LPVOID information);
BOOL SetFileAttributesA(LPCSTR name, DWORD attributes);

// Names longer than 259 bytes are truncated and end in '?'.  Short names aren't given.
HANDLE FindFirstFileA(LPCSTR name, LPWIN32_FIND_DATAA data);
// `data` is a WIN32_FIND_DATAA.
HANDLE FindFirstFileExA(LPCSTR name, FINDEX_INFO_LEVELS level, LPVOID data,
                        FINDEX_SEARCH_OPS operation, LPVOID filter, DWORD flags);
BOOL FindNextFileA(HANDLE find, LPWIN32_FIND_DATAA data);

DWORD GetTempPathA(DWORD bytes, LPSTR path);

// These two return paths without the prefix \\?\.
DWORD GetFullPathNameA(LPCSTR path, DWORD bytes, LPSTR full, LPSTR* filePart);
DWORD GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD bytes, DWORD flags);

BOOL GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                       LPDWORD freeClusters, LPDWORD totalClusters);
UINT GetDriveTypeA(LPCSTR root);

// Text in the active code page.  Comparisons in 932 and UTF-8 fold the same characters as on every
// system (docs/platform.md); in others they are the C run-time library's.
UINT GetACP();
BOOL IsDBCSLeadByte(BYTE byte);
LPSTR CharNextA(LPCSTR text);
LPSTR CharPrevA(LPCSTR start, LPCSTR current);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH wide, int units, LPSTR text, int bytes,
                        LPCCH defaultChar, LPBOOL usedDefaultChar);
unsigned int _mbctolower(unsigned int character);
int _mbscmp(const unsigned char* a, const unsigned char* b);
int _mbsicmp(const unsigned char* a, const unsigned char* b);
int _mbsnbcmp(const unsigned char* a, const unsigned char* b, std::size_t bytes);

}  // namespace kozor::windows
