// ExtensionChain.h - the chain of extension headers behind the base header of levels 1 to 3.
#pragma once

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// Where a chain stands in the bytes of its header.
struct ChainBounds {
  std::size_t begin;  // of the first extension header; its size stands right in front
  std::size_t limit;  // the chain may not go beyond
  std::size_t width;  // of a size field: 2, or 4 in level 3
};

// What the chain says besides the fields of the member.
struct ChainResult {
  std::size_t end = 0;          // behind the last extension header
  std::size_t crcPosition = 0;  // of the header CRC; 0 when there is none
  std::uint16_t headerCrc = 0;
};

// Walks the chain and fills `header` from it; unknown ids are passed over.  When an id is repeated
// the last one counts.
HeaderStatus ReadExtensionChain(ByteSpan bytes, const ChainBounds& bounds, MemberHeader& header,
                                ChainResult& result);

}  // namespace kozor::container
