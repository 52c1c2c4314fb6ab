// Bounds.h - runs an input and checks its cost.
#pragma once

#include <cstdint>
#include <span>

namespace kozor::fuzz {

// Runs the target.  Also reports more than 64 MiB of memory at one time, as counted by the address
// sanitizer, or more than 10 s of processor time.
void RunWithinBounds(std::span<const std::uint8_t> input);

}  // namespace kozor::fuzz
