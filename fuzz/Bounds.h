// Bounds.h - runs an input and looks at what it costs.
#pragma once

#include <cstdint>
#include <span>

namespace kozor::fuzz {

// Runs the target.  A finding is also more than 64 MiB of memory at one time, which the address
// sanitizer counts, or more than 10 s of processor time.
void RunWithinBounds(std::span<const std::uint8_t> input);

}  // namespace kozor::fuzz
