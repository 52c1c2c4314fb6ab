// Text.h - names between code pages and UTF-16, and the folding of case.
//
// An unknown code page is read as ASCII.
#pragma once

#include <string>
#include <string_view>

#include "platform/text/CodePage.h"

namespace kozor::container {

inline constexpr unsigned int kShiftJis = text::kCodePage932;
using text::kUtf8;

bool IsAscii(std::string_view bytes);

// Decodes text that is valid in the code page as a whole.  False when it is not; `text` is
// unspecified then.
bool DecodeText(unsigned int codePage, std::string_view bytes, std::u16string& text);

// Decodes what it can; '_' stands for each byte that is no character there, and `altered` is set.
std::u16string DecodeTextLossy(unsigned int codePage, std::string_view bytes, bool& altered);

// Encodes exactly: the bytes decode to the same text again.  False when the code page has no such
// bytes; `bytes` is unspecified then.
bool EncodeText(unsigned int codePage, std::u16string_view text, std::string& bytes);

// Encodes what it can; '_' stands for each character that the code page lacks, and `altered` is
// set.
std::string EncodeTextLossy(unsigned int codePage, std::u16string_view text, bool& altered);

// Lower case for the letters that count as equal in names: A to Z, plain and full-width.  Maps one
// unit to one unit.
std::u16string FoldCase(std::u16string_view text);

}  // namespace kozor::container
