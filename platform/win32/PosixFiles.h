// PosixFiles.h - Win32 calls for files, directories, searches and mappings on POSIX.
//
// Every function returns what the real call returns and sets GetLastError, which is per thread.
// Paths are byte strings in the active code page; both '\' and '/' separate.  "Differs" marks
// deviations from the real call.  Include Win32.h, never this file.
#pragma once

#include "platform/Export.h"
#include "platform/win32/PosixTypes.h"

ZOR_PLATFORM_API DWORD WINAPI GetLastError();
ZOR_PLATFORM_API void WINAPI SetLastError(DWORD error);

// Opens or creates a file.  `access` is GENERIC_READ, GENERIC_WRITE, both, or 0 to query metadata
// only; `share` any FILE_SHARE_*; `disposition` one of the five; `flags` any FILE_ATTRIBUTE_* that
// a new file can have, FILE_FLAG_BACKUP_SEMANTICS, which opening a directory requires, and, with
// CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE: the name goes at once, and only the owner may open it.
// `security` may be null; `templateFile` must be.  Returns INVALID_HANDLE_VALUE on failure.  On
// success the last error is ERROR_ALREADY_EXISTS if CREATE_ALWAYS or OPEN_ALWAYS found a file, else
// 0.
//
// Differs: anything but a regular file or a directory fails with ERROR_ACCESS_DENIED, as opening it
// could block.  Nothing is created through a dangling link.
ZOR_PLATFORM_API HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share,
                                           LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                           DWORD flags, HANDLE templateFile);

// Closes a handle from CreateFileA or CreateFileMappingA.  Reports a late write error only for a
// flush that was deferred (KzSetFlushAtClose); the handle is closed even then.
ZOR_PLATFORM_API int WINAPI CloseHandle(HANDLE handle);

// Reads up to `bytes`; fewer only at the end of the file.  `overlapped` must be null.
ZOR_PLATFORM_API int WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD bytesRead,
                                     LPOVERLAPPED overlapped);

// Writes all of `bytes`, or fails and stores the number already written in `*bytesWritten`.
// Differs: on a full disk (ERROR_DISK_FULL) the beginning of the block may have been written.
ZOR_PLATFORM_API int WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes,
                                      LPDWORD bytesWritten, LPOVERLAPPED overlapped);

// Moves the file pointer by a signed 64-bit distance with the upper half `*distanceHigh`, or by a
// signed 32-bit distance if that is null.  Returns the low half of the new position, or
// INVALID_SET_FILE_POINTER, which is an error only if GetLastError isn't NO_ERROR.
ZOR_PLATFORM_API DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh,
                                             DWORD method);
ZOR_PLATFORM_API int WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance,
                                             PLARGE_INTEGER position, DWORD method);
ZOR_PLATFORM_API DWORD WINAPI GetFileSize(HANDLE file, LPDWORD sizeHigh);
ZOR_PLATFORM_API int WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);

// Makes the file end at the file pointer.  Growing reserves the blocks, so a full disk is reported
// here.
ZOR_PLATFORM_API int WINAPI SetEndOfFile(HANDLE file);

// Flushes the file's data to the medium, or leaves that to CloseHandle (KzSetFlushAtClose).
ZOR_PLATFORM_API int WINAPI FlushFileBuffers(HANDLE file);

// A null pointer, or a time of 0 or all ones, leaves that time unchanged.
// Differs: the creation time can't be set and is ignored.
ZOR_PLATFORM_API int WINAPI SetFileTime(HANDLE file, const FILETIME* creation,
                                        const FILETIME* lastAccess, const FILETIME* lastWrite);
ZOR_PLATFORM_API int WINAPI GetFileTime(HANDLE file, LPFILETIME creation, LPFILETIME lastAccess,
                                        LPFILETIME lastWrite);

// The volume serial number and the file index together identify a file or directory on this
// machine.  A handle opened through a link has those of the link's target.
ZOR_PLATFORM_API int WINAPI GetFileInformationByHandle(HANDLE file,
                                                       LPBY_HANDLE_FILE_INFORMATION information);

// The path of an open file, with a drive and with all links resolved.  Returns its length, or the
// size needed with the terminator if `bytes` is too small, or 0 on failure.  `flags` must be 0.
//
// Differs: no prefix before the drive.
ZOR_PLATFORM_API DWORD WINAPI GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD bytes,
                                                        DWORD flags);

