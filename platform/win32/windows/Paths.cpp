// Paths.cpp - see Paths.h.
#include "platform/win32/windows/Paths.h"

#include <algorithm>
#include <vector>

#include "platform/text/Path.h"
#include "platform/text/WindowsName.h"
#include "platform/win32/windows/ActivePage.h"

namespace kozor::windows {

namespace {

constexpr std::wstring_view kPrefix = L"\\\\?\\";
constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";
constexpr std::wstring_view kSharePrefix = L"\\\\?\\UNC\\";
constexpr text::PathRules kRules = {.slashSeparates = true};

bool Fail(DWORD error) {
  SetLastError(error);
  return false;
}

// The absolute form of a short path such as "." or "D:".
std::wstring Complete(const std::wstring& path) {
  std::wstring complete(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  const auto room = static_cast<DWORD>(complete.size());
  complete.resize(GetFullPathNameW(path.c_str(), room, complete.data(), nullptr));
  return complete;
}

bool BeginsWithDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':';
}

// Completes a path with the process's current drive and directory.
std::wstring Rooted(const std::wstring& path) {
  const bool hasDrive = BeginsWithDrive(path);
  if (hasDrive && path.size() > 2 && path[2] == L'\\') return path;
  if (path.starts_with(L"\\\\")) return path;
  if (path.starts_with(L"\\")) return Complete(L"\\") + path.substr(1);
  return Complete(hasDrive ? path.substr(0, 2) : L".") + L'\\' + path.substr(hasDrive ? 2 : 0);
}

// Appends the components of a path to the root, resolving "." and "..".
void AppendComponents(std::wstring& result, std::wstring_view path) {
  const std::size_t rootEnd = result.size();
  const bool isFolder = path.ends_with(L'\\');
  while (!path.empty()) {
    const std::wstring_view component = text::TakeComponent(path, kRules);
    if (component.empty() || component == L".") continue;
    if (component == L"..") {
      result.resize(std::max(rootEnd, std::min(result.rfind(L'\\'), result.size())));
    } else {
      result.append(1, L'\\').append(component);
    }
  }
  if (isFolder || result.size() == rootEnd) result += L'\\';
}

std::wstring_view LastName(std::wstring_view path) {
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  return path.substr(path.rfind(L'\\') + 1);
}

// Returns false if a character can't be expressed, or a unit is half of a surrogate pair.
bool ConvertFromWide(std::wstring_view wide, std::string& text) {
  const unsigned int page = ActivePage();
  const bool utf8 = page == CP_UTF8;
  const DWORD flags = utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  const auto units = static_cast<int>(wide.size());
  BOOL usedDefault = FALSE;
  text.assign(wide.size() * 3 + 1, '\0');
  const int bytes = WideCharToMultiByte(page, flags, wide.data(), units, text.data(),
                                        static_cast<int>(text.size()), utf8 ? nullptr : "?",
                                        utf8 ? nullptr : &usedDefault);
  text.resize(static_cast<std::size_t>(bytes));
  return (bytes > 0 || units == 0) && !usedDefault;
}

}  // namespace

bool ToWide(std::string_view text, std::wstring& wide) {
  wide.assign(text.size(), L'\0');
  if (text.empty()) return true;
  const int units = MultiByteToWideChar(ActivePage(), MB_ERR_INVALID_CHARS, text.data(),
                                        static_cast<int>(text.size()), wide.data(),
                                        static_cast<int>(wide.size()));
  wide.resize(static_cast<std::size_t>(units));
  return units > 0 || Fail(ERROR_INVALID_NAME);
}

bool FromWide(std::wstring_view wide, std::string& text) {
  if (ConvertFromWide(wide, text)) return true;
  // In UTF-8 a single invalid unit makes the whole conversion fail.
  std::string part;
  text.clear();
  for (std::size_t i = 0; i < wide.size();) {
    const bool isPair =
        IS_HIGH_SURROGATE(wide[i]) && i + 1 < wide.size() && IS_LOW_SURROGATE(wide[i + 1]);
    const std::size_t units = isPair ? 2 : 1;
    text += ConvertFromWide(wide.substr(i, units), part) ? part : "?";
    i += units;
  }
  return false;
}

bool ToSystemPath(const char* path, std::wstring& systemPath, Use use) {
  std::wstring wide;
  if (path == nullptr) return Fail(ERROR_PATH_NOT_FOUND);
  return ToWide(path, wide) && ToSystemPath(std::wstring_view(wide), systemPath, use);
}

bool ToSystemPath(std::wstring_view path, std::wstring& systemPath, Use use) {
  std::wstring wide(path);
  std::replace(wide.begin(), wide.end(), L'/', L'\\');
  // To files, the two prefixes are the same.
  if (wide.starts_with(kDevicePrefix) && BeginsWithDrive(path.substr(kDevicePrefix.size()))) {
    wide.erase(0, kDevicePrefix.size());
  }
  systemPath = wide;
  if (wide.empty() || wide.starts_with(kPrefix) || wide.starts_with(kDevicePrefix)) return true;
  const std::wstring rooted = Rooted(wide);
  if (rooted.starts_with(kPrefix) || rooted.starts_with(kDevicePrefix)) {
    systemPath = rooted;
    return true;
  }
  const text::BasicPath<wchar_t> parts(rooted, kRules);
  const std::wstring_view root = parts.Root();
  if (root.empty()) return true;  // only a server
  systemPath = root.starts_with(L'\\') ? std::wstring(kSharePrefix) + std::wstring(root.substr(2))
                                       : std::wstring(kPrefix) + std::wstring(root);
  const std::size_t rootEnd = systemPath.size();
  AppendComponents(systemPath, std::wstring_view(rooted).substr(root.size()));
  if (use == Use::Find || systemPath.size() <= rootEnd + 1) return true;
  return !text::IsNameForbiddenByWindows(LastName(systemPath)) || Fail(ERROR_INVALID_NAME);
}

std::wstring WithoutPrefix(std::wstring_view systemPath) {
  if (systemPath.starts_with(kSharePrefix)) {
    return L"\\\\" + std::wstring(systemPath.substr(kSharePrefix.size()));
  }
  const bool isOnDrive =
      systemPath.starts_with(kPrefix) && BeginsWithDrive(systemPath.substr(kPrefix.size()));
  return std::wstring(systemPath.substr(isOnDrive ? kPrefix.size() : 0));
}

}  // namespace kozor::windows
