// Rows932.cpp - rows of code page 932 from the system, which has the same table as ours.
#include <windows.h>

#include <array>
#include <iterator>

#include "platform/text/TextTables.h"

namespace kozor::text {

const char16_t* FindRow932(unsigned lead) {
  constexpr unsigned kTrails = std::size(Cp932Row{}.characters) - 1;
  static char16_t rows[256][kTrails];
  char16_t* const row = rows[lead];
  if (row[0] != 0) return row;
  for (unsigned i = 0; i < kTrails; ++i) {
    const unsigned trail = i + (i < 0x3F ? 0x40 : 0x41);
    const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
    wchar_t character = 0;
    const int units = MultiByteToWideChar(932, MB_ERR_INVALID_CHARS, pair, 2, &character, 1);
    row[i] = units == 1 ? static_cast<char16_t>(character) : u' ';
  }
  return row;
}

}  // namespace kozor::text
