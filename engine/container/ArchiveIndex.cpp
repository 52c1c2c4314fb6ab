// ArchiveIndex.cpp - see ArchiveIndex.h.
#include "engine/container/ArchiveIndex.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberName.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/NamePages.h"
#include "engine/container/Text.h"

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
  if (header.ClaimsTooMuch()) {
    member.fault =
        member.unpacking ? ResultCode::PackedDataDamaged : ResultCode::MethodNotSupported;
  }
  member.lastWrite = header.utcTime != 0 ? LastWrite(header.utcTime)
                                         : LastWrite(DosTime{header.dosDate, header.dosTime});
  return member;
}

// Why a walk ended at damage.
ResultCode FaultOf(const MemberWalker& walker) {
  if (walker.IsCutInData()) return ResultCode::PackedDataDamaged;
  return walker.Status() == HeaderStatus::ChecksumWrong ? ResultCode::HeaderChecksum
                                                        : ResultCode::HeaderDamaged;
}

bool HasWholeHeader(const Member& member) {
  return member.fault != ResultCode::HeaderChecksum && member.fault != ResultCode::HeaderDamaged;
}

// Distinguishes names that look the same when shown.  It depends on nothing else in the archive, so
// that a member keeps its mark when others are added or deleted.
std::uint32_t SumOf(const NameFields& fields) {
  std::uint32_t sum = 2166136261;  // FNV-1a
  const auto add = [&sum](const auto& text) {
    for (const auto unit : text) sum = (sum ^ static_cast<std::uint32_t>(unit)) * 16777619;
    sum = (sum ^ 0x100) * 16777619;
  };
  add(fields.base);
  if (fields.file) add(*fields.file);
  if (fields.directory) add(*fields.directory);
  if (fields.unicodeFile) add(*fields.unicodeFile);
  if (fields.unicodeDirectory) add(*fields.unicodeDirectory);
  return sum;
}

constexpr std::uint32_t kMarks = 100'000;

std::size_t KeyHash(std::u16string_view key) {
  return std::hash<std::u16string_view>()(key);
}

std::size_t NameHash(std::string_view name) {
  return std::hash<std::string_view>()(name);
}

std::optional<std::size_t> PositionOrNone(std::uint32_t found) {
  return found == PositionTable::kNone ? std::nullopt : std::optional<std::size_t>(found);
}

}  // namespace

ArchiveIndex::ArchiveIndex(ByteSource& source, unsigned int codePage, unsigned int pageOfNames)
    : workingPage(codePage),
      namePage(pageOfNames),
      prefixBytes(FindFirstHeader(source)),
      endOffset(prefixBytes) {
  ReadOn(source);
  const bool hasAnyHeader = std::any_of(members.begin(), members.end(), HasWholeHeader);
  if (damage && !hasAnyHeader) throw Failure(*damage);
}

void ArchiveIndex::ReadOn(ByteSource& source) {
  // Most archives are in code page 932.  If all names together indicate another, the headers are
  // read again, because keeping the raw names of a million members would take too much memory.
  const Start start = {endOffset, members.size(), damage};
  unsigned int page = namePage != 0 ? namePage : kShiftJis;
  for (;;) {
    PageGuess guess;
    Walk(source, page, guess);
    const unsigned int best = guess.IsEmpty() ? page : guess.Best();
    if (namePage != 0 || best == page) break;
    page = best;
    endOffset = start.offset;
    damage = start.damage;
    members.Cut(start.members);
    altered.clear();
  }
  const auto keyHashAt = [this](std::uint32_t position) { return KeyHashAt(position); };
  firstByKey.Reserve(members.size(), keyHashAt);
  std::size_t nextAltered = 0;
  for (std::size_t position = start.members; position < members.size(); ++position) {
    const bool isAltered =
        nextAltered < altered.size() && altered[nextAltered].position == position;
    if (isAltered) {
      ++nextAltered;
    } else {
      EnterName(static_cast<std::uint32_t>(position));
    }
  }
  std::unordered_map<std::uint32_t, std::size_t> uses;
  for (const Altered& member : altered) {
    MakeNameUnique(member, uses[member.mark]);
    EnterName(member.position);
  }
  altered.clear();
  altered.shrink_to_fit();
}

void ArchiveIndex::Walk(ByteSource& source, unsigned int page, PageGuess& guess) {
  for (;;) {
    MemberWalker walker(source, endOffset);
    MemberHeader header;
    while (walker.Next(header)) {
      AddMember(header, Describe(header, walker.HeaderOffset()), page, guess);
    }
    endOffset = walker.NextOffset();
    hasEndMark = walker.HasEndMark();
    // An end mark before the first member is a header whose first byte has been lost.
    const bool isFalseEnd = hasEndMark && members.empty() && source.Size() != 1;
    const bool isDamaged = walker.Status() != HeaderStatus::Complete || isFalseEnd;
    if (!isDamaged) return;

    damage = FaultOf(walker);
    Member member = Describe(header, endOffset);
    endOffset = walker.IsCutInData() ? source.Size()
                                     : FindAfterDamage(source, endOffset, header, walker.Status());
    // The next member may begin in what claims to be this header.
    member.headerBytes = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(member.headerBytes, endOffset - member.offset));
    member.packedBytes = endOffset - member.DataOffset();
    AddDamagedMember(header, std::move(member), *damage);
  }
}

