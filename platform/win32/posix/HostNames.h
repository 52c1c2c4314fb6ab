// HostNames.h - one file name in three forms: as the host has it (UTF-8), as the library sees it
// (active code page), and as a key under which names that differ in case alone are equal.
#pragma once

#include <string>
#include <string_view>

#include "platform/text/CodePage.h"

namespace kozor::posix {

// The active code page, 932 or 65001: that of library paths, which the application has chosen.
unsigned ActiveCodePage();
const text::CodePage& ActivePage();
// True where it has two-byte characters and this byte begins one.
bool IsLeadByte(unsigned char byte);

// The host's form of a library name.  False, with the last error ERROR_INVALID_NAME, where it holds
// a character that Windows forbids in names, or bytes that are no character.
bool ToHostName(std::string_view libraryName, std::string& hostName);

// The library's form of a host name.  Each character that the code page doesn't have or that
// Windows forbids becomes '?', and a name too long for WIN32_FIND_DATAA is cut and ends in '?':
// such a name names nothing.  Returns whether the name came over whole.
bool ToLibraryName(std::string_view hostName, std::string& libraryName);
// The same, with '?' too for characters that the code page has in another reading only
// (ToCp932Reading), so that the result names this host name alone or nothing.
bool ToStrictLibraryName(std::string_view hostName, std::string& libraryName);

// The key, as CaseKey gives it, of a mask in the code page, * and ? included.  False, with the last
// error ERROR_INVALID_NAME, where it holds other forbidden characters or bytes that are no
// character.
bool MaskKey(std::string_view libraryMask, std::u16string& key);

// Upper case in UTF-16, the order and the equality of the usual Windows file system.  In code page
// 932, names that the page can't tell apart are equal too.
std::u16string CaseKey(std::string_view hostName);
// The key for an exact comparison: equal only where the code page can't tell the names apart.
std::u16string ExactKey(std::string_view hostName);

}  // namespace kozor::posix
