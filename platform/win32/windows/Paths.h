// Paths.h - names in the active code page as the system's wide calls take them, and back.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace kozor::windows {

// What a path that is converted may be used for.
enum class Use {
  Find,  // what exists, by exactly this name
  Make,  // the last name has to be one that Windows can make
};

// A path as the wide calls take it without a limit of length and without a change to its names:
// complete, with \\?\ before it.  "." and ".." are worked out in the text.  An empty path stays
// empty.  False, with the last error ERROR_INVALID_NAME, for bytes that are no text of the code
// page, and where a name can't be made.
bool ToSystemPath(const char* path, std::wstring& systemPath, Use use = Use::Find);

// Text of the code page as UTF-16; false, with ERROR_INVALID_NAME, for bytes that are none.
bool ToWide(std::string_view text, std::wstring& wide);

// A name or path in the active code page.  Each character that the page lacks becomes '?', which
// names nothing.  Returns whether it came over whole.
bool FromWide(std::wstring_view wide, std::string& text);

// A path that the system gave, without \\?\ before it.
std::wstring WithoutPrefix(std::wstring_view systemPath);

}  // namespace kozor::windows
