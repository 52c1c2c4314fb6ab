// ArchiveIndex.h - the index of an archive: all its headers, read once, with look-up by name.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/container/ByteSource.h"
#include "engine/container/MemberTable.h"
#include "engine/container/NamePages.h"
#include "engine/container/PositionTable.h"

namespace kozor::container {

// Members in the order of the archive.  Positions stay valid when members are appended.
class ArchiveIndex {
 public:
  // The index of an empty archive without a prefix.
  explicit ArchiveIndex(unsigned int codePage) : workingPage(codePage) {}
  // Reads an archive.  Names are shown in the working code page.  `pageOfNames` applies to headers
  // that don't record theirs; 0 means a guess.
  //
  // A damaged part becomes a member with a fault and doesn't hide the rest, so that nothing is lost
  // silently.  Throws ResultCode::NotAnArchive, or one of the header codes if everything is
  // damaged.
  ArchiveIndex(ByteSource& source, unsigned int codePage, unsigned int pageOfNames = 0);

  const MemberTable& Members() const { return members; }

  // The position of the member of exactly this name, else of the first whose name differs only in
  // case.  '/' counts as '\'.  Of several members of one name the last is found.  The name of a
  // directory ends in '\'.
  std::optional<std::size_t> Find(std::string_view name) const;
  std::optional<std::size_t> FindExactly(std::string_view name) const;
  // The last symbolic link of exactly this name.  FindExactly and Find ignore links.
  std::optional<std::size_t> FindLink(std::string_view name) const;

  // Reads members that have been appended at the old end mark.
  void ReadOn(ByteSource& source);

  unsigned int WorkingPage() const { return workingPage; }
  unsigned int NamePage() const { return namePage; }
  // Damage, if any, because of which the archive must not be changed.
  std::optional<ResultCode> Damage() const { return damage; }
  // Bytes before the first header: the program of a self-extracting archive.
  std::uint64_t PrefixBytes() const { return prefixBytes; }
  // The offset of the end mark, or where it would be.
  std::uint64_t EndOffset() const { return endOffset; }
  bool HasEndMark() const { return hasEndMark; }

 private:
  // A member whose name isn't shown completely, so that other names may look the same.
  struct Altered {
    std::uint32_t position;
    std::uint32_t mark;  // made of the name in the header
  };
  // The start of a pass that may have to be repeated.
  struct Start {
    std::uint64_t offset;
    std::size_t members;
    std::optional<ResultCode> damage;
  };

  void Walk(ByteSource& source, unsigned int page, PageGuess& guess);
  void AddMember(const MemberHeader& header, Member member, unsigned int page, PageGuess& guess);
  void AddDamagedMember(const MemberHeader& header, Member member, ResultCode fault);
  void AppendNamed(Member member, const NameFields& fields, bool isAltered);
  void EnterName(std::uint32_t position);
  void MakeNameUnique(const Altered& member, std::size_t& uses);
  bool HasKey(std::string_view name) const;
  std::size_t KeyHashAt(std::uint32_t position) const;

  unsigned int workingPage;
  unsigned int namePage = 0;
  std::vector<Altered> altered;  // while reading: entered after unaltered names
  MemberTable members;
  PositionTable firstByKey;  // the first member of each name without case
  PositionTable linksByName;
  PositionTable lastByName;  // the last one of each exact name, if several names share its key
  std::uint64_t prefixBytes = 0;
  std::uint64_t endOffset = 0;
  bool hasEndMark = false;
  std::optional<ResultCode> damage;
};

}  // namespace kozor::container
