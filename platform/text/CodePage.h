// CodePage.h - characters of code pages to Unicode and back, through static tables.
//
// Known pages: 932 (the Microsoft mapping: 0x8160 is U+FF5E), 65001 (UTF-8), 1252, 437, 20127
// (ASCII).  Nothing here looks at the system or at settings: the page is always an argument.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kozor::text {

inline constexpr unsigned kCodePage932 = 932;
inline constexpr unsigned kUtf8 = 65001;

// What a decoder gives for bytes that are no character.
inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

struct Decoded {
  char32_t character;  // or kNoCharacter
  std::size_t bytes;   // bytes (units, of UTF-16) taken from the text, at least 1
};

struct CodePage {
  unsigned number;
  // The first character of a text that isn't empty.
  Decoded (*decode)(std::string_view text);
  // Appends one character; false, with nothing appended, if the page doesn't have it.
  bool (*append)(std::string& text, char32_t character);
  // Stands for bytes that are no character.
  char32_t replacement;
};

// Null for an unknown page.
const CodePage* FindCodePage(unsigned number);

// Appends a character only if the bytes decode to it again: 932 takes several readings of some
// characters (ToCp932Reading) and gives back one.
bool AppendExactly(const CodePage& page, std::string& text, char32_t character);

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.  A broken sequence is
// taken byte by byte.
Decoded DecodeUtf8(std::string_view text);
bool AppendUtf8(std::string& text, char32_t character);

// The first character of UTF-16 text that isn't empty; half of a surrogate pair is no character.
Decoded DecodeUtf16(std::u16string_view text);
void AppendUtf16(std::u16string& text, char32_t character);

// Whether a byte is the first of two in code page 932.
constexpr bool IsLeadByte932(unsigned byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

// Maps the characters that other standards use for code page 932's wave dash, minus and the like to
// those of the page; any other is returned as it is.
char32_t ToCp932Reading(char32_t character);

}  // namespace kozor::text
