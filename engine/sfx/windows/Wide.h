// Wide.h - text between UTF-8 and the UTF-16 of Windows.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace kozor::sfx::host {

// Invalid bytes and lone surrogates become U+FFFD.
std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);

// The negative number that stands for a Win32 error here.
inline long Failed(DWORD error) {
  return -static_cast<long>(error);
}

}  // namespace kozor::sfx::host
