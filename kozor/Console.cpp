// Console.cpp - see Console.h.
#include "Console.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "Host.h"

namespace kozor::program {

namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
constexpr int kBarWidth = 30;

int complaints = 0;
bool barShown = false;
std::chrono::steady_clock::time_point lastDrawn;

void PrintLine(const std::string& text) {
  HideProgress();
  std::fprintf(stderr, "kozor: %s\n", text.c_str());
}

// Length in bytes of the UTF-8 character at the start of `text` if it may be shown as it is, else
// 0: for malformed bytes, controls (U+0000 to U+001F, U+007F to U+009F), and the characters that
// turn the direction of writing (U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069).
std::size_t ShowableLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0x80              ? 1
                             : (lead & 0xE0U) == 0xC0 ? 2
                             : (lead & 0xF0U) == 0xE0 ? 3
                             : (lead & 0xF8U) == 0xF0 ? 4
                                                      : 0;
  if (length == 0 || text.size() < length) return 0;
  std::uint32_t code = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0U) != 0x80) return 0;
    code = code << 6U | (byte & 0x3FU);
  }
  const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
  const bool direction = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                         (code >= 0x2066 && code <= 0x2069);
  return control || direction ? 0 : length;
}

// The end of a long name, which tells more than its beginning.  Never cuts inside a character.
std::string LastPart(const std::string& name, std::size_t width) {
  if (name.size() <= width) return name;
  std::size_t start = name.size() - width;
  while (start < name.size() && (static_cast<unsigned char>(name[start]) & 0xC0U) == 0x80) ++start;
  return name.substr(start);
}

}  // namespace

void Complain(const std::string& text) {
  ++complaints;
  PrintLine(text);
}

int Complaints() {
  return complaints;
}

void Remark(const std::string& text) {
  PrintLine(text);
}

void ShowProgress(double done, double total, std::string_view name) {
  static const bool kTerminal = ErrorsGoToTerminal();
  if (!kTerminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - lastDrawn < kRedrawInterval) return;
  lastDrawn = now;
  const double share = total > 0 ? std::clamp(done / total, 0.0, 1.0) : 0;
  const auto filled = static_cast<std::size_t>(std::lround(share * kBarWidth));
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  const std::size_t nameWidth = static_cast<std::size_t>(std::max(TerminalWidth(), 50)) - 40;
  std::fprintf(stderr, "\r[%s] %3.0f%% %s\033[K", bar.c_str(), share * 100,
               LastPart(VisibleLibraryName(name), nameWidth).c_str());
  std::fflush(stderr);
  barShown = true;
}

void HideProgress() {
  if (!barShown) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  barShown = false;
}

std::string Visible(std::string_view name) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  while (!name.empty()) {
    const std::size_t length = ShowableLength(name);
    if (length > 0) {
      text += name.substr(0, length);
    } else {
      const auto byte = static_cast<unsigned char>(name[0]);
      text += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
    name.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string VisibleLibraryName(std::string_view name) {
  std::string text(name);
  std::replace(text.begin(), text.end(), '\\', '/');
  return Visible(text);
}

}  // namespace kozor::program
