// Stub.h - the programs that precede the archive in a self-extracting file, one for each system.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kozor::sfx {

struct Stub {
  std::string_view system;                // "linux-x64" and so on
  std::string_view suffix;                // of the file, with the dot
  std::span<const std::uint8_t> program;  // the whole program file
};

// The stub for a system; for an empty name, that of the system for which the archiver is built.
// Null if this build has none (docs/archiver.md).
const Stub* FindStub(std::string_view system = {});

}  // namespace kozor::sfx
