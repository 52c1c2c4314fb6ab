// HostNames.h - file names in three forms: on the host (UTF-8), in the library (active code page),
// and as a key that is equal for names that differ only in case.
#pragma once

#include <string>
#include <string_view>

#include "platform/text/CodePage.h"

namespace kozor::posix {

// The active code page, 932 or 65001, which the application chooses for library paths.
unsigned ActiveCodePage();
const text::CodePage& ActivePage();
// Whether the active code page has two-byte characters and this byte begins one.
bool IsLeadByte(unsigned char byte);

// Converts a library name to the host's form.  Returns false with the last error ERROR_INVALID_NAME
// if it holds a character that Windows forbids in names, or invalid bytes.
bool ToHostName(std::string_view libraryName, std::string& hostName);

// Converts a host name to the library's form.  Each character that the code page doesn't have or
// that Windows forbids becomes '?', and a name too long for WIN32_FIND_DATAA is truncated and ends
// in '?'; no file can be opened by such a name.  Returns whether the name was converted completely.
bool ToLibraryName(std::string_view hostName, std::string& libraryName);
// The same, with '?' also for characters that the code page has only in another reading
// (ToCp932Reading), so that the result refers to this host name or to nothing.
bool ToStrictLibraryName(std::string_view hostName, std::string& libraryName);

// The CaseKey of a mask in the code page, including * and ?.  Returns false with the last error
// ERROR_INVALID_NAME if it holds other forbidden characters or invalid bytes.
bool MaskKey(std::string_view libraryMask, std::u16string& key);

// Upper case in UTF-16: compares and orders names as the usual Windows file system does.  In code
// page 932, names that the page can't distinguish are equal too.
std::u16string CaseKey(std::string_view hostName);
// The key for an exact comparison: different names are equal only if the code page can't
// distinguish them.
std::u16string ExactKey(std::string_view hostName);

}  // namespace kozor::posix
