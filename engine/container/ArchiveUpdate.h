// ArchiveUpdate.h - one atomic change of an archive.
//
// Call CopyKept, write new members to Output(), then Commit.  An object destroyed without a commit
// leaves the archive unchanged.
//
// Appending in place commits with one byte.  Everything but the first byte of the new members is
// written after the old end mark, where every reader stops, and flushed; then that byte overwrites
// the end mark.  Rewriting makes a complete new file, which then replaces the old one.  In both
// cases the headers written are read back before the commit.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/File.h"
#include "engine/container/MemberOutput.h"
#include "engine/container/TemporaryArchive.h"

namespace kozor::container {

// An archive to change: open and denying other writers, or new.
struct OpenArchive {
  std::string path;
  File file;  // not open for a new archive
  std::shared_ptr<const ArchiveIndex> index;
};

class ArchiveUpdate {
 public:
  virtual ~ArchiveUpdate() = default;

  virtual MemberOutput& Output() = 0;
  // Copies the members that stay, if that is necessary.
  virtual void CopyKept(const CopyProgress& progress) = 0;
  // Writes the end mark and makes the change.  In place, an update that wrote nothing changes
  // nothing.  Throws ResultCode::CannotWrite if the result can't be read back as an archive.
  virtual void Commit() = 0;
};

// Whether appending in place is possible: only the end mark, or an uncommitted append, follows the
// last member.
bool CanAppendInPlace(OpenArchive& archive);

// Throws ResultCode::UnknownKind for a self-extracting program with further code after its archive,
// which a change would destroy.
void RefuseCodeBehindArchive(OpenArchive& archive);

// The archive stays open in `archive` after the commit.
std::unique_ptr<ArchiveUpdate> AppendInPlace(OpenArchive& archive);

// `removed` marks members to drop, by position.  `workDirectory` is for the temporary; if it is
// empty, the temporary is made beside the archive.
std::unique_ptr<ArchiveUpdate> RewriteArchive(OpenArchive& archive,
                                              const std::vector<bool>& removed,
                                              const std::string& workDirectory);

// The bytes that CopyKept of a rewrite copies.
std::uint64_t KeptBytes(const ArchiveIndex& index, const std::vector<bool>& removed);

}  // namespace kozor::container
