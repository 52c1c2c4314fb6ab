// CodePageFuzz.cpp - any bytes as text of any code page: decoding reaches the end, and a character
// that the page can encode gives the same bytes, unless it has two codes.
//
// Input: code page (1 byte), text.
#include "fuzz/Fuzz.h"
#include "platform/text/CodePage.h"

namespace kozor::fuzz {

using namespace text;

void TestInput(Input input) {
  constexpr unsigned kPages[] = {932, 65001, 1252, 437, 20127};
  const CodePage& page = *FindCodePage(kPages[input.Byte() % std::size(kPages)]);
  const auto rest = input.Rest();
  const std::string given(rest.begin(), rest.end());

  for (std::string_view left = given; !left.empty();) {
    const Decoded decoded = page.decode(left);
    Require(decoded.bytes >= 1 && decoded.bytes <= left.size());
    if (decoded.character != kNoCharacter) {
      Require(decoded.character <= 0x10FFFF);
      std::string back;
      if (AppendExactly(page, back, decoded.character)) {
        Require(page.decode(back).character == decoded.character);
        Require(page.number == kCodePage932 || back == left.substr(0, decoded.bytes));
      }
      std::u16string units;
      AppendUtf16(units, decoded.character);
      const Decoded again = DecodeUtf16(units);
      Require(again.character == decoded.character && again.bytes == units.size());
    }
    left.remove_prefix(decoded.bytes);
  }
}

}  // namespace kozor::fuzz
