// Text.cpp - see Text.h.
#include "engine/container/Text.h"

#include <algorithm>
#include <climits>

#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

static_assert(sizeof(WCHAR) == sizeof(char16_t));

// Characters of one or two bytes.  Decides only how far to go on after bytes that cannot be
// decoded.
bool IsShiftJisPair(std::string_view bytes) {
  if (bytes.size() < 2) return false;
  const auto lead = static_cast<unsigned char>(bytes[0]);
  const auto trail = static_cast<unsigned char>(bytes[1]);
  const bool isLead = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
  return isLead && trail >= 0x40 && trail <= 0xFC && trail != 0x7F;
}

// The longest beginning that is one character of the code page, or 0.
std::size_t CharacterBytes(unsigned int codePage, std::string_view bytes,
                           std::u16string& character) {
  const std::size_t longest = std::min<std::size_t>(bytes.size(), codePage == kUtf8 ? 4 : 2);
  for (std::size_t length = 1; length <= longest; ++length) {
    if (DecodeText(codePage, bytes.substr(0, length), character)) return length;
  }
  return 0;
}

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool DecodeText(unsigned int codePage, std::string_view bytes, std::u16string& text) {
  if (IsAscii(bytes)) {
    text.assign(bytes.begin(), bytes.end());
    return true;
  }
  if (bytes.size() > INT_MAX) return false;
  text.resize(bytes.size());  // no code page has characters of more units than bytes
  const int units = MultiByteToWideChar(
      codePage, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()),
      reinterpret_cast<WCHAR*>(text.data()), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(units));
  return units != 0;
}

std::u16string DecodeTextLossy(unsigned int codePage, std::string_view bytes, bool& altered) {
  std::u16string text;
  if (DecodeText(codePage, bytes, text)) return text;
  text.clear();
  std::u16string character;
  while (!bytes.empty()) {
    std::size_t length = CharacterBytes(codePage, bytes, character);
    if (length == 0) {
      length = codePage == kShiftJis && IsShiftJisPair(bytes) ? 2 : 1;
      character = u"_";
      altered = true;
    }
    text += character;
    bytes.remove_prefix(length);
  }
  return text;
}

bool EncodeText(unsigned int codePage, std::u16string_view text, std::string& bytes) {
  if (std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; })) {
    bytes.assign(text.begin(), text.end());
    return true;
  }
  if (text.size() > INT_MAX / 4) return false;
  bytes.resize(text.size() * 4);
  const DWORD flags = codePage == kUtf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL usedDefault = FALSE;
  const int written = WideCharToMultiByte(
      codePage, flags, reinterpret_cast<const WCHAR*>(text.data()), static_cast<int>(text.size()),
      bytes.data(), static_cast<int>(bytes.size()), nullptr,
      codePage == kUtf8 ? nullptr : &usedDefault);
  if (written == 0 || usedDefault) return false;
  bytes.resize(static_cast<std::size_t>(written));
  // Code pages have several readings of some characters, a backslash among them: what comes back
  // different has not been expressed.
  std::u16string again;
  return DecodeText(codePage, bytes, again) && again == text;
}

std::string EncodeTextLossy(unsigned int codePage, std::u16string_view text, bool& altered) {
  std::string bytes;
  if (EncodeText(codePage, text, bytes)) return bytes;
  bytes.clear();
  std::string character;
  while (!text.empty()) {
    const bool isPair = text.size() > 1 && IsHighSurrogate(text[0]) && IsLowSurrogate(text[1]);
    const std::size_t length = isPair ? 2 : 1;
    if (!EncodeText(codePage, text.substr(0, length), character)) {
      character = "_";
      altered = true;
    }
    bytes += character;
    text.remove_prefix(length);
  }
  return bytes;
}

std::u16string FoldCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) {
    const bool isPlain = unit >= u'A' && unit <= u'Z';
    const bool isFullWidth = unit >= 0xFF21 && unit <= 0xFF3A;
    if (isPlain || isFullWidth) unit = static_cast<char16_t>(unit + 0x20);
  }
  return folded;
}

}  // namespace kozor::container
