// AnsiPath.h - paths in the active ANSI code page, taken apart by whole characters.
#pragma once

#include "platform/text/Path.h"
#include "platform/win32/Win32.h"

namespace kozor {

// The library separates with backslashes alone; the archiver, as the system does, with slashes too.
inline constexpr text::PathRules kAnsiRules = {
    .slashSeparates = false,
    .isLeadByte = [](unsigned char byte) { return IsDBCSLeadByte(byte) != FALSE; }};
inline constexpr text::PathRules kAnsiSlashRules = {.slashSeparates = true,
                                                    .isLeadByte = kAnsiRules.isLeadByte};

inline text::Path AnsiPath(std::string_view path) {
  return text::Path(path, kAnsiRules);
}

}  // namespace kozor
