// CodePage.h - characters of code pages to Unicode and back, through static tables.
#pragma once

#include <string>
#include <string_view>

#include "platform/win32/PosixTypes.h"

namespace kozor::posix {

constexpr UINT kCodePage932 = 932;
// What a decoder gives for bytes that are no character.
constexpr char32_t kNoCharacter = 0xFFFFFFFF;

struct Decoded {
  char32_t character;  // or kNoCharacter
  std::size_t bytes;   // taken from the text, at least 1
};

struct CodePage {
  // The first character of a text that isn't empty.
  Decoded (*decode)(std::string_view text);
  // Appends one character; false, with nothing appended, if the page doesn't have it.
  bool (*append)(std::string& text, char32_t character);
  // What stands for bytes that are no character.
  char32_t replacement;
};

// Null for a page that isn't known.  CP_ACP is the active one.
const CodePage* FindCodePage(UINT number);

UINT ActiveCodePage();
// True where the active code page has two-byte characters and this byte begins one.
bool IsLeadByte(unsigned char byte);

Decoded DecodeUtf8(std::string_view text);
bool AppendUtf8(std::string& text, char32_t character);

// Characters that standards read differently from code page 932 (wave dash, minus and the like), as
// the character that the page has; any other as it is.
char32_t ToCp932Reading(char32_t character);

// Upper case by Unicode's simple mapping, one character to one.
char32_t ToUpper(char32_t character);

}  // namespace kozor::posix
