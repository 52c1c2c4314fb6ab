// IndexFuzz.cpp - any bytes as an archive: reading its headers does no harm, and an index that
// comes of it names members that lie in the file, in order, and can be found by their names.
//
// Input: the code page in one byte, then the archive.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/Failure.h"

namespace {

using namespace kozor::container;

void Require(bool condition) {
  if (!condition) std::abort();
}

void Check(const ArchiveIndex& index, std::uint64_t fileBytes) {
  std::uint64_t end = index.PrefixBytes();
  for (const Member& member : index.Members()) {
    Require(member.offset >= end);
    end = member.EndOffset();
    Require(member.headerBytes > 0 && end <= fileBytes);
    if (member.kind != MemberKind::Unlisted) Require(index.FindExactly(member.name).has_value());
  }
  Require(index.EndOffset() == end);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  MemorySource archive(std::span(data + 1, size - 1));
  try {
    Check(ArchiveIndex(archive, data[0] % 2 == 0 ? 932 : 65001), archive.Size());
  } catch (const Failure&) {  // no archive, or a damaged one
  }
  return 0;
}
