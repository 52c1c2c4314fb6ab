// RawArchive.h - archives composed for tests: any level, any extension, any wrong value.
#pragma once

#include <optional>

#include "tests/support/TestFolder.h"

namespace kozor::test {

struct RawExtension {
  std::uint8_t id;
  std::string payload;
};

// A stored member with correct sizes and checksums.
struct RawMember {
  int level = 2;
  std::string name = {};  // at most 200 bytes in levels 0 and 1, an extension 0x01 in others
  std::string contents = {};
  std::vector<RawExtension> extensions = {};  // of levels 1 to 3, after those for name and CRC
  std::string method = "-lh0-";
  std::uint32_t time = 0x4B3D3B00;  // 2010-01-01 00:00:00 in UTC; in levels 0 and 1 two DOS words
  std::uint8_t attribute = 0x20;    // the byte at offset 19
  char osId = 'M';
  bool hasHeaderCrc = true;  // levels 1 to 3
  std::string extra = {};    // at the end of the base header of levels 0 and 1, of a level 2 header
  // Claims about the contents in place of the truth, and errors added to what is computed.
  std::optional<std::uint32_t> originalBytes = {};
  std::optional<std::uint16_t> crc = {};
  std::uint32_t packedError = 0;
  std::uint8_t sumError = 0;  // of the base header, or the header CRC
};

Bytes RawHeader(const RawMember& member);
// Headers, contents and an end mark.
Bytes RawArchive(const std::vector<RawMember>& members);

// The bytes of a hex dump; blanks are ignored.
Bytes FromHex(std::string_view hex);

}  // namespace kozor::test
