// ExtensionChain.h - the chain of extension headers after the base header of levels 1 to 3.
#pragma once

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The position of a chain within the bytes of its header.
struct ChainBounds {
  std::size_t begin;  // of the first extension header; its size precedes it
  std::size_t limit;  // the chain must end at or before this
  std::size_t width;  // of a size field: 2, or 4 in level 3
};

// The contents of the chain besides the fields of the member.
struct ChainResult {
  std::size_t end = 0;          // after the last extension header
  std::size_t crcPosition = 0;  // of the header CRC; 0 if there is none
  std::uint16_t headerCrc = 0;
};

// Follows the chain and fills in `header`.  Unknown ids are skipped; the last one of a repeated id
// counts.
HeaderStatus ReadExtensionChain(ByteSpan bytes, const ChainBounds& bounds, MemberHeader& header,
                                ChainResult& result);

// The UNIX mode for the attributes of a file of OS-9, which have no group; 0 if they allow nobody
// anything, which some writers store for unknown.
std::uint32_t UnixModeOfOs9(std::uint16_t attributes);

}  // namespace kozor::container
