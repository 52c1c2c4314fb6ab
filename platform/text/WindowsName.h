// WindowsName.h - names that on Windows don't mean a file of that name.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kozor::text {

// Whether ordinary Windows calls can't create a file of this name (without a directory): devices
// such as NUL and COM1, with any extension; names that end in a dot or a blank, which would be
// dropped; and names with a control character or any of \ / : * ? " < > |.  Suits UTF-16 and every
// encoding in which bytes below 0x80 are always ASCII characters.
template <typename Char>
constexpr bool IsNameForbiddenByWindows(std::basic_string_view<Char> name) {
  constexpr std::string_view kForbidden = "\\/:*?\"<>|";
  constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN",    "AUX",
                                                        "NUL", "CONIN$", "CONOUT$"};
  const auto byte = [](Char c) {
    const auto unit = static_cast<unsigned>(c);
    return unit < 0x80 ? static_cast<char>(unit) : '\0';
  };
  const auto upper = [&](Char c) {
    const char b = byte(c);
    return b >= 'a' && b <= 'z' ? static_cast<char>(b - 0x20) : b;
  };
  if (name.empty() || name.back() == Char{'.'} || name.back() == Char{' '}) return true;
  for (const Char c : name) {
    const bool isControl = static_cast<unsigned>(c) < 0x20;
    if (isControl || (byte(c) != '\0' && kForbidden.find(byte(c)) != std::string_view::npos)) {
      return true;
    }
  }
  std::basic_string_view<Char> stem = name.substr(0, name.find(Char{'.'}));
  while (!stem.empty() && stem.back() == Char{' '}) stem.remove_suffix(1);
  const auto is = [&](std::string_view device) {
    if (stem.size() != device.size()) return false;
    for (std::size_t i = 0; i < device.size(); ++i) {
      if (upper(stem[i]) != device[i]) return false;
    }
    return true;
  };
  for (const std::string_view device : kDevices) {
    if (is(device)) return true;
  }
  if (stem.size() != 4 || byte(stem[3]) < '1' || byte(stem[3]) > '9') return false;
  stem.remove_suffix(1);
  return is("COM") || is("LPT");
}

}  // namespace kozor::text
