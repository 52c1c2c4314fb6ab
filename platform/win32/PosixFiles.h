// PosixFiles.h - Win32 calls for files, directories, searches and mappings on POSIX.
//
// Every function returns what the real call returns and leaves its reason in GetLastError, per
// thread.  Paths are byte strings in the active code page; both '\' and '/' separate.  What differs
// from the real call stands beside the function.  Include Win32.h, never this file.
#pragma once

#include "platform/Export.h"
#include "platform/win32/PosixTypes.h"

ZOR_PLATFORM_API DWORD WINAPI GetLastError();
ZOR_PLATFORM_API void WINAPI SetLastError(DWORD error);

// Opens or creates a file.  `access` is GENERIC_READ, GENERIC_WRITE, both, or 0 to ask for facts
// only; `share` any FILE_SHARE_*; `disposition` one of the five; `flags` any FILE_ATTRIBUTE_* that
// a file can be given, and FILE_FLAG_BACKUP_SEMANTICS, without which no directory is opened.
// `security` may be null; `templateFile` must be.
// INVALID_HANDLE_VALUE on failure.  On success the last error is ERROR_ALREADY_EXISTS where
// CREATE_ALWAYS or OPEN_ALWAYS found a file, else 0.
//
// Differs: anything but a regular file or a directory fails with ERROR_ACCESS_DENIED at once, where
// the host might block.  Nothing is created through a link that leads nowhere.
ZOR_PLATFORM_API HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share,
                                           LPSECURITY_ATTRIBUTES security, DWORD disposition,
                                           DWORD flags, HANDLE templateFile);

// Closes what CreateFileA and CreateFileMappingA gave.  Reports a late write error only where a
// flush was put off until now (KzSetFlushAtClose); the handle is closed then, too.
ZOR_PLATFORM_API int WINAPI CloseHandle(HANDLE handle);

// Reads up to `bytes`; fewer only at the end of the file.  `overlapped` must be null.
ZOR_PLATFORM_API int WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD bytesRead,
                                     LPOVERLAPPED overlapped);

// Writes all of `bytes`, or fails and tells in `*bytesWritten` how many went out before.
// Differs: on a full disk (ERROR_DISK_FULL) a beginning of the block may have been written.
ZOR_PLATFORM_API int WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes,
                                      LPDWORD bytesWritten, LPOVERLAPPED overlapped);

// Moves the file pointer by a signed 64-bit distance whose upper half is `*distanceHigh`, or by a
// signed 32-bit one where that is null.  Returns the low half of the new position, or
// INVALID_SET_FILE_POINTER: then an error only if GetLastError is not NO_ERROR.
ZOR_PLATFORM_API DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh,
                                             DWORD method);
ZOR_PLATFORM_API int WINAPI SetFilePointerEx(HANDLE file, LARGE_INTEGER distance,
                                             PLARGE_INTEGER position, DWORD method);
ZOR_PLATFORM_API DWORD WINAPI GetFileSize(HANDLE file, LPDWORD sizeHigh);
ZOR_PLATFORM_API int WINAPI GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);

// Makes the file end at the file pointer.  Growing reserves the blocks, so a full disk shows here.
ZOR_PLATFORM_API int WINAPI SetEndOfFile(HANDLE file);

// Returns when the file's data is on the medium, or leaves that to CloseHandle (KzSetFlushAtClose).
ZOR_PLATFORM_API int WINAPI FlushFileBuffers(HANDLE file);

// Null pointers, and times that are 0 or all ones, leave a time as it is.
// Differs: the creation time can't be set and is left alone.
ZOR_PLATFORM_API int WINAPI SetFileTime(HANDLE file, const FILETIME* creation,
                                        const FILETIME* lastAccess, const FILETIME* lastWrite);
ZOR_PLATFORM_API int WINAPI GetFileTime(HANDLE file, LPFILETIME creation, LPFILETIME lastAccess,
                                        LPFILETIME lastWrite);

// The volume serial number and the file index together tell one file or directory from all others
// of the machine; a handle opened through a link has those of what the link points to.
ZOR_PLATFORM_API int WINAPI GetFileInformationByHandle(HANDLE file,
                                                       LPBY_HANDLE_FILE_INFORMATION information);

// The path of an open file, with a drive and without a link in its last place or above.  Returns
// its length; the size that would do, terminator included, where `bytes` is too few; 0 on failure.
// `flags` must be 0.
//
// Differs: nothing stands in front of the drive.
ZOR_PLATFORM_API DWORD WINAPI GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD bytes,
                                                        DWORD flags);

