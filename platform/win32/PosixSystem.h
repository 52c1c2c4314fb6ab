// PosixSystem.h - Win32 calls for modules, disks, the version and times on POSIX.
// Include Win32.h, never this file.
#pragma once

#include <time.h>

#include "platform/Export.h"
#include "platform/win32/PosixTypes.h"

// Loads a module, or increments its reference count if it is loaded.  A bare name is searched in
// the directory of the running program, in that of SetDllDirectoryA, in the directory of the
// platform library, in the directory where the project's modules are installed, then by the dynamic
// loader; never in the current directory.  File names are case-insensitive, and ".DLL" is added to
// a name without extension.  "KERNEL32.DLL" always exists.  Null on failure: ERROR_MOD_NOT_FOUND,
// ERROR_BAD_EXE_FORMAT.
ZOR_PLATFORM_API HMODULE WINAPI LoadLibraryA(LPCSTR name);
// Searches the module itself only, not the libraries it is linked with.  ERROR_PROC_NOT_FOUND, also
// for ordinals.
ZOR_PLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);
ZOR_PLATFORM_API int WINAPI FreeLibrary(HMODULE module);
// Null or "" removes the directory from the search.
ZOR_PLATFORM_API int WINAPI SetDllDirectoryA(LPCSTR directory);

// The space on the file system that holds the host directory of the drive or share.
ZOR_PLATFORM_API int WINAPI GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster,
                                              LPDWORD bytesPerSector, LPDWORD freeClusters,
                                              LPDWORD totalClusters);
ZOR_PLATFORM_API int WINAPI GetDiskFreeSpaceExA(LPCSTR directory, PULARGE_INTEGER freeToCaller,
                                                PULARGE_INTEGER totalBytes,
                                                PULARGE_INTEGER totalFree);
// DRIVE_*, from what the host reports about the device and the file system.
ZOR_PLATFORM_API UINT WINAPI GetDriveTypeA(LPCSTR root);
// Maps a drive, "A:" to "Z:", to a host directory (a host path in UTF-8), replacing an earlier
// mapping.  DDD_REMOVE_DEFINITION removes the mapping, and maps "C:" to "/" again.
// Differs: definitions don't stack.
ZOR_PLATFORM_API int WINAPI DefineDosDeviceA(DWORD flags, LPCSTR device, LPCSTR hostDirectory);
// Reports version 10.0 of the NT line.
ZOR_PLATFORM_API int WINAPI GetVersionExA(LPOSVERSIONINFOA information);

ZOR_PLATFORM_API int WINAPI FileTimeToSystemTime(const FILETIME* fileTime, LPSYSTEMTIME systemTime);
ZOR_PLATFORM_API int WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, LPFILETIME fileTime);
// DOS times are two words without a time zone, with even seconds, from 1980 to 2107.  No zone is
// applied.
ZOR_PLATFORM_API int WINAPI DosDateTimeToFileTime(WORD date, WORD time, LPFILETIME fileTime);
ZOR_PLATFORM_API int WINAPI FileTimeToDosDateTime(const FILETIME* fileTime, LPWORD date,
                                                  LPWORD time);
// These two apply the time zone offset in force now, whatever the date converted, as the real calls
// do.
ZOR_PLATFORM_API int WINAPI LocalFileTimeToFileTime(const FILETIME* localTime, LPFILETIME fileTime);
ZOR_PLATFORM_API int WINAPI FileTimeToLocalFileTime(const FILETIME* fileTime, LPFILETIME localTime);
ZOR_PLATFORM_API void WINAPI GetSystemTimeAsFileTime(LPFILETIME fileTime);
// Milliseconds since the machine started.
ZOR_PLATFORM_API ULONGLONG WINAPI GetTickCount64();

// Seconds from local standard time to UTC; valid after a call of tzset, mktime or localtime.
#define _timezone (::timezone)
