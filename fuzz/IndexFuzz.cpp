// IndexFuzz.cpp - any bytes as an archive: reading its headers is safe, the members of the index
// lie inside the file, in order, and can be found by name; any search text is safe.
//
// Input: code page (1 byte), search text (to a zero), archive.
#include "engine/container/ArchiveIndex.h"
#include "engine/container/Failure.h"
#include "engine/container/MemberSearch.h"
#include "fuzz/Fuzz.h"

namespace kozor::fuzz {

using namespace container;

namespace {

void CheckMembers(const ArchiveIndex& index, std::uint64_t fileBytes) {
  std::uint64_t end = index.PrefixBytes();
  for (const Member& member : index.Members()) {
    Require(member.offset >= end);
    end = member.EndOffset();
    Require((member.headerBytes > 0 || member.fault) && end <= fileBytes);
  }
  Require(index.EndOffset() == end);
}

// A search finds members in order; those found in this directory are also found with those below.
void CheckSearch(const ArchiveIndex& index, const std::string& text) {
  MemberSearch below(index, text, MemberSearch::Depth::AndBelow);
  MemberSearch here(index, text, MemberSearch::Depth::ThisDirectory);
  auto found = below.Next();
  for (auto inside = here.Next(); inside; inside = here.Next()) {
    while (found && *found < *inside) found = below.Next();
    Require(found == inside && *inside < index.Members().size());
  }
}

}  // namespace

void TestInput(Input input) {
  const unsigned page = input.Byte() % 2 == 0 ? 932 : 65001;
  const std::string text = input.Text();
  MemorySource archive(input.Rest());
  try {
    const ArchiveIndex index(archive, page);
    CheckMembers(index, archive.Size());
    CheckSearch(index, text);
    for (const Member& member : index.Members()) {
      if (member.kind == MemberKind::File) Require(index.FindExactly(member.name).has_value());
    }
  } catch (const Failure&) {  // not an archive, or a damaged one
  }
}

}  // namespace kozor::fuzz
