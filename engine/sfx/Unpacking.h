// Unpacking.h - a member's data into memory, with its checksum.
#pragma once

#include <cstdint>
#include <span>

#include "engine/container/MemberHeader.h"

namespace kozor::sfx {

// What is known to be wrong before anything is unpacked, or null.
const char* FaultOf(const container::MemberHeader& header);

// Unpacks into `target`, which is as long as the original.  Returns null, or what is wrong with the
// data; the contents of `target` mean nothing then.
const char* UnpackInto(std::span<std::uint8_t> target, const container::MemberHeader& header,
                       container::ByteSpan packed);

// Finds out whether the data is good, in a bounded amount of memory.  Returns as UnpackInto does.
const char* TestData(const container::MemberHeader& header, container::ByteSpan packed);

}  // namespace kozor::sfx
