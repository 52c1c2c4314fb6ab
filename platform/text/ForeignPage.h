// ForeignPage.h - further code pages that names in old archives may use.
//
// The table of a page is built by iconv (on Windows by the system) when it is first used.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "platform/text/CodePage.h"

namespace kozor::text {

class ForeignPage {
 public:
  // Decodes the first character of a non-empty text.
  Decoded Decode(std::string_view text) const;

 private:
  friend const ForeignPage* FindForeignPage(unsigned number);
  bool Fill(unsigned number);

  std::array<char32_t, 256> single{};  // kNoCharacter for lead and invalid bytes
  std::vector<char32_t> pairs;         // index lead * 256 + trail; empty for a single-byte page
};

// The page of that number: 437, 850, 852, 866, 936, 949, 950, 1250 to 1252, 10000, 28591, 51932.
// Null for others, and for those that the system's converter doesn't know.  Thread-safe; the page
// lives as long as the process.
const ForeignPage* FindForeignPage(unsigned number);

}  // namespace kozor::text
