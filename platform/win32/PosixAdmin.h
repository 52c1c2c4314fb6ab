// PosixAdmin.h - what an application on POSIX can decide and Win32 has no name for: shares, the
// code page, case, and how host paths and library paths correspond.  (Drives are mapped with
// DefineDosDeviceA.)
//
// A library path is what every function of the library takes: "C:\home\me\a.txt", bytes in the
// active code page.  A host path is the host's own: "/home/me/a.txt", UTF-8.  All settings are
// process-wide; make them before other threads use the library.
#pragma once

#if !defined(_WIN32)

#include <string>

#include "platform/Export.h"

// Maps a share, "\\server\share" (case doesn't matter), to a host directory; null unmaps it.
// Returns 1; 0 with GetLastError ERROR_BAD_NETPATH (not a share's name), ERROR_INVALID_PARAMETER
// (no host path) or ERROR_BAD_NET_NAME (unmapping what isn't mapped).
ZOR_PLATFORM_API int KzMapShare(const char* share, const char* hostDirectory);

// Chooses the active code page: 932 (the default) or 65001.  Returns 1, or 0 with
// ERROR_INVALID_PARAMETER for any other.  Paths made before keep the bytes they have.
ZOR_PLATFORM_API int KzSetActiveCodePage(unsigned int codePage);

// The code page of names in archives that don't record theirs: 932, 65001, 437, 850, 852, 866, 936,
// 949, 950, 1250 to 1252, 10000, 28591 or 51932.  0, the default: it is guessed, once for each
// archive.  A name that isn't valid in the page is read as if nothing had been chosen.  Returns 1,
// or 0 with ERROR_INVALID_PARAMETER for any other.
ZOR_PLATFORM_API int KzSetNameCodePage(unsigned int codePage);

// Non-zero: a file is found under its exact name only, as in a directory that is case-sensitive on
// Windows.  Zero, the default: the exact name first, then any that differs in case alone.
// Wild-cards ignore case either way.  Returns the old value.
ZOR_PLATFORM_API int KzSetCaseSensitive(int on);

// Zero, the default: calls that may create a name (files, directories, targets of a move) take an
// existing one only if it is spelt the same, so "a" and "A" are two files.  Non-zero: they take one
// that differs in case too, as on Windows, where there is never a second.  Returns the old value.
ZOR_PLATFORM_API int KzSetCaseBlindCreation(int on);

// When FlushFileBuffers waits for the medium.  Zero, the default: at once.  Non-zero: when the file
// is closed, once for all calls; CloseHandle returns 0 with the error if the data didn't get there.
// Returns the old value.
ZOR_PLATFORM_API int KzSetFlushAtClose(int on);

// Between host paths and library paths.  Relative paths stay relative.  An absolute host path comes
// out on the drive whose directory is its longest prefix; a library path that exists gives the
// spelling on disk.  Nothing has to exist.
// Return 1; 0 with ERROR_INVALID_NAME or ERROR_NO_UNICODE_TRANSLATION where a component can't be
// expressed on the other side, ERROR_PATH_NOT_FOUND where no drive holds the path (and
// ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME for a share that isn't mapped).  The result is untouched
// then.
ZOR_PLATFORM_API int KzHostToLibraryPath(const char* hostPath, std::string& libraryPath);
ZOR_PLATFORM_API int KzLibraryToHostPath(const char* libraryPath, std::string& hostPath);

#endif
