// Wide.h - helpers shared by the Windows implementations of Host.h and HostFiles.h.
#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/base/Clock.h"

namespace kozor::program {

// An absolute path in the \\?\ form, which the wide calls take with any length and without altering
// names.
std::wstring SystemPath(const std::filesystem::path& path);
// Symbolic links and junctions.  Other reparse points count as ordinary files.
inline bool IsLinkTag(DWORD attributes, DWORD tag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT);
}

// Seconds since 1970.
inline std::int64_t SecondsOf(const FILETIME& time) {
  return UnixOfFileTime(Ticks(time));
}

}  // namespace kozor::program
