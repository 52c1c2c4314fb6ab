// Unpacking.h - unpacks a member's data into memory and verifies its checksum.
#pragma once

#include <cstdint>
#include <span>

#include "engine/container/MemberHeader.h"

namespace kozor::sfx {

// The fault that is known before unpacking, or null.
const char* FaultOf(const container::MemberHeader& header);

// Unpacks into `target`, which must have the original size.  Returns null, or the fault of the
// data; `target` is then unspecified.
const char* UnpackInto(std::span<std::uint8_t> target, const container::MemberHeader& header,
                       container::ByteSpan packed);

// Tests the data in a bounded amount of memory.  Returns what UnpackInto returns.
const char* TestData(const container::MemberHeader& header, container::ByteSpan packed);

}  // namespace kozor::sfx
