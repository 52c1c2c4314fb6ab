// HeaderFuzz.cpp - any bytes as one header: the parser reads nothing outside them, its result is
// consistent, and a truncated header is never accepted as complete.
//
// Input: the header.
#include <vector>

#include "engine/container/MemberHeader.h"
#include "fuzz/Fuzz.h"

namespace kozor::fuzz {

using namespace container;

void TestInput(Input input) {
  const auto bytes = input.Rest();
  MemberHeader header;
  if (ParseMemberHeader(bytes, header) != HeaderStatus::Complete) return;
  Require(header.level <= 3);
  Require(header.headerBytes >= kCommonHeaderBytes && header.headerBytes <= bytes.size());
  Require(header.headerBytes <= kMaxHeaderBytes);

  // In its own allocation, where a sanitizer detects every access outside.
  const std::vector<std::uint8_t> whole(bytes.begin(), bytes.begin() + header.headerBytes);
  MemberHeader again;
  Require(ParseMemberHeader(whole, again) == HeaderStatus::Complete);
  Require(again.packedBytes == header.packedBytes && again.crc == header.crc);
  const std::vector<std::uint8_t> cut(whole.begin(), whole.end() - 1);
  Require(ParseMemberHeader(cut, again) != HeaderStatus::Complete);
}

}  // namespace kozor::fuzz
