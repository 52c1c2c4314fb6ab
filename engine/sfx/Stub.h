// Stub.h - the program that precedes the archive in a self-extracting file.
#pragma once

#include <cstdint>
#include <span>

namespace kozor::sfx {

// The whole program file; empty if it can't be built for this system (docs/archiver.md).
std::span<const std::uint8_t> Stub();

}  // namespace kozor::sfx
