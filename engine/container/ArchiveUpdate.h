// ArchiveUpdate.h - one change of an archive: it happens as a whole or not at all.
//
// CopyKept comes first, then new members are written to Output(), then Commit makes the change.  An
// object that goes without a commit leaves the archive as it was.
//
// Appending in place commits with one byte.  Everything but the first byte of the new members is
// written and flushed behind the old end mark, at which every reader stops; then that byte takes
// the end mark's place.  Rewriting makes a complete new file, which then takes the old one's place.
// Either way the headers are read back first.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/File.h"
#include "engine/container/MemberOutput.h"
#include "engine/container/TemporaryArchive.h"

namespace kozor::container {

// An archive that is to be changed: open against other writers, or not there yet.
struct OpenArchive {
  std::string path;
  File file;  // not open for a new archive
  std::shared_ptr<const ArchiveIndex> index;
};

class ArchiveUpdate {
 public:
  virtual ~ArchiveUpdate() = default;

  virtual MemberOutput& Output() = 0;
  // Copies what stays of the old archive, if that has to be done.
  virtual void CopyKept(const CopyProgress& progress) = 0;
  // Writes the end mark and makes the change.  An update that wrote nothing changes nothing in
  // place.  Throws ResultCode::CannotWrite when what was written does not read as an archive.
  virtual void Commit() = 0;
};

// Whether an append in place does: nothing but the end mark, or the rest of an append that never
// committed, stands behind the last member.
bool CanAppendInPlace(OpenArchive& archive);

// Throws ResultCode::UnknownKind for a self-extracting program that goes on behind its archive,
// which no change could keep whole.
void RefuseCodeBehindArchive(OpenArchive& archive);

// The archive stays open in `archive` after the commit.
std::unique_ptr<ArchiveUpdate> AppendInPlace(OpenArchive& archive);

// `removed` tells by position which members do not stay; `workDirectory` is where the temporary
// goes, empty for beside the archive.
std::unique_ptr<ArchiveUpdate> RewriteArchive(OpenArchive& archive,
                                              const std::vector<bool>& removed,
                                              const std::string& workDirectory);

// Bytes that CopyKept of a rewrite would copy.
std::uint64_t KeptBytes(const ArchiveIndex& index, const std::vector<bool>& removed);

}  // namespace kozor::container
