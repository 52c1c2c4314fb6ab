// Text.cpp - see Text.h.
#include "engine/container/Text.h"

#include <algorithm>

#include "platform/text/Case.h"

namespace kozor::container {
namespace {

constexpr unsigned int kAsciiPage = 20127;

const text::CodePage& PageOrAscii(unsigned int codePage) {
  const text::CodePage* const page = text::FindCodePage(codePage);
  return page != nullptr ? *page : *text::FindCodePage(kAsciiPage);
}

}  // namespace

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool DecodeText(unsigned int codePage, std::string_view bytes, std::u16string& text) {
  bool altered = false;
  text = DecodeTextLossy(codePage, bytes, altered);
  return !altered;
}

std::u16string DecodeTextLossy(unsigned int codePage, std::string_view bytes, bool& altered) {
  if (IsAscii(bytes)) return {bytes.begin(), bytes.end()};
  const text::CodePage& page = PageOrAscii(codePage);
  std::u16string text;
  while (!bytes.empty()) {
    const text::Decoded next = page.decode(bytes);
    const bool isKnown = next.character != text::kNoCharacter;
    text::AppendUtf16(text, isKnown ? next.character : U'_');
    altered |= !isKnown;
    bytes.remove_prefix(next.bytes);
  }
  return text;
}

bool EncodeText(unsigned int codePage, std::u16string_view text, std::string& bytes) {
  bool altered = false;
  bytes = EncodeTextLossy(codePage, text, altered);
  return !altered;
}

std::string EncodeTextLossy(unsigned int codePage, std::u16string_view text, bool& altered) {
  const bool isAscii =
      std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
  if (isAscii) return {text.begin(), text.end()};
  const text::CodePage& page = PageOrAscii(codePage);
  std::string bytes;
  while (!text.empty()) {
    const text::Decoded next = text::DecodeUtf16(text);
    const bool isKnown =
        next.character != text::kNoCharacter && text::AppendExactly(page, bytes, next.character);
    if (!isKnown) bytes += '_';
    altered |= !isKnown;
    text.remove_prefix(next.bytes);
  }
  return bytes;
}

std::u16string FoldCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& unit : folded) unit = static_cast<char16_t>(text::ToLowerLatin(unit));
  return folded;
}

}  // namespace kozor::container
