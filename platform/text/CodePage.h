// CodePage.h - converts code pages to Unicode and back with static tables.
//
// Known pages: 932 (the Microsoft mapping: 0x8160 is U+FF5E), 65001 (UTF-8), 1252, 437, 20127
// (ASCII).  Nothing depends on the system or on settings: the page is always an argument.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kozor::text {

inline constexpr unsigned kCodePage932 = 932;
inline constexpr unsigned kUtf8 = 65001;

// A decoder's result for bytes that aren't a character.
inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

struct Decoded {
  char32_t character;  // or kNoCharacter
  std::size_t bytes;   // bytes (UTF-16: units) consumed, at least 1
};

struct CodePage {
  unsigned number;
  // Decodes the first character of a non-empty text.
  Decoded (*decode)(std::string_view text);
  // Appends one character; returns false and appends nothing if the page doesn't have it.
  bool (*append)(std::string& text, char32_t character);
  // Replaces bytes that aren't a character.
  char32_t replacement;
};

// Null for an unknown page.
const CodePage* FindCodePage(unsigned number);

// Appends a character only if its bytes decode to the same one again: 932 encodes several readings
// of some characters (ToCp932Reading) alike.
bool AppendExactly(const CodePage& page, std::string& text, char32_t character);

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.  A broken sequence is
// consumed byte by byte.
Decoded DecodeUtf8(std::string_view text);
bool AppendUtf8(std::string& text, char32_t character);

// Decodes the first character of non-empty UTF-16 text; an unpaired surrogate isn't a character.
Decoded DecodeUtf16(std::u16string_view text);
void AppendUtf16(std::u16string& text, char32_t character);

// Whether a character may be shown to a user: no control character, and none that changes the
// direction of the text around it.
constexpr bool IsShowable(char32_t character) {
  const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
  const bool turnsDirection = character == 0x200E || character == 0x200F ||
                              (character >= 0x202A && character <= 0x202E) ||
                              (character >= 0x2066 && character <= 0x2069);
  return !isControl && !turnsDirection && character != kNoCharacter;
}

// Whether a byte is a lead byte in code page 932.
constexpr bool IsLeadByte932(unsigned byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

// Maps the characters that other standards use for the page's wave dash, minus and so on to those
// of the page; returns any other unchanged.
char32_t ToCp932Reading(char32_t character);

}  // namespace kozor::text
