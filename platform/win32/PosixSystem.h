// PosixSystem.h - Win32 calls for modules, disks, the version and times on POSIX.
// Include Win32.h, never this file.
#pragma once

#include <time.h>

#include "platform/Export.h"
#include "platform/win32/PosixTypes.h"

// Loads a module, counted, or counts one more on a loaded one.  A bare name is looked for in the
// directory of the running program, in the one of SetDllDirectoryA, in the directory of the
// platform library, then where the dynamic loader looks; never in the current directory.  File
// names are compared without case, and ".DLL" is added to a name without extension.  "KERNEL32.DLL"
// is always there.  Null on failure: ERROR_MOD_NOT_FOUND, ERROR_BAD_EXE_FORMAT.
ZOR_PLATFORM_API HMODULE WINAPI LoadLibraryA(LPCSTR name);
// Looks in the module itself only, not in what it is linked with.  ERROR_PROC_NOT_FOUND; ordinals
// are refused in the same way.
ZOR_PLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
ZOR_PLATFORM_API int WINAPI FreeLibrary(HMODULE module);
// Null or "" takes the directory out of the search.
ZOR_PLATFORM_API int WINAPI SetDllDirectoryA(LPCSTR directory);

// Figures of the file system that the drive's or share's host directory lies on.
ZOR_PLATFORM_API int WINAPI GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster,
                                              LPDWORD bytesPerSector, LPDWORD freeClusters,
                                              LPDWORD totalClusters);
ZOR_PLATFORM_API int WINAPI GetDiskFreeSpaceExA(LPCSTR directory, PULARGE_INTEGER freeToCaller,
                                                PULARGE_INTEGER totalBytes,
                                                PULARGE_INTEGER totalFree);
// DRIVE_*, by what the host knows of the device and the file system.
ZOR_PLATFORM_API UINT WINAPI GetDriveTypeA(LPCSTR root);
// Maps a drive, "A:" to "Z:", to a host directory (UTF-8 text, as the host writes it), in place of
// an earlier mapping; DDD_REMOVE_DEFINITION takes it away, and gives "C:" back its "/". Differs:
// definitions don't stack.
ZOR_PLATFORM_API int WINAPI DefineDosDeviceA(DWORD flags, LPCSTR device, LPCSTR hostDirectory);
// Reports version 10.0 of the NT line.
ZOR_PLATFORM_API int WINAPI GetVersionExA(LPOSVERSIONINFOA information);

ZOR_PLATFORM_API int WINAPI FileTimeToSystemTime(const FILETIME* fileTime, LPSYSTEMTIME systemTime);
ZOR_PLATFORM_API int WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, LPFILETIME fileTime);
// DOS times are two words without a zone, even seconds from 1980 to 2107; converted as they stand.
ZOR_PLATFORM_API int WINAPI DosDateTimeToFileTime(WORD date, WORD time, LPFILETIME fileTime);
ZOR_PLATFORM_API int WINAPI FileTimeToDosDateTime(const FILETIME* fileTime, LPWORD date,
                                                  LPWORD time);
// These two add or take away the zone's offset that is in force now, whatever the date converted:
// that is the contract of the real calls.
ZOR_PLATFORM_API int WINAPI LocalFileTimeToFileTime(const FILETIME* localTime, LPFILETIME fileTime);
ZOR_PLATFORM_API int WINAPI FileTimeToLocalFileTime(const FILETIME* fileTime, LPFILETIME localTime);
ZOR_PLATFORM_API void WINAPI GetSystemTimeAsFileTime(LPFILETIME fileTime);
// Milliseconds since the machine started.
ZOR_PLATFORM_API ULONGLONG WINAPI GetTickCount64();

// Seconds from local standard time to UTC, good once tzset, mktime or localtime has been called.
#define _timezone (::timezone)
