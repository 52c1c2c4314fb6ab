// Text.h - converts names between code pages and UTF-16, and folds case.
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

// Decodes text.  Returns false, with `text` unspecified, unless all of it is valid in the code
// page.
bool DecodeText(unsigned int codePage, std::string_view bytes, std::u16string& text);

// Decodes text; replaces each invalid byte by '_' and then sets `altered`.
std::u16string DecodeTextLossy(unsigned int codePage, std::string_view bytes, bool& altered);

// Encodes text so that the bytes decode to it again.  Returns false, with `bytes` unspecified, if
// the code page can't express it.
bool EncodeText(unsigned int codePage, std::u16string_view text, std::string& bytes);

// Encodes text; replaces each character that the code page lacks by '_' and then sets `altered`.
std::string EncodeTextLossy(unsigned int codePage, std::u16string_view text, bool& altered);

// Lower case for the letters that names fold: A to Z, plain and full-width.  Maps unit by unit.
std::u16string FoldCase(std::u16string_view text);

}  // namespace kozor::container
