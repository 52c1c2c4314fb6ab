// ForeignPage.h - code pages that names of old archives may be in, beyond those of CodePage.h.
//
// Their tables are made once, when a page is first asked for, by the C library's converter (the
// system's on Windows).
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "platform/text/CodePage.h"

namespace kozor::text {

class ForeignPage {
 public:
  // The first character of a text that isn't empty.
  Decoded Decode(std::string_view text) const;

 private:
  friend const ForeignPage* FindForeignPage(unsigned number);
  bool Fill(unsigned number);

  std::array<char32_t, 256> single{};  // kNoCharacter for a lead byte and for what is none
  std::vector<char32_t> pairs;         // by lead * 256 + trail; empty for a page of single bytes
};

// The page of that number: 437, 850, 852, 866, 936, 949, 950, 1250 to 1252, 10000, 28591, 51932.
// Null for others, and for those that the system's converter doesn't know.  May be called on
// several threads; the page lives as long as the process.
const ForeignPage* FindForeignPage(unsigned number);

}  // namespace kozor::text
