// Stub.h - the program that stands in front of the archive in a self-extracting file.
#pragma once

#include <cstdint>
#include <span>

namespace kozor::sfx {

// The whole program file; empty where none can be built for the system (docs/archiver.md).
std::span<const std::uint8_t> Stub();

}  // namespace kozor::sfx
