// AnsiPath.h - splits paths in the active ANSI code page.
#pragma once

#include "platform/text/Path.h"
#include "platform/win32/Win32.h"

namespace kozor {

// In the library only the backslash separates; in the archiver, as in the system, the slash too.
inline constexpr text::PathRules kAnsiRules = {
    .slashSeparates = false,
    .isLeadByte = [](unsigned char byte) { return IsDBCSLeadByte(byte) != FALSE; }};
inline constexpr text::PathRules kAnsiSlashRules = {.slashSeparates = true,
                                                    .isLeadByte = kAnsiRules.isLeadByte};

inline text::Path AnsiPath(std::string_view path) {
  return text::Path(path, kAnsiRules);
}

}  // namespace kozor