// Deletes a file, or a link, never what a link points to.
// ERROR_ACCESS_DENIED for a directory and for a read-only file; ERROR_SHARING_VIOLATION while
// someone has it open without FILE_SHARE_DELETE.
ZOR_PLATFORM_API int WINAPI DeleteFileA(LPCSTR name);

// Gives a file or directory another name on the same drive, in one step.  `flags`:
// MOVEFILE_REPLACE_EXISTING, MOVEFILE_WRITE_THROUGH (returns when the change of name is on the
// medium).  ERROR_NOT_SAME_DEVICE between file systems: nothing is ever copied.
// Differs: the new name takes an existing file only if it is spelt the same
// (KzSetCaseBlindCreation).
ZOR_PLATFORM_API int WINAPI MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags);

ZOR_PLATFORM_API int WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security);
// Removes one empty directory, or a link to a directory.
ZOR_PLATFORM_API int WINAPI RemoveDirectoryA(LPCSTR name);

// Attributes: kept as docs/platform.md says.  FILE_ATTRIBUTE_NORMAL stands for none.
ZOR_PLATFORM_API DWORD WINAPI GetFileAttributesA(LPCSTR name);
ZOR_PLATFORM_API int WINAPI GetFileAttributesExA(LPCSTR name, GET_FILEEX_INFO_LEVELS level,
                                                 LPVOID information);
ZOR_PLATFORM_API int WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes);

// Searches.  Only the last component may hold wild-cards.  Entries come as ".", "..", then by name
// without regard to case.  A directory that can't be opened or read to its end is an error of its
// own, after the entries that could be read: ERROR_ACCESS_DENIED, ERROR_IO_DEVICE and so on, never
// ERROR_NO_MORE_FILES.
// Differs: a host name that the code page or Windows can't express has a '?' in the place of each
// such character, and can't be opened.  There are no short names.
ZOR_PLATFORM_API HANDLE WINAPI FindFirstFileA(LPCSTR name, LPWIN32_FIND_DATAA data);
// The same with FindExSearchNameMatch.  With FindExSearchLimitToDirectories files are passed over
// at the cost of their names, but some may come all the same, as with the real call: look at the
// attributes.  `data` is a WIN32_FIND_DATAA, `filter` null, `flags` 0.
ZOR_PLATFORM_API HANDLE WINAPI FindFirstFileExA(LPCSTR name, FINDEX_INFO_LEVELS level, LPVOID data,
                                                FINDEX_SEARCH_OPS operation, LPVOID filter,
                                                DWORD flags);
ZOR_PLATFORM_API int WINAPI FindNextFileA(HANDLE find, LPWIN32_FIND_DATAA data);
ZOR_PLATFORM_API int WINAPI FindClose(HANDLE find);

// Buffer functions return the length without the terminator, or, where `bytes` is too small, the
// size needed with it, or 0 on failure.
ZOR_PLATFORM_API DWORD WINAPI GetTempPathA(DWORD bytes, LPSTR buffer);
ZOR_PLATFORM_API DWORD WINAPI GetCurrentDirectoryA(DWORD bytes, LPSTR buffer);
ZOR_PLATFORM_API DWORD WINAPI GetFullPathNameA(LPCSTR name, DWORD bytes, LPSTR buffer,
                                               LPSTR* filePart);
// Makes "<path>\<up to 3 characters of prefix><number in hex>.TMP" in `buffer` of MAX_PATH bytes. A
// `unique` of 0 creates a new empty file under the first free number.  Returns the number, 0 on
// failure.
ZOR_PLATFORM_API UINT WINAPI GetTempFileNameA(LPCSTR path, LPCSTR prefix, UINT unique,
                                              LPSTR buffer);

// A mapping of a file (page-file mappings, names and security are refused), PAGE_READONLY or
// PAGE_READWRITE.  Size 0 is the file's own size, ERROR_FILE_INVALID if that is 0.  A larger size
// makes the file grow, with its blocks reserved: ERROR_DISK_FULL, and the file as it was, where
// there is no room.
ZOR_PLATFORM_API HANDLE WINAPI CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES security,
                                                  DWORD protection, DWORD sizeHigh, DWORD sizeLow,
                                                  LPCSTR name);
// `access` FILE_MAP_READ or FILE_MAP_WRITE; the offset a multiple of 64 KiB; `bytes` 0 maps to the
// end.  The view outlives the handles it was made from.
ZOR_PLATFORM_API LPVOID WINAPI MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh,
                                             DWORD offsetLow, SIZE_T bytes);
ZOR_PLATFORM_API int WINAPI UnmapViewOfFile(LPCVOID view);
