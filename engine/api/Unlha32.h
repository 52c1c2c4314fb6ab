// Unlha32.h - the archiver's binding: the thirteen entry points of UNLHA32.DLL, with the types and
// records that cross it.
//
// All widths are fixed, whatever the width of `long`.  Text is in the active code page.  Result
// codes and command lines: docs/archiver.md.  Callers load the module and look up the names;
// nothing links against it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/win32/Win32.h"

#if defined(_WIN32)
#define UNLHA_EXPORT  // Unlha32.def lists the exports, undecorated
#else
#define UNLHA_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

// An archive that is open for searching.
struct UnlhaArchive;
using HARC = UnlhaArchive*;

// Filled in by UnlhaFindFirst and UnlhaFindNext.  Callers reserve 560 bytes.
struct UnlhaMemberRecord {    // offset
  std::uint32_t size;         //      0  unpacked bytes; all ones for 4 GiB and more, 0 if damaged
  std::uint8_t reserved[18];  //      4  zero
  std::uint16_t date;         //     22  DOS words, local time
  std::uint16_t time;         //     24
  char name[534];             //     26  null-terminated, '\' separates
};
static_assert(offsetof(UnlhaMemberRecord, date) == 22 && offsetof(UnlhaMemberRecord, name) == 26);
static_assert(sizeof(UnlhaMemberRecord) == 560);

// The callback's record of the file in progress.
struct UnlhaProgressRecord {   // offset
  std::uint32_t size;          //      0  bytes of the file
  std::uint32_t done;          // 4 of them done
  std::uint8_t reserved[516];  //      8  zero
  char name[516];              //    524  at most 512 bytes and a terminator
};
static_assert(offsetof(UnlhaProgressRecord, name) == 524);

// `state` is 0 at the start of a file, 1 during it, 6 at its end.  Called on the thread that runs
// the command; returns 0 to stop, any other value to go on.
typedef int(CALLBACK* UnlhaCallback)(HWND window, UINT message, UINT state, void* record);

// Non-zero while a command runs in this process.
UNLHA_EXPORT int WINAPI UnlhaGetRunning();

// Runs a command line.  Returns 0 or a result code.  Nothing is written to `output`.
UNLHA_EXPORT int WINAPI Unlha(HWND window, const char* command, char* output, std::uint32_t size);

// Non-zero if the file is an archive or a self-extracting program.  `mode` is ignored.
UNLHA_EXPORT int WINAPI UnlhaCheckArchive(const char* path, int mode);

// Sets the callback of later commands.  Returns 0 while a command runs, or for a null callback.
UNLHA_EXPORT int WINAPI UnlhaSetOwnerWindowEx(HWND window, UnlhaCallback callback);
UNLHA_EXPORT int WINAPI UnlhaKillOwnerWindowEx(HWND window);

// Stores the mode, which has no effect, and returns the previous one.
UNLHA_EXPORT int WINAPI UnlhaSetCursorMode(int mode);

// Opens an archive for searching.  Returns null if it can't be opened or holds no complete member.
// Mode 0x200: searches include subdirectories.
UNLHA_EXPORT HARC WINAPI UnlhaOpenArchive(HWND window, const char* path, std::uint32_t mode);
UNLHA_EXPORT int WINAPI UnlhaCloseArchive(HARC archive);

// 0: the record holds a member.  -1: no (more) member.  Else a result code.
UNLHA_EXPORT int WINAPI UnlhaFindFirst(HARC archive, const char* text, UnlhaMemberRecord* record);
UNLHA_EXPORT int WINAPI UnlhaFindNext(HARC archive, UnlhaMemberRecord* record);

// The DOS attributes of the member found last; -1 if there is none.
UNLHA_EXPORT int WINAPI UnlhaGetAttribute(HARC archive);

// Unpacks the member that the line names into `buffer`, never beyond `size` bytes.  `time` receives
// seconds since 1970 in UTC, `attribute` the DOS attributes, `written` the number of bytes written;
// each may be null.  Returns 0 or a result code.
UNLHA_EXPORT int WINAPI UnlhaExtractMem(HWND window, const char* command, std::uint8_t* buffer,
                                        std::uint32_t size, std::int32_t* time,
                                        std::uint16_t* attribute, std::uint32_t* written);

// Adds `data` as a member under the name in the line.  `time` and `attribute` may be null: the
// defaults are the current time and the archive attribute.  `written`, if not null, receives the
// packed size.  Returns 0 or a result code.
UNLHA_EXPORT int WINAPI UnlhaCompressMem(HWND window, const char* command, const std::uint8_t* data,
                                         std::uint32_t size, const std::int32_t* time,
                                         const std::uint16_t* attribute, std::uint32_t* written);

}  // extern "C"
