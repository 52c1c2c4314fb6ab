// Paths.h - converts names between the active code page and the form of the system's wide calls.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace kozor::windows {

// The purpose of a converted path.
enum class Use {
  Find,  // an existing file of exactly this name
  Make,  // a new file: the last name must be one that Windows can create
};

// Converts to an absolute path with the prefix \\?\, of which the wide calls neither limit the
// length nor alter the names.  "." and ".." are resolved in the text alone.  An empty path stays
// empty.  Returns false, with the last error ERROR_INVALID_NAME, for bytes that aren't valid in the
// code page and for a name that can't be created.
bool ToSystemPath(const char* path, std::wstring& systemPath, Use use = Use::Find);
bool ToSystemPath(std::wstring_view path, std::wstring& systemPath, Use use = Use::Find);

// Converts text to UTF-16.  Returns false, with ERROR_INVALID_NAME, for bytes that aren't valid in
// the code page.
bool ToWide(std::string_view text, std::wstring& wide);

// Converts a name or path to the active code page.  Each character that the page lacks becomes '?',
// so that the name means no file.  Returns whether there was none.
bool FromWide(std::wstring_view wide, std::string& text);

// A path from the system, without the prefix \\?\ if the rest is an ordinary path: one on a drive
// or a share.
std::wstring WithoutPrefix(std::wstring_view systemPath);

}  // namespace kozor::windows
