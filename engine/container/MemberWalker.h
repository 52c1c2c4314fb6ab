// MemberWalker.h - goes through an archive from header to header.
#pragma once

#include "engine/container/ByteSource.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The header at `offset`, however long it is.
HeaderStatus ParseHeaderAt(ByteSource& source, std::uint64_t offset, MemberHeader& header);

class MemberWalker {
 public:
  // `begin` is the offset of the first header or end mark.
  MemberWalker(ByteSource& archive, std::uint64_t begin) : source(archive), next(begin) {}

  // Reads the next header; false at the end of the archive, which is the end mark, the exact end of
  // the file, or nothing but 0x1A up to it.  Anything else that is no whole member is damage, and
  // ends the walk, too: the members behind it cannot be found.
  bool Next(MemberHeader& header);

  // HeaderStatus::Complete unless the walk has ended at damage: checksumWrong or broken then.
  HeaderStatus Status() const { return status; }
  // Whether the damage is that the file ends inside the data of a member whose header is whole.
  bool IsCutInData() const { return isCutInData; }

  // Of the member that Next has read.
  std::uint64_t HeaderOffset() const { return current; }
  // Where the next member would begin; at the end of the archive where the end mark stands, or
  // would stand.
  std::uint64_t NextOffset() const { return next; }
  // Known once Next has returned false.
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
