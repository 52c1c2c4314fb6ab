// Rows932.cpp - finds rows of code page 932.  The self-extracting program for Windows, which is too
// small for the table, has a FindRow932 of its own.
#include <array>

#include "platform/text/TextTables.h"

namespace kozor::text {

const char16_t* FindRow932(unsigned lead) {
  static const auto rows = [] {
    std::array<const char16_t*, 256> byLead{};
    for (std::size_t i = 0; i < kCp932RowCount; ++i) {
      byLead[kCp932Rows[i].lead] = kCp932Rows[i].characters;
    }
    return byLead;
  }();
  return rows[lead];
}

}  // namespace kozor::text
