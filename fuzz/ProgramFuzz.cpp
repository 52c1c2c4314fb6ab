// ProgramFuzz.cpp - any bytes as a self-extracting program: testing and unpacking a member give the
// same result, and names are safe to show.
//
// Input: the program, archive included.
#include <vector>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberWalker.h"
#include "engine/sfx/Entry.h"
#include "engine/sfx/Unpacking.h"
#include "fuzz/Fuzz.h"

namespace kozor::fuzz {

using namespace container;

void TestInput(Input input) {
  constexpr std::uint64_t kMostBytes = 1 << 20;
  MemorySource program(input.Rest());
  std::uint64_t begin = 0;
  try {
    begin = FindFirstHeader(program);
  } catch (const Failure&) {
    return;
  }
  MemberWalker walker(program, begin);
  MemberHeader header;
  while (walker.Next(header)) {
    const sfx::Entry entry = sfx::DescribeEntry(header);
    Require(entry.name.find('\\') == std::string::npos);
    if (header.originalBytes > kMostBytes) continue;
    const auto packed = program.At(walker.HeaderOffset() + header.headerBytes,
                                   static_cast<std::size_t>(header.packedBytes));
    std::vector<std::uint8_t> target(static_cast<std::size_t>(header.originalBytes));
    const char* const known = sfx::FaultOf(header);
    const char* const unpacked = known ? known : sfx::UnpackInto(target, header, packed);
    const char* const tested = sfx::TestData(header, packed);
    Require((unpacked == nullptr) == (tested == nullptr));
  }
}

}  // namespace kozor::fuzz
