// ArchiveIndex.h - the index of an archive: all its headers, read once, with look-up by name.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/container/ByteSource.h"
#include "engine/container/Failure.h"
#include "engine/container/MemberHeader.h"
#include "engine/container/MemberTime.h"

namespace kozor::container {

enum class MemberKind {
  File,
  Directory,
  Unlisted,  // a symbolic link, or a member with an empty name: kept, but never shown
};

struct Member {
  MemberKind kind = MemberKind::File;
  MethodId method{};
  std::optional<codec::Method> unpacking = {};  // empty if there is no decoder
  std::string name;    // as it is shown (MemberName.h); a directory's ends in '\'
  std::u16string key;  // the name with case folded

  std::uint64_t offset = 0;  // of the header in the file
  std::uint32_t headerBytes = 0;
  std::uint64_t packedBytes = 0;
  std::uint64_t originalBytes = 0;
  std::optional<std::uint16_t> crc;
  std::optional<ResultCode> fault;  // why the data can't be unpacked, if known

  std::uint64_t utcTime = 0;    // last write, 100 ns since 1601
  DosTime localTime;            // the same in local time
  std::uint16_t attribute = 0;  // DOS bits

  std::uint64_t DataOffset() const { return offset + headerBytes; }
  std::uint64_t EndOffset() const { return DataOffset() + packedBytes; }
};

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
  ArchiveIndex(const ArchiveIndex& other);
  ArchiveIndex& operator=(const ArchiveIndex&) = delete;

  const std::deque<Member>& Members() const { return members; }

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
  // A member whose name isn't decoded yet.
  struct Unnamed {
    std::size_t position;
    NameFields name;
  };

  void Walk(ByteSource& source);
  void AddMember(const MemberHeader& header, Member member);
  void AddDamagedMember(const MemberHeader& header, Member member, ResultCode fault);
  void ApplyGuessedPage();
  void NameMember(std::size_t position, NameFields fields);
  void EnterName(std::size_t position);
  void MakeNameUnique(std::size_t position);

  unsigned int workingPage;
  unsigned int namePage = 0;
  std::vector<Unnamed> unnamed;      // while reading: waiting for the guessed code page
  std::vector<std::size_t> altered;  // while reading: entered after unaltered names
  std::deque<Member> members;        // elements don't move: the tables refer to their names
  std::unordered_map<std::string_view, std::size_t> byName;
  std::unordered_map<std::u16string_view, std::size_t> byKey;
  std::unordered_map<std::string_view, std::size_t> linksByName;
  std::uint64_t prefixBytes = 0;
  std::uint64_t endOffset = 0;
  bool hasEndMark = false;
  std::optional<ResultCode> damage;
};

}  // namespace kozor::container
