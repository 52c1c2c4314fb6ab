// Engine.h - the scoped binding of the archiver module UNLHA32.DLL.
//
// An operation constructs a ZorEngine, which loads the module, binds its thirteen entry points and
// frees the module when it goes out of scope.  Nothing of it outlives the operation.  Types that
// cross this boundary have fixed widths, whatever the width of `long`.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ZorError.h"
#include "platform/win32/Win32.h"

// One member, as the archiver's search calls report it.
struct ZorMemberRecord {     // offset
  std::uint32_t size;        //      0  unpacked, in bytes
  std::uint8_t unread1[18];  //      4
  std::uint16_t date;        //     22  DOS format, local time
  std::uint16_t time;        //     24  DOS format, local time
  char name[534];            //     26  null-terminated; '/' may stand for '\'
};
static_assert(sizeof(ZorMemberRecord) == 560 && offsetof(ZorMemberRecord, date) == 22 &&
              offsetof(ZorMemberRecord, time) == 24 && offsetof(ZorMemberRecord, name) == 26);

// The archiver's progress, as it reports it to its callback.
struct ZorProgressRecord {   // offset
  std::uint32_t fileSize;    //      0  of the current file, in bytes
  std::uint32_t bytesDone;   //      4  of that file
  std::uint8_t unread[516];  //      8
  char fileName[1];          //    524  null-terminated, of any length; '/' may stand for '\'
};
static_assert(offsetof(ZorProgressRecord, fileName) == 524);

// Called by the archiver on the thread that called it.  1 lets it go on, 0 stops it.
using ZorEngineCallback = int(CALLBACK*)(HWND window, unsigned int message, unsigned int state,
                                         void* record);

// The bits of the mode of UnlhaOpenArchive.
constexpr std::uint32_t kZorOpenMode = 0x801002;         // always
constexpr std::uint32_t kZorOpenNotBackground = 4;       // the background mode is 0
constexpr std::uint32_t kZorOpenThisDirectory = 0x100;   // searches don't look below a directory
constexpr std::uint32_t kZorOpenSubDirectories = 0x200;  // searches do

// Converts an archiver's code: 0 to 0, a code of the list to the code minus 0x8000, and any other,
// negative ones included, to ZorErrorEngineUnknown.
ZorError ZorErrorFromEngine(int code);

class ZorEngine {
 public:
  // Loads and binds.  Doesn't throw if that fails: check IsReady.
  ZorEngine();
  virtual ~ZorEngine();
  ZorEngine(const ZorEngine&) = delete;
  ZorEngine& operator=(const ZorEngine&) = delete;

  bool IsReady() const { return module != nullptr && ready != 0; }

 private:
  HMODULE module;
  int ready;  // 1 once everything below is bound

 public:
  // The entry points, in the order in which they are bound.  None may be called unless IsReady.

  // Not 0: the archiver is at work already.
  int(WINAPI* UnlhaGetRunning)();
  // Runs a command line; `output` may be null.  0 or an archiver's code.
  int(WINAPI* Unlha)(HWND window, const char* commandLine, char* output, std::uint32_t outputSize);
  // Not 0: the file is an archive.
  int(WINAPI* UnlhaCheckArchive)(const char* path, int mode);
  // 0: refused.
  int(WINAPI* UnlhaSetOwnerWindowEx)(HWND window, ZorEngineCallback callback);
  int(WINAPI* UnlhaKillOwnerWindowEx)(HWND window);
  int(WINAPI* UnlhaSetCursorMode)(int mode);
  // A handle for the four calls below, or null.
  void*(WINAPI* UnlhaOpenArchive)(HWND window, const char* path, std::uint32_t mode);
  int(WINAPI* UnlhaCloseArchive)(void* archive);
  // 0: `record` holds a member.
  int(WINAPI* UnlhaFindFirst)(void* archive, const char* text, ZorMemberRecord* record);
  int(WINAPI* UnlhaFindNext)(void* archive, ZorMemberRecord* record);
  // The attributes of the member found last, in the low byte, or -1.
  int(WINAPI* UnlhaGetAttribute)(void* archive);
  // Unpacks a member into `buffer` of `size` bytes.  `time` (seconds since 1970, UTC) and
  // `attribute` may be null.  0 or an archiver's code.
  int(WINAPI* UnlhaExtractMem)(HWND window, const char* commandLine, unsigned char* buffer,
                               std::uint32_t size, std::int32_t* time, std::uint16_t* attribute,
                               std::uint32_t* written);
  // Packs `size` bytes into a member; the three pointers may be null.  0 or an archiver's code.
  int(WINAPI* UnlhaCompressMem)(HWND window, const char* commandLine, const unsigned char* data,
                                std::uint32_t size, const std::int32_t* time,
                                const std::uint16_t* attribute, std::uint32_t* written);
};
