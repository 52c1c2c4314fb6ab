// EntryLine.h - the line that stands for a file in the lists of kozor list and kozor info.
#pragma once

#include <cstdint>
#include <string>

namespace kozor::program {

// Size in bytes, time, attributes (FILE_ATTRIBUTE_* bits) as letters or hyphens, and name.
std::string EntryLine(std::uint32_t size, const std::string& time, std::uint8_t attribute,
                      const std::string& libraryName);

}  // namespace kozor::program
