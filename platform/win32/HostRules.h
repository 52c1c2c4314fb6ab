// HostRules.h - differences between hosts that no Win32 call hides.
#pragma once

#include <string>

#include "platform/Export.h"
#include "platform/win32/Win32.h"

// UNIX metadata of a file for which Win32 has no equivalent.
struct KzUnixFacts {
  unsigned int mode;  // permission bits and file type
  unsigned int user;
  unsigned int group;
};

#if defined(_WIN32)

#include "platform/win32/windows/ActivePage.h"
#include "platform/win32/windows/Calls.h"

// Whether a time set by SetFileTime certainly outlasts the closing of that handle, also after the
// file has been mapped.
constexpr bool kClosingKeepsTimes = false;

inline int KzMakeProgram(const char* /*path*/, const char* /*like*/) {
  return 1;
}

inline int KzCreatesExactly() {
  return 0;
}

inline int KzFindNextFile(HANDLE find, WIN32_FIND_DATAA* data) {
  return kozor::windows::FindNextFileA(find, data);
}

inline HANDLE KzFindFirstName(const char* name, FINDEX_SEARCH_OPS operation,
                              WIN32_FIND_DATAA* data) {
  return FindFirstFileExA(name, FindExInfoBasic, data, operation, nullptr,
                          FIND_FIRST_EX_LARGE_FETCH);
}

inline unsigned int KzNameCodePage() {
  return kozor::windows::NamePage();
}

inline int KzLookAtFile(const char* path, BY_HANDLE_FILE_INFORMATION* facts) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file =
      CreateFileA(path, 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return 0;
  const BOOL done = GetFileInformationByHandle(file, facts);
  CloseHandle(file);
  return done;
}

inline int KzGetUnixFacts(HANDLE /*file*/, KzUnixFacts* /*facts*/) {
  SetLastError(ERROR_NOT_SUPPORTED);
  return 0;
}

inline int KzReadLink(const char* /*path*/, KzUnixFacts* /*facts*/, FILETIME* /*lastWrite*/,
                      std::string& /*target*/) {
  return 0;
}

// Windows doesn't replace or remove an open file, so it is closed first.
inline int KzReplaceHeld(const char* path, const char* target, HANDLE* held) {
  CloseHandle(*held);
  *held = nullptr;
  return MoveFileExA(path, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

inline int KzDeleteHeld(const char* path, HANDLE* held) {
  CloseHandle(*held);
  *held = nullptr;
  return DeleteFileA(path);
}

#else

constexpr bool kClosingKeepsTimes = true;

// Makes the file `path` executable for everyone who may read it, after limiting read access to that
// of the file `like`.  Both are library paths.  The owner can always read and run it.  Returns 1,
// or 0 with GetLastError.
ZOR_PLATFORM_API int KzMakeProgram(const char* path, const char* like);

// Non-zero if names that differ only in case are different files when creating
// (KzSetCaseBlindCreation).
ZOR_PLATFORM_API int KzCreatesExactly();

// FindNextFileA.  It needs a separate name because on Windows a macro of that name would also
// rename member functions of classes.
inline int KzFindNextFile(HANDLE find, WIN32_FIND_DATAA* data) {
  return FindNextFileA(find, data);
}

// FindFirstFileExA for callers that need names alone: of the attributes only
// FILE_ATTRIBUTE_DIRECTORY and FILE_ATTRIBUTE_REPARSE_POINT are certain, sizes and times are not
// filled in.  KzFindNextFile goes on in the same way.  It costs no system call per entry, except
// for links, but an entry may have been removed meanwhile.
ZOR_PLATFORM_API HANDLE KzFindFirstName(const char* name, FINDEX_SEARCH_OPS operation,
                                        WIN32_FIND_DATAA* data);

// The code page set by KzSetNameCodePage.
ZOR_PLATFORM_API unsigned int KzNameCodePage();

// Does the work of CreateFileA and GetFileInformationByHandle in one look-up of the name; the
// attributes aren't filled in.  Returns 1, or 0 with GetLastError as from CreateFileA.
ZOR_PLATFORM_API int KzLookAtFile(const char* path, BY_HANDLE_FILE_INFORMATION* facts);

// Returns 1 and the metadata of an open file or directory.  Returns 0 if the system has none, or on
// failure, with GetLastError.
ZOR_PLATFORM_API int KzGetUnixFacts(HANDLE file, KzUnixFacts* facts);

// Returns 1, the metadata of a symbolic link itself, and its target as a library path.  Returns 0
// if it isn't a link or the system has none, with GetLastError; ERROR_NO_UNICODE_TRANSLATION if the
// library can't express the target.
ZOR_PLATFORM_API int KzReadLink(const char* path, KzUnixFacts* facts, FILETIME* lastWrite,
                                std::string& target);

// Replace or remove the file `target` (`path`) while the caller still has it open, denying writers.
// A process that opened the old file just before can detect the change by comparing the file
// identity.  On success `*held` is closed and set to null; on failure it may be.  Return 1, or 0
// with GetLastError as from MoveFileExA and DeleteFileA, or ERROR_SHARING_VIOLATION if `target` is
// no longer the file held.
ZOR_PLATFORM_API int KzReplaceHeld(const char* path, const char* target, HANDLE* held);
ZOR_PLATFORM_API int KzDeleteHeld(const char* path, HANDLE* held);

#endif
