// PosixAdmin.h - settings and conversions on POSIX for which Win32 has no call: shares, code pages,
// case, flushing, host paths.  (DefineDosDeviceA maps drives.)
//
// A library path is what every function of the library takes: "C:\home\me\a.txt", bytes in the
// active code page.  A host path is the host's own: "/home/me/a.txt", UTF-8.  Settings apply to the
// process; make them before other threads use the library.
#pragma once

#if !defined(_WIN32)

#include <string>

#include "platform/Export.h"
#include "platform/win32/CodePages.h"

// Maps a share, "\\server\share" in any case, to a host directory; null unmaps it.  Returns 1, or 0
// with GetLastError ERROR_BAD_NETPATH (not a share name), ERROR_INVALID_PARAMETER (empty host path)
// or ERROR_BAD_NET_NAME (not mapped).
ZOR_PLATFORM_API int KzMapShare(const char* share, const char* hostDirectory);

// Non-zero: a file is found by its exact name only, as in a case-sensitive directory on Windows.
// Zero, the default: by its exact name, else by one that differs only in case.  Wild-cards ignore
// case either way.  Returns the old value.
ZOR_PLATFORM_API int KzSetCaseSensitive(int on);

// Zero, the default: calls that may create a name (files, directories, targets of a move) match an
// existing one only exactly, so "a" and "A" are two files.  Non-zero: they match it regardless of
// case, as on Windows.  Returns the old value.
ZOR_PLATFORM_API int KzSetCaseBlindCreation(int on);

// Non-zero, the default: searches report a link's target.  Zero: they report the link itself, which
// isn't a directory, so that no walk follows it.  Returns the old value.
ZOR_PLATFORM_API int KzSetSearchFollowsLinks(int on);

// When data is flushed to the medium.  Zero, the default: in FlushFileBuffers.  Non-zero: once,
// when the file is closed; CloseHandle then returns 0 with the error if that fails.  Returns the
// old value.
ZOR_PLATFORM_API int KzSetFlushAtClose(int on);

// Convert between host paths and library paths.  Relative paths stay relative.  An absolute host
// path is placed on the drive whose directory is its longest prefix.  The file need not exist; if
// it does, the host path has its spelling on disk.
// Return 1, or 0 with ERROR_INVALID_NAME or ERROR_NO_UNICODE_TRANSLATION if a component can't be
// converted, ERROR_PATH_NOT_FOUND if no drive holds the path, ERROR_BAD_NETPATH or
// ERROR_BAD_NET_NAME for an unmapped share.  The result is then unchanged.
ZOR_PLATFORM_API int KzHostToLibraryPath(const char* hostPath, std::string& libraryPath);
ZOR_PLATFORM_API int KzLibraryToHostPath(const char* libraryPath, std::string& hostPath);

#endif
