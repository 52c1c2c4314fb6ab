// Tally.h - counts of what a run has done, and of failures.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/container/MemberHeader.h"
#include "engine/sfx/Console.h"
#include "engine/sfx/Entry.h"

namespace kozor::sfx {

struct Tally {
  std::uint64_t files = 0;
  std::uint64_t directories = 0;
  std::uint64_t bytes = 0;  // originals
  std::uint64_t failures = 0;

  void Count(const Entry& entry, const container::MemberHeader& header) {
    ++(entry.isDirectory ? directories : files);
    bytes += header.originalBytes;
  }
  // Also writes a message.
  void Fail(const Entry& entry, std::string_view reason) {
    ++failures;
    Complain({entry.name.empty() ? "a member without a name" : Visible(entry.name), ": ", reason});
  }
};

}  // namespace kozor::sfx
