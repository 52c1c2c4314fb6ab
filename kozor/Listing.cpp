// Listing.cpp - see Listing.h.
#include "Listing.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "Host.h"
#include "platform/classlib/ClassLib.h"

namespace kozor::program {

std::string TimeText(std::int64_t secondsSince1970) {
  std::tm local{};
  std::array<char, 32> text{};
  if (!LocalTime(secondsSince1970, local) ||
      std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local) == 0) {
    return "-------------------";
  }
  return text.data();
}

std::string AttributeText(std::uint8_t attribute) {
  static constexpr std::array<unsigned int, 4> kBits = {
      FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM,
      FILE_ATTRIBUTE_ARCHIVE};
  std::string letters = "rhsa";
  for (std::size_t i = 0; i < kBits.size(); ++i) {
    if ((attribute & kBits[i]) == 0) letters[i] = '-';
  }
  return letters;
}

std::string EntryLine(const std::string& size, const std::string& time, std::uint8_t attribute,
                      const std::string& shownName) {
  constexpr std::size_t kSizeWidth = 10;
  return std::string(kSizeWidth - std::min(kSizeWidth, size.size()), ' ') + size + "  " + time +
         "  " + AttributeText(attribute) + "  " + shownName;
}

}  // namespace kozor::program
