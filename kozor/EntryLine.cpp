// EntryLine.cpp - see EntryLine.h.
#include "EntryLine.h"

#include <array>
#include <cinttypes>
#include <cstdio>

#include "Console.h"
#include "platform/classlib/ClassLib.h"

namespace kozor::program {

std::string EntryLine(std::uint32_t size, const std::string& time, std::uint8_t attribute,
                      const std::string& libraryName) {
  static constexpr std::array<unsigned int, 4> kBits = {
      FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM,
      FILE_ATTRIBUTE_ARCHIVE};
  std::string letters = "rhsa";
  for (std::size_t i = 0; i < kBits.size(); ++i) {
    if ((attribute & kBits[i]) == 0) letters[i] = '-';
  }
  std::array<char, 16> sizeText{};
  std::snprintf(sizeText.data(), sizeText.size(), "%10" PRIu32, size);
  return std::string(sizeText.data()) + "  " + time + "  " + letters + "  " +
         VisibleLibraryName(libraryName);
}

}  // namespace kozor::program