void ArchiveIndex::AddMember(const MemberHeader& header, Member member, unsigned int page,
                             PageGuess& guess) {
  NameFields name = header.name;
  if (NeedsPage(name)) {
    if (namePage == 0) guess.Add(name);
    if (page != 0) ApplyPage(page, name);
  } else if (name.codePage != 0) {
    ApplyPage(name.codePage, name);
  }
  const bool isLink = member.kind == MemberKind::Unlisted;
  if (isLink && TakeLinkTarget(name).empty()) return members.Append(member);
  ShownName shown = DecodeName(name, member.kind == MemberKind::Directory, workingPage);
  if (shown.text.empty()) member.kind = MemberKind::Unlisted;
  member.name = std::move(shown.text);
  AppendNamed(std::move(member), header.name, shown.altered);
}

// Whatever its kind, it is listed as a file, with as much of its name as can be read.
void ArchiveIndex::AddDamagedMember(const MemberHeader& header, Member member, ResultCode fault) {
  member.kind = MemberKind::File;
  member.fault = fault;
  member.name = DecodeName(header.name, false, workingPage).text;
  if (member.name.empty()) member.name = "damaged";
  AppendNamed(std::move(member), header.name, true);
}

void ArchiveIndex::AppendNamed(Member member, const NameFields& fields, bool isAltered) {
  const bool isLong = member.name.size() > kMaxShownBytes;
  if (isAltered || isLong) {
    const std::uint32_t mark = SumOf(fields) % kMarks;
    if (isLong) member.name = MarkName(member.name, mark, workingPage);
    altered.push_back({static_cast<std::uint32_t>(members.size()), mark});
  }
  members.Append(member);
}

std::size_t ArchiveIndex::KeyHashAt(std::uint32_t position) const {
  return KeyHash(KeyOf(members.NameAt(position), workingPage));
}

void ArchiveIndex::EnterName(std::uint32_t position) {
  const std::string name = members.NameAt(position);
  const auto hasName = [&](std::uint32_t at) { return members.NameAt(at) == name; };
  const auto nameHashAt = [this](std::uint32_t at) { return NameHash(members.NameAt(at)); };
  if (members.KindAt(position) == MemberKind::Unlisted) {
    if (!name.empty()) linksByName.Put(NameHash(name), position, hasName, nameHashAt);
    return;
  }
  const std::u16string key = KeyOf(name, workingPage);
  const auto hasKey = [&](std::uint32_t at) {
    return KeyOf(members.NameAt(at), workingPage) == key;
  };
  const std::size_t hash = KeyHash(key);
  if (firstByKey.Find(hash, hasKey) == PositionTable::kNone) {
    firstByKey.Put(hash, position, hasKey, [this](std::uint32_t at) { return KeyHashAt(at); });
  } else {
    lastByName.Put(NameHash(name), position, hasName, nameHashAt);
  }
}

bool ArchiveIndex::HasKey(std::string_view name) const {
  const std::u16string key = KeyOf(name, workingPage);
  const auto hasKey = [&](std::uint32_t at) {
    return KeyOf(members.NameAt(at), workingPage) == key;
  };
  return firstByKey.Find(KeyHash(key), hasKey) != PositionTable::kNone;
}

// Names that differ only in characters that can't be shown would hide each other.  The later one
// gets a mark: "__.txt", "__.txt~40517"; `uses` counts those that would have got this mark.
void ArchiveIndex::MakeNameUnique(const Altered& member, std::size_t& uses) {
  if (members.KindAt(member.position) != MemberKind::File) return;
  const std::string name = members.NameAt(member.position);
  if (!HasKey(name)) return;
  std::string marked;
  do {
    marked = MarkName(name, member.mark + kMarks * uses++, workingPage);
  } while (HasKey(marked));
  members.Rename(member.position, marked);
}

std::optional<std::size_t> ArchiveIndex::FindExactly(std::string_view name) const {
  const std::string wanted = NormalizeName(name, workingPage);
  const auto hasName = [&](std::uint32_t at) { return members.NameAt(at) == wanted; };
  std::uint32_t found = lastByName.Find(NameHash(wanted), hasName);
  if (found == PositionTable::kNone) {
    found = firstByKey.Find(KeyHash(KeyOf(wanted, workingPage)), hasName);
  }
  return PositionOrNone(found);
}

std::optional<std::size_t> ArchiveIndex::FindLink(std::string_view name) const {
  const std::string wanted = NormalizeName(name, workingPage);
  return PositionOrNone(linksByName.Find(
      NameHash(wanted), [&](std::uint32_t at) { return members.NameAt(at) == wanted; }));
}

std::optional<std::size_t> ArchiveIndex::Find(std::string_view name) const {
  if (const auto exact = FindExactly(name)) return exact;
  const std::u16string key = KeyOf(NormalizeName(name, workingPage), workingPage);
  return PositionOrNone(firstByKey.Find(KeyHash(key), [&](std::uint32_t at) {
    return KeyOf(members.NameAt(at), workingPage) == key;
  }));
}

}  // namespace kozor::container
