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
  // Reads an archive; names are decoded for the working code page.  Throws ResultCode::NotAnArchive
  // or one of the header codes: an index is complete or not there.
  ArchiveIndex(ByteSource& source, unsigned int codePage);
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
  // Bytes in front of the first header: the program of a self-extracting archive.
  std::uint64_t PrefixBytes() const { return prefixBytes; }
  // Where the end mark stands, or would stand.
  std::uint64_t EndOffset() const { return endOffset; }
  bool HasEndMark() const { return hasEndMark; }

 private:
  std::vector<std::size_t> Walk(ByteSource& source);
  void EnterName(std::size_t position);
  void MakeNameUnique(std::size_t position);

  unsigned int workingPage;
  std::deque<Member> members;  // elements stay where they are: the tables refer to their names
  std::unordered_map<std::string_view, std::size_t> byName;
  std::unordered_map<std::u16string_view, std::size_t> byKey;
  std::uint64_t prefixBytes = 0;
  std::uint64_t endOffset = 0;
  bool hasEndMark = false;
};

}  // namespace kozor::container
