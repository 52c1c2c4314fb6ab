// HostRules.h - where the hosts differ and Win32 has no call that hides it.
#pragma once

#include "platform/Export.h"
#include "platform/win32/Win32.h"

#if defined(_WIN32)

// What makes a file a program: its suffix on Windows, mode bits as well elsewhere.
constexpr char kProgramSuffix[] = ".exe";

inline int KzMakeProgram(const char* /*path*/, const char* /*like*/) {
  return 1;
}

inline int KzCreatesExactly() {
  return 0;
}

inline unsigned int KzNameCodePage() {
  return 0;
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

// Here nobody can replace or remove a file that someone has open, so it is let go first.
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

constexpr char kProgramSuffix[] = ".run";

// Lets all those run the file `path` who may read it, and no one else read it than those who may
// read the file `like`.  Library paths; the owner can always read and run it.  Returns 1; 0 with
// GetLastError on failure.
ZOR_PLATFORM_API int KzMakeProgram(const char* path, const char* like);

// Non-zero where two names that differ in case alone are two files: what is created takes an
// existing name only if it is spelt the same (KzSetCaseBlindCreation).
ZOR_PLATFORM_API int KzCreatesExactly();

// What KzSetNameCodePage has chosen.
ZOR_PLATFORM_API unsigned int KzNameCodePage();

// What GetFileInformationByHandle tells of an open file, but for the attributes, by one look at the
// name.  Returns 1; 0 with GetLastError as CreateFileA.
ZOR_PLATFORM_API int KzLookAtFile(const char* path, BY_HANDLE_FILE_INFORMATION* facts);

// Replace or remove the file `target` (`path`), which the caller has open against other writers,
// and hold it until that is done.  Another process that opened the old file just before can tell by
// the identity of what the name means then.  `*held` is closed and set to null on success, and may
// be so on failure.  Return 1; 0 with GetLastError as MoveFileExA and DeleteFileA do, and
// ERROR_SHARING_VIOLATION if `target` is no longer the file that is held.
ZOR_PLATFORM_API int KzReplaceHeld(const char* path, const char* target, HANDLE* held);
ZOR_PLATFORM_API int KzDeleteHeld(const char* path, HANDLE* held);

#endif
