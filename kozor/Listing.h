// Listing.h - formats times, and the lines of kozor list and kozor info.
#pragma once

#include <cstdint>
#include <string>

namespace kozor::program {

// "2026-02-03 04:05:06", local time.
std::string TimeText(std::int64_t secondsSince1970);

// Size in bytes, time, attributes (FILE_ATTRIBUTE_* bits) as letters or hyphens, and name.
std::string EntryLine(const std::string& size, const std::string& time, std::uint8_t attribute,
                      const std::string& shownName);
// "rhsa", with a hyphen for each bit that isn't set.
std::string AttributeText(std::uint8_t attribute);

}  // namespace kozor::program
