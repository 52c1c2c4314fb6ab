// TextTables.h - tables of code pages and upper case; a script generates TextTables.cpp.
#pragma once

#include <cstddef>

namespace kozor::text {

// The 188 characters of one lead byte, trail bytes 0x40 to 0x7E and 0x80 to 0xFC.  A blank or a
// zero means no character.
struct Cp932Row {
  unsigned char lead;
  char16_t characters[189];
};
// In the order of lead bytes, without user-defined characters (0xF0 to 0xF9), which are computed.
extern const Cp932Row kCp932Rows[];
extern const std::size_t kCp932RowCount;

// The characters of a lead byte; null if it has none.
const char16_t* FindRow932(unsigned lead);

// Bytes 0x80 to 0xFF of single-byte code pages.
extern const char16_t kCp1252High[129];
extern const char16_t kCp437High[129];

// The letters first, first + step, ... last; adding `distance` gives the capital.  Without ASCII.
struct UpperRun {
  char32_t first;
  char32_t last;
  int step;
  int distance;
};
extern const UpperRun kUpperRuns[];  // in ascending order
extern const std::size_t kUpperRunCount;

}  // namespace kozor::text
