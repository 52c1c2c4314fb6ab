// System.cpp - see ../System.h.  The Windows implementation.
#include "engine/sfx/System.h"

#include <algorithm>
#include <utility>

#include "engine/sfx/Console.h"
#include "engine/sfx/windows/Wide.h"

namespace kozor::sfx::host {

std::wstring ToWide(std::string_view utf8) {
  std::wstring wide(utf8.size(), L'\0');
  const int units = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                        wide.data(), static_cast<int>(wide.size()));
  wide.resize(static_cast<std::size_t>(units));
  return wide;
}

std::string ToUtf8(std::wstring_view wide) {
  std::string utf8(wide.size() * 3, '\0');
  const int bytes =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(bytes));
  return utf8;
}

// A console shows UTF-16; a file or a pipe gets UTF-8.  Callers write whole lines, so no character
// is cut.
bool WriteText(Stream stream, std::string_view text) {
  const HANDLE file = GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  DWORD written = 0;
  if (DWORD mode; GetConsoleMode(file, &mode)) {
    const std::wstring wide = ToWide(text);
    return WriteConsoleW(file, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
  }
  while (!text.empty()) {
    if (!WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
      return false;
    }
    text.remove_prefix(written);
  }
  return true;
}

void Exit(int status) {
  ExitProcess(static_cast<UINT>(status));
}

// Win32 has the texts for all its errors, in the user's language.
std::string Reason(long error) {
  wchar_t text[256];
  const auto number = static_cast<DWORD>(-error);
  DWORD units = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, number, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  while (units > 0 && (text[units - 1] == L' ' || text[units - 1] == L'.')) --units;
  if (units == 0) return Join({"system error ", Decimal(number)});
  return ToUtf8({text, units});
}

std::string_view FileNameOf(std::string_view path) {
  return path.substr(path.find_last_of("\\/:") + 1);
}

std::span<const std::uint8_t> OwnFile(std::string& problem) {
  static wchar_t path[1 << 15];
  GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
  const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  LARGE_INTEGER size{};
  if (file != INVALID_HANDLE_VALUE) GetFileSizeEx(file, &size);
  const HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
  const void* const address =
      mapping == nullptr ? nullptr : MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
  if (address == nullptr) {
    problem = Reason(Failed(GetLastError()));
    return {};
  }
  return {static_cast<const std::uint8_t*>(address), static_cast<std::size_t>(size.QuadPart)};
}

std::uint8_t* ReserveMemory(std::uint64_t bytes) {
  if (!std::in_range<SIZE_T>(bytes)) return nullptr;
  return static_cast<std::uint8_t*>(
      VirtualAlloc(nullptr, static_cast<SIZE_T>(bytes), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}

void DropMemory(std::uint8_t* begin, std::size_t bytes) {
  VirtualFree(begin, bytes, MEM_DECOMMIT);
}

void FreeMemory(std::uint8_t* begin, std::uint64_t) {
  VirtualFree(begin, 0, MEM_RELEASE);
}

}  // namespace kozor::sfx::host
