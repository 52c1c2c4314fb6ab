// MemberWalker.h - iterates over the headers of an archive.
#pragma once

#include "engine/container/ByteSource.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// Parses the header at `offset`, of any length.
HeaderStatus ParseHeaderAt(ByteSource& source, std::uint64_t offset, MemberHeader& header);

class MemberWalker {
 public:
  // `begin` is the offset of the first header or end mark.
  MemberWalker(ByteSource& archive, std::uint64_t begin) : source(archive), next(begin) {}

  // Reads the next header.  Returns false at the end of the archive, which is the end mark, the
  // exact end of the file, or only 0x1A bytes up to it.  Anything else that isn't a complete member
  // is damage and also ends the walk: the members after it can't be located.
  bool Next(MemberHeader& header);

  // ChecksumWrong or Broken if the walk has ended at damage, else Complete.
  HeaderStatus Status() const { return status; }
  // Whether the damage is that the file ends inside a member's data, after a valid header.
  bool IsCutInData() const { return isCutInData; }

  // The offset of the header that Next has read.
  std::uint64_t HeaderOffset() const { return current; }
  // The offset of the next member, or, at the end of the archive, that of the end mark or where it
  // would be.
  std::uint64_t NextOffset() const { return next; }
  // Valid after Next has returned false.
  bool HasEndMark() const { return hasEndMark; }

 private:
  bool IsAtEnd();

  ByteSource& source;
  std::uint64_t current = 0;
  std::uint64_t next;
  bool hasEndMark = false;
  bool isCutInData = false;
  HeaderStatus status = HeaderStatus::Complete;
};

}  // namespace kozor::container