// Deletes a file or a link, never the link's target.  ERROR_ACCESS_DENIED for a directory and for a
// read-only file; ERROR_SHARING_VIOLATION while it is open without FILE_SHARE_DELETE.
ZOR_PLATFORM_API int WINAPI DeleteFileA(LPCSTR name);

// Renames a file or directory atomically.  `flags`: MOVEFILE_REPLACE_EXISTING,
// MOVEFILE_WRITE_THROUGH (returns after the change has reached the medium).  ERROR_NOT_SAME_DEVICE
// between file systems: nothing is ever copied.  Differs: the new name matches an existing file
// only exactly (KzSetCaseBlindCreation).  A replaced file passes on its host owner and permissions.
ZOR_PLATFORM_API int WINAPI MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags);

ZOR_PLATFORM_API int WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security);
// Removes one empty directory, or a link to a directory.
ZOR_PLATFORM_API int WINAPI RemoveDirectoryA(LPCSTR name);

// Attributes: docs/platform.md says how they are kept.  FILE_ATTRIBUTE_NORMAL means none.
ZOR_PLATFORM_API DWORD WINAPI GetFileAttributesA(LPCSTR name);
ZOR_PLATFORM_API int WINAPI GetFileAttributesExA(LPCSTR name, GET_FILEEX_INFO_LEVELS level,
                                                 LPVOID information);
ZOR_PLATFORM_API int WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes);

// Searches.  Only the last component may hold wild-cards.  Entries come in this order: ".", "..",
// then by name, ignoring case.  If a directory can't be opened or read to its end, the error
// follows the entries that could be read: ERROR_ACCESS_DENIED, ERROR_IO_DEVICE and so on, never
// ERROR_NO_MORE_FILES.
// Differs: in a host name, each character that the code page doesn't have or Windows forbids is
// listed as '?'; such a name can't be opened.  There are no short names.
ZOR_PLATFORM_API HANDLE WINAPI FindFirstFileA(LPCSTR name, LPWIN32_FIND_DATAA data);
// The same with FindExSearchNameMatch.  With FindExSearchLimitToDirectories most files are skipped
// without reading their metadata; some may be returned, as by the real call, so check the
// attributes.  `data` is a WIN32_FIND_DATAA, `filter` null, `flags` 0.
ZOR_PLATFORM_API HANDLE WINAPI FindFirstFileExA(LPCSTR name, FINDEX_INFO_LEVELS level, LPVOID data,
                                                FINDEX_SEARCH_OPS operation, LPVOID filter,
                                                DWORD flags);
ZOR_PLATFORM_API int WINAPI FindNextFileA(HANDLE find, LPWIN32_FIND_DATAA data);
ZOR_PLATFORM_API int WINAPI FindClose(HANDLE find);

// Buffer functions return the length without the terminator, or the size needed with it if `bytes`
// is too small, or 0 on failure.
ZOR_PLATFORM_API DWORD WINAPI GetTempPathA(DWORD bytes, LPSTR buffer);
ZOR_PLATFORM_API DWORD WINAPI GetCurrentDirectoryA(DWORD bytes, LPSTR buffer);
ZOR_PLATFORM_API DWORD WINAPI GetFullPathNameA(LPCSTR name, DWORD bytes, LPSTR buffer,
                                               LPSTR* filePart);
// Makes a mapping of a file, PAGE_READONLY or PAGE_READWRITE; page-file mappings, names and
// security are refused.  Size 0 means the file's size; ERROR_FILE_INVALID if that is 0.  A larger
// size grows the file and reserves its blocks; without room it fails with ERROR_DISK_FULL and
// leaves the file unchanged.
ZOR_PLATFORM_API HANDLE WINAPI CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES security,
                                                  DWORD protection, DWORD sizeHigh, DWORD sizeLow,
                                                  LPCSTR name);
// `access` FILE_MAP_READ or FILE_MAP_WRITE; the offset a multiple of 64 KiB; `bytes` 0 maps to the
// end.  The view stays valid after its handles are closed.
ZOR_PLATFORM_API LPVOID WINAPI MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh,
                                             DWORD offsetLow, SIZE_T bytes);
ZOR_PLATFORM_API int WINAPI UnmapViewOfFile(LPCVOID view);
