// ArchiveIndex.h - what an archive holds: one reading of all its headers, with look-up by name.
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
  Unlisted,  // a symbolic link, or a member whose name says nothing: kept, but never shown
};

struct Member {
  MemberKind kind = MemberKind::File;
  MethodId method{};
  std::optional<codec::Method> unpacking = {};  // empty when there is no decoder for it
  std::string name;    // as it is shown (MemberName.h); a directory's ends in '\'
  std::u16string key;  // the name with case folded

  std::uint64_t offset = 0;  // of the header in the file
  std::uint32_t headerBytes = 0;
  std::uint64_t packedBytes = 0;
  std::uint64_t originalBytes = 0;
  std::optional<std::uint16_t> crc;
  std::optional<ResultCode> fault;  // why the data cannot be delivered, if that is known already

  std::uint64_t utcTime = 0;    // last write, 100 ns since 1601
  DosTime localTime;            // the same in local time
  std::uint16_t attribute = 0;  // DOS bits

  std::uint64_t DataOffset() const { return offset + headerBytes; }
  std::uint64_t EndOffset() const { return DataOffset() + packedBytes; }
};

// Members in the order of the archive.  A position in that order stays good when members are added.
class ArchiveIndex {
 public:
  // The index of an archive without members, at the start of its file.
  explicit ArchiveIndex(unsigned int codePage) : workingPage(codePage) {}
  // Reads an archive.  Names are shown in the working code page; `pageOfNames` is that of names in
  // headers that do not record theirs, 0 for a guess.
  //
  // What is damaged does not hide the rest: it becomes a member with a fault, so that nothing is
  // lost without a word.  Throws ResultCode::NotAnArchive, and one of the header codes when there
  // is nothing but damage.
  ArchiveIndex(ByteSource& source, unsigned int codePage, unsigned int pageOfNames = 0);
  ArchiveIndex(const ArchiveIndex& other);
  ArchiveIndex& operator=(const ArchiveIndex&) = delete;

  const std::deque<Member>& Members() const { return members; }

  // The position of the member of exactly this name, or else of the first whose name differs in
  // case alone.  '/' counts as '\'.  Of several members of one name the last counts.  A directory
  // is found by its name with a '\' at the end.
  std::optional<std::size_t> Find(std::string_view name) const;
  std::optional<std::size_t> FindExactly(std::string_view name) const;

  // Reads on from the old end mark, behind which members have been added.
  void ReadOn(ByteSource& source);

  unsigned int WorkingPage() const { return workingPage; }
  unsigned int NamePage() const { return namePage; }
  // What keeps the archive from being changed: it is not understood to its last byte.
  std::optional<ResultCode> Damage() const { return damage; }
  // Bytes in front of the first header: the program of a self-extracting archive.
  std::uint64_t PrefixBytes() const { return prefixBytes; }
  // Where the end mark stands, or would stand.
  std::uint64_t EndOffset() const { return endOffset; }
  bool HasEndMark() const { return hasEndMark; }

 private:
  // A member whose name is not decoded yet.
  struct Unnamed {
    std::size_t position;
    NameFields name;
  };

  void Walk(ByteSource& source);
  void AddMember(const MemberHeader& header, Member member);
  void AddDamagedMember(const MemberHeader& header, Member member, ResultCode fault);
  void ApplyGuessedPage();
  void NameMember(std::size_t position, const NameFields& fields);
  void EnterName(std::size_t position);
  void MakeNameUnique(std::size_t position);

  unsigned int workingPage;
  unsigned int namePage = 0;
  std::vector<Unnamed> unnamed;      // while reading: their code page is to be guessed
  std::vector<std::size_t> altered;  // while reading: give way to names that are really so
  std::deque<Member> members;  // elements stay where they are: the tables refer to their names
  std::unordered_map<std::string_view, std::size_t> byName;
  std::unordered_map<std::u16string_view, std::size_t> byKey;
  std::uint64_t prefixBytes = 0;
  std::uint64_t endOffset = 0;
  bool hasEndMark = false;
  std::optional<ResultCode> damage;
};

}  // namespace kozor::container
