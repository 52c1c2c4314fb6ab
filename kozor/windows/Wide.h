// Wide.h - what the Windows side of the host shares.
#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/base/Clock.h"

namespace kozor::program {

// A complete path as the wide calls take it, of any length and with its names as they are spelt.
std::wstring SystemPath(const std::filesystem::path& path);
// A path that the system gave, without \\?\ before it.
std::filesystem::path WithoutPrefix(const std::filesystem::path& path);

// Symbolic links and junctions; other reparse points are ordinary files for everybody.
inline bool IsLinkTag(DWORD attributes, DWORD tag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (tag == IO_REPARSE_TAG_SYMLINK || tag == IO_REPARSE_TAG_MOUNT_POINT);
}

// Seconds since 1970.
inline std::int64_t SecondsOf(const FILETIME& time) {
  return UnixOfFileTime(Ticks(time));
}

}  // namespace kozor::program
