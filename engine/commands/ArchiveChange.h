// ArchiveChange.h - the frame of every command that changes an archive: open it against other
// writers, decide what goes, write what is new, commit.
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
  // Opens the archive of the line; one that does not exist counts as empty.  Throws
  // ResultCode::ArchiveNotOpened, ResultCode::ArchiveReadOnly, ResultCode::UnknownKind for a
  // program that goes on behind its archive, and what the reading of the index throws.
  ArchiveChange(container::IndexCache& cache, const CommandLine& commandLine);

  bool IsNew() const { return !archive.file.IsOpen(); }
  const container::ArchiveIndex& Index() const { return *archive.index; }
  bool IsArchiveItself(const container::FileStamp& stamp) const;

  // The member that a new one of this name takes the place of: the one of exactly its name where
  // the host's file names are exact, else also one whose name differs in case alone.
  std::optional<std::size_t> ReplacedBy(const std::string& name) const;

  // By position in the index.
  void Remove(std::size_t position) { removed[position] = true; }
  bool IsRemoved(std::size_t position) const { return removed[position]; }
  bool LeavesMembers() const;
  std::uint64_t KeptBytes() const { return container::KeptBytes(Index(), removed); }

  // Makes the change: in place where members are only added, else anew.  `write` is given the
  // update, calls its CopyKept and then writes new members to its output.  When anything throws,
  // the archive is as it was.
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
