// ArchiveIndex.cpp - see ArchiveIndex.h.
#include "engine/container/ArchiveIndex.h"

#include <algorithm>
#include <utility>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberName.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/NamePages.h"

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
  if (header.ClaimsTooMuch()) member.fault = ResultCode::PackedDataDamaged;
  SetTimes(header, member);
  return member;
}

}  // namespace

ArchiveIndex::ArchiveIndex(ByteSource& source, unsigned int codePage, unsigned int pageOfNames)
    : workingPage(codePage),
      namePage(pageOfNames),
      prefixBytes(FindFirstHeader(source)),
      endOffset(prefixBytes) {
  ReadOn(source);
  const bool isAnyWhole = std::any_of(members.begin(), members.end(),
                                      [](const Member& member) { return !member.fault; });
  if (damage && !isAnyWhole) throw Failure(*damage);
}

ArchiveIndex::ArchiveIndex(const ArchiveIndex& other)
    : workingPage(other.workingPage),
      namePage(other.namePage),
      members(other.members),
      prefixBytes(other.prefixBytes),
      endOffset(other.endOffset),
      hasEndMark(other.hasEndMark),
      damage(other.damage) {
  for (std::size_t position = 0; position < members.size(); ++position) EnterName(position);
}

void ArchiveIndex::ReadOn(ByteSource& source) {
  Walk(source);
  ApplyGuessedPage();
  for (const std::size_t position : altered) {
    MakeNameUnique(position);
    EnterName(position);
  }
  altered.clear();
}

// Adds the members after the end offset.
void ArchiveIndex::Walk(ByteSource& source) {
  for (;;) {
    MemberWalker walker(source, endOffset);
    MemberHeader header;
    while (walker.Next(header)) AddMember(header, Describe(header, walker.HeaderOffset()));
    endOffset = walker.NextOffset();
    hasEndMark = walker.HasEndMark();
    // An end mark before the first member is a header whose first byte has been lost.
    const bool isFalseEnd = hasEndMark && members.empty() && source.Size() != 1;
    const bool isDamaged = walker.Status() != HeaderStatus::Complete || isFalseEnd;
    if (!isDamaged) return;

    const bool isSumWrong = walker.Status() == HeaderStatus::ChecksumWrong;
    damage = isSumWrong ? ResultCode::HeaderChecksum : ResultCode::HeaderDamaged;
    Member member = Describe(header, endOffset);
    endOffset = walker.IsCutInData() ? source.Size()
                                     : FindAfterDamage(source, endOffset, header, walker.Status());
    member.packedBytes = endOffset - std::min(endOffset, member.DataOffset());
    AddDamagedMember(header, std::move(member),
                     walker.IsCutInData() ? ResultCode::PackedDataDamaged : *damage);
  }
}

void ArchiveIndex::AddMember(const MemberHeader& header, Member member) {
  const std::size_t position = members.size();
  members.push_back(std::move(member));
  if (!NeedsPage(header.name)) {
    NameFields name = header.name;
    if (name.codePage != 0) ApplyPage(name.codePage, name);
    NameMember(position, name);
  } else if (namePage != 0) {
    NameFields name = header.name;
    ApplyPage(namePage, name);
    NameMember(position, name);
  } else {
    unnamed.push_back({position, header.name});
  }
}

// It is listed as a file, whatever it was, by as much of its name as can be read.
void ArchiveIndex::AddDamagedMember(const MemberHeader& header, Member member, ResultCode fault) {
  member.kind = MemberKind::File;
  member.fault = fault;
  members.push_back(std::move(member));
  ShownName name = DecodeName(header.name, false, workingPage);
  Member& added = members.back();
  added.name = name.text.empty() ? "damaged" : std::move(name.text);
  if (added.name.size() > kMaxShownBytes) {
    added.name = MarkName(added.name, members.size(), workingPage);
  }
  added.key = KeyOf(added.name, workingPage);
  altered.push_back(members.size() - 1);
}

void ArchiveIndex::ApplyGuessedPage() {
  PageGuess guess;
  for (const Unnamed& member : unnamed) guess.Add(member.name);
  const unsigned int page = guess.Best();
  for (Unnamed& member : unnamed) {
    if (page != 0) ApplyPage(page, member.name);
    NameMember(member.position, member.name);
  }
  unnamed.clear();
  unnamed.shrink_to_fit();
}

void ArchiveIndex::NameMember(std::size_t position, NameFields fields) {
  Member& member = members[position];
  const bool isLink = member.kind == MemberKind::Unlisted;
  if (isLink && TakeLinkTarget(fields).empty()) return;
  ShownName name = DecodeName(fields, member.kind == MemberKind::Directory, workingPage);
  if (name.text.empty()) member.kind = MemberKind::Unlisted;
  member.name = std::move(name.text);
  member.key = std::move(name.key);
  if (member.name.size() > kMaxShownBytes) {
    member.name = MarkName(member.name, position + 1, workingPage);
    member.key = KeyOf(member.name, workingPage);
    name.altered = true;
  }
  if (name.altered) {
    altered.push_back(position);
  } else {
    EnterName(position);
  }
}

void ArchiveIndex::EnterName(std::size_t position) {
  const Member& member = members[position];
  if (member.kind == MemberKind::Unlisted) {
    if (!member.name.empty()) linksByName.insert_or_assign(member.name, position);
    return;
  }
  byName.insert_or_assign(member.name, position);
  byKey.try_emplace(member.key, position);
}

// Names that differ only in characters that can't be shown would hide each other.  The later one
// gets its position in the archive as a suffix: "__.txt", "__.txt~2".
void ArchiveIndex::MakeNameUnique(std::size_t position) {
  Member& member = members[position];
  if (member.kind != MemberKind::File) return;
  for (std::size_t number = position + 1; byKey.contains(member.key); number += members.size()) {
    member.name = MarkName(member.name, number, workingPage);
    member.key = KeyOf(member.name, workingPage);
  }
}

std::optional<std::size_t> ArchiveIndex::FindExactly(std::string_view name) const {
  const auto found = byName.find(NormalizeName(name, workingPage));
  if (found == byName.end()) return std::nullopt;
  return found->second;
}

std::optional<std::size_t> ArchiveIndex::FindLink(std::string_view name) const {
  const auto found = linksByName.find(NormalizeName(name, workingPage));
  if (found == linksByName.end()) return std::nullopt;
  return found->second;
}

std::optional<std::size_t> ArchiveIndex::Find(std::string_view name) const {
  if (const auto exact = FindExactly(name)) return exact;
  const auto found = byKey.find(KeyOf(NormalizeName(name, workingPage), workingPage));
  if (found == byKey.end()) return std::nullopt;
  return found->second;
}

}  // namespace kozor::container
