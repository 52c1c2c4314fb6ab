// Case.h - two kinds of case folding.  Names on disk compare by Unicode's simple upper case; names
// in archives and the C run-time library fold Latin letters only.
#pragma once

#include <string>
#include <string_view>

#include "platform/text/CodePage.h"

namespace kozor::text {

// Upper case by Unicode's simple mapping, one character to one.
char32_t ToUpper(char32_t character);

// Lower case for A to Z, plain and full-width.
constexpr char32_t ToLowerLatin(char32_t character) {
  const bool plain = character >= 'A' && character <= 'Z';
  const bool fullWidth = character >= 0xFF21 && character <= 0xFF3A;
  return plain || fullWidth ? character + 0x20 : character;
}

// The same for a character of code page 932, as the number lead * 256 + trail.
constexpr unsigned ToLowerLatin932(unsigned character) {
  if (character >= 'A' && character <= 'Z') return character + 0x20;
  return character >= 0x8260 && character <= 0x8279 ? character + 0x21 : character;
}

// Converts UTF-8 to UTF-16, mapping each character with `map`.  Invalid bytes become low
// surrogates, one for each byte value, so they differ from every character.
template <typename Map>
std::u16string MapToUtf16(std::string_view utf8, Map map) {
  std::u16string mapped;
  mapped.reserve(utf8.size());
  while (!utf8.empty()) {
    const Decoded next = DecodeUtf8(utf8);
    AppendUtf16(mapped, next.character != kNoCharacter
                            ? map(next.character)
                            : 0xDC00 + static_cast<unsigned char>(utf8[0]));
    utf8.remove_prefix(next.bytes);
  }
  return mapped;
}

// Upper case in UTF-16: the same for names that differ only in case.
inline std::u16string UpperKey(std::string_view utf8) {
  return MapToUtf16(utf8, ToUpper);
}

}  // namespace kozor::text
