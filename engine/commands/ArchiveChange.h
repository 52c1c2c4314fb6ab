// ArchiveChange.h - the frame of every command that changes an archive: open it, deny other
// writers, mark members to remove, write new ones, commit.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/commands/CommandLine.h"
#include "engine/container/ArchiveUpdate.h"
#include "engine/container/IndexCache.h"

namespace kozor::commands {

class ArchiveChange {
 public:
  // Opens the archive of the command line; one that doesn't exist counts as empty.  Throws
  // ResultCode::ArchiveNotOpened, ResultCode::ArchiveReadOnly, ResultCode::UnknownKind for a
  // program with code after its archive, and what reading the index throws.
  ArchiveChange(container::IndexCache& cache, const CommandLine& commandLine);

  bool IsNew() const { return !archive.file.IsOpen(); }
  const container::ArchiveIndex& Index() const { return *archive.index; }
  bool IsArchiveItself(const container::FileStamp& stamp) const;

  // The member that a new one of this name replaces: one of exactly the same name or, where
  // creating ignores case, one whose name differs only in case.
  std::optional<std::size_t> ReplacedBy(const std::string& name) const;
  // A link of exactly this name; a new member replaces it, too.
  std::optional<std::size_t> LinkReplacedBy(const std::string& name) const {
    return Index().FindLink(name);
  }

  // By position in the index.
  void Remove(std::size_t position) { removed[position] = true; }
  // Removes what a new file or link of this name replaces.  Throws ResultCode::SameName if there is
  // something and the line has the switch -keep.
  void RemoveReplacedBy(const std::string& name);
  bool IsRemoved(std::size_t position) const { return removed[position]; }
  bool LeavesMembers() const;
  std::uint64_t KeptBytes() const { return container::KeptBytes(Index(), removed); }

  // Makes the change: in place if members are only added, else by rewriting.  `write` calls
  // CopyKept of the update and then writes new members to its output.  If anything throws, the
  // archive is unchanged.
  void Apply(const std::function<void(container::ArchiveUpdate&)>& write);

  // Removes the archive's file.
  void RemoveFile();

 private:
  container::IndexCache& indexes;
  const CommandLine& line;
  container::OpenArchive archive;
  container::FileStamp stampOfArchive;
  std::vector<bool> removed;
};

}  // namespace kozor::commands
