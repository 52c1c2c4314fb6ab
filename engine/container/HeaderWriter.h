// HeaderWriter.h - headers of new members: level 2, in the form that every reader accepts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/container/File.h"
#include "engine/container/MemberHeader.h"
#include "engine/container/MemberName.h"

namespace kozor::container {

// The contents of a new member's header.  Sizes must be below 4 GiB.
struct NewMember {
  StoredName name;
  MethodId method = kStoredMethod;
  std::uint64_t packedBytes = 0;
  std::uint64_t originalBytes = 0;
  std::uint16_t crc = 0;                    // of the original data
  std::uint64_t utcTime = 0;                // last write, 100 ns since 1601
  std::uint16_t attribute = 0x20;           // DOS bits
  std::optional<UnixFacts> unixFacts = {};  // ids are written when both fit into 16 bits
};

// Returns the header's bytes.  Their number depends only on name, attribute, time and UNIX facts,
// so a header can be written first and overwritten when the packed size is known.  Throws
// ResultCode::NameTooLong if a directory or file name takes more than 4093 bytes.
std::vector<std::uint8_t> BuildHeader(const NewMember& member);

}  // namespace kozor::container
