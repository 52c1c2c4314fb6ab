// ArchiveIndex.cpp - see ArchiveIndex.h.
#include "engine/container/ArchiveIndex.h"

#include <utility>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberName.h"
#include "engine/container/MemberWalker.h"

namespace kozor::container {
namespace {

constexpr std::uint16_t kReadOnly = 0x01;
constexpr std::uint16_t kDirectory = 0x10;
constexpr std::uint16_t kFileAttributes = 0x27;  // read-only, hidden, system, archive

MemberKind KindOf(const MemberHeader& header) {
  if (!header.IsDirectoryMethod()) return MemberKind::File;
  return header.IsLink() ? MemberKind::Unlisted : MemberKind::Directory;
}

std::uint16_t AttributeOf(const MemberHeader& header) {
  std::uint16_t attribute = header.attribute & kFileAttributes;
  if (header.IsDirectoryMethod()) attribute |= kDirectory;
  if (header.IsReadOnly()) attribute |= kReadOnly;
  return attribute;
}

void SetTimes(const MemberHeader& header, Member& member) {
  if (header.utcTime != 0) {
    member.utcTime = header.utcTime;
    member.localTime = DosOfFileTime(header.utcTime);
  } else {
    member.localTime = ValidDosTime({header.dosDate, header.dosTime});
    member.utcTime = FileTimeOfDos(member.localTime);
  }
}

Member Describe(const MemberHeader& header, std::uint64_t offset) {
  Member member;
  member.kind = KindOf(header);
  member.method = header.method;
  member.unpacking = header.UnpackingMethod();
  member.offset = offset;
  member.headerBytes = header.headerBytes;
  member.packedBytes = header.packedBytes;
  member.originalBytes = header.originalBytes;
  member.crc = header.crc;
  member.attribute = AttributeOf(header);
  SetTimes(header, member);
  return member;
}

}  // namespace

ArchiveIndex::ArchiveIndex(ByteSource& source, unsigned int codePage)
    : workingPage(codePage), prefixBytes(FindFirstHeader(source)), endOffset(prefixBytes) {
  ReadOn(source);
}

ArchiveIndex::ArchiveIndex(const ArchiveIndex& other)
    : workingPage(other.workingPage),
      members(other.members),
      prefixBytes(other.prefixBytes),
      endOffset(other.endOffset),
      hasEndMark(other.hasEndMark) {
  for (std::size_t position = 0; position < members.size(); ++position) EnterName(position);
}

void ArchiveIndex::ReadOn(ByteSource& source) {
  // Names that hold a '_' for something else give way to names that are really so.
  for (const std::size_t position : Walk(source)) {
    MakeNameUnique(position);
    EnterName(position);
  }
}

// Adds the members from the end offset on.  Returns the positions of those whose names are altered,
// which are not entered yet.
std::vector<std::size_t> ArchiveIndex::Walk(ByteSource& source) {
  std::vector<std::size_t> altered;
  MemberWalker walker(source, endOffset);
  MemberHeader header;
  while (walker.Next(header)) {
    Member member = Describe(header, walker.HeaderOffset());
    ShownName name = DecodeName(header.name, header.IsDirectoryMethod(), workingPage);
    if (name.text.empty()) member.kind = MemberKind::Unlisted;
    member.name = std::move(name.text);
    member.key = std::move(name.key);
    members.push_back(std::move(member));
    if (name.altered) {
      altered.push_back(members.size() - 1);
    } else {
      EnterName(members.size() - 1);
    }
  }
  if (walker.Status() == HeaderStatus::ChecksumWrong) throw Failure(ResultCode::HeaderChecksum);
  if (walker.Status() != HeaderStatus::Complete) throw Failure(ResultCode::HeaderDamaged);
  endOffset = walker.NextOffset();
  hasEndMark = walker.HasEndMark();
  return altered;
}

void ArchiveIndex::EnterName(std::size_t position) {
  const Member& member = members[position];
  if (member.kind == MemberKind::Unlisted) return;
  byName.insert_or_assign(member.name, position);
  byKey.try_emplace(member.key, position);
}

// Names that differ only in characters that cannot be shown would hide each other.  The later one
// gets its place in the archive behind it: "__.txt", "__.txt~2".
void ArchiveIndex::MakeNameUnique(std::size_t position) {
  Member& member = members[position];
  if (member.kind != MemberKind::File) return;
  while (byKey.contains(member.key)) {
    member.name += "~" + std::to_string(position + 1);
    member.key = KeyOf(member.name, workingPage);
  }
}

std::optional<std::size_t> ArchiveIndex::FindExactly(std::string_view name) const {
  const auto found = byName.find(NormalizeName(name, workingPage));
  if (found == byName.end()) return std::nullopt;
  return found->second;
}

std::optional<std::size_t> ArchiveIndex::Find(std::string_view name) const {
  if (const auto exact = FindExactly(name)) return exact;
  const auto found = byKey.find(KeyOf(NormalizeName(name, workingPage), workingPage));
  if (found == byKey.end()) return std::nullopt;
  return found->second;
}

}  // namespace kozor::container
