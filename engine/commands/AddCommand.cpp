// AddCommand.cpp - the command `a`: files of the disk become members.
#include <algorithm>

#include "engine/commands/ArchiveChange.h"
#include "engine/commands/Archiver.h"
#include "engine/commands/SourceSelection.h"
#include "engine/container/Failure.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::File;
using container::NewMember;
using container::ResultCode;

constexpr std::uint16_t kFileAttributes = 0x27;  // read-only, hidden, system, archive
constexpr std::uint16_t kDirectoryAttribute = 0x10;

// The member that a source takes the place of: the one of exactly its name, or else one whose name
// differs in case alone, unless that is the name of another file at the source.
std::optional<std::size_t> ReplacedBy(const Source& source, const container::ArchiveIndex& index) {
  if (const auto exact = index.FindExactly(source.name)) return exact;
  const auto twin = index.Find(source.name);
  if (!twin) return std::nullopt;
  const std::string twinPath = source.root + index.Members()[*twin].name;
  return IsAnotherFile(twinPath, source) ? std::nullopt : twin;
}

container::FileFacts FactsOf(const Source& source) {
  File file;
  if (!file.Open(source.path, File::Mode::Facts)) throw Failure(ResultCode::FileNotOpened);
  return file.Facts();
}

// Marks what goes.  Drops directories that the archive has already.
void PlanReplacements(ArchiveChange& change, std::vector<Source>& sources) {
  if (change.Index().Members().empty()) return;
  std::erase_if(sources, [&](const Source& source) {
    const auto replaced = ReplacedBy(source, change.Index());
    if (!replaced) return false;
    if (source.isDirectory) return true;
    if (!change.IsArchiveItself(FactsOf(source).stamp)) change.Remove(*replaced);
    return false;
  });
}

NewMember DescribeSource(const Source& source, const container::FileFacts& facts,
                         const container::ArchiveIndex& index) {
  NewMember member;
  member.name = container::EncodeName(source.name, index.WorkingPage());
  member.utcTime = facts.stamp.lastWrite;
  member.attribute = static_cast<std::uint16_t>(facts.attributes & kFileAttributes);
  if (source.isDirectory) {
    member.method = container::kDirectoryMethod;
    member.attribute |= kDirectoryAttribute;
  }
  return member;
}

}  // namespace

void Archiver::Add(const CommandLine& line, const ProgressListener& listener) {
  line.Archive();
  std::vector<Source> sources = SelectSources(line);
  ArchiveChange change(indexes, line);
  PlanReplacements(change, sources);
  if (sources.empty() && !change.IsNew()) return;

  Progress progress(listener);
  change.Apply([&](container::ArchiveUpdate& update) {
    // Headers of directories wait for the next file: old members are copied while the first one
    // counts as under way, so that the copying can be stopped as well.
    std::vector<std::uint8_t> directories;
    const auto writeDirectories = [&] {
      if (!directories.empty()) update.Output().Write(directories);
      directories.clear();
    };
    bool isAnyAdded = sources.empty();
    for (const Source& source : sources) {
      if (source.isDirectory) {
        const auto header =
            container::BuildHeader(DescribeSource(source, FactsOf(source), change.Index()));
        directories.insert(directories.end(), header.begin(), header.end());
        isAnyAdded = true;
        continue;
      }
      File file;
      if (!file.Open(source.path, File::Mode::Read)) throw Failure(ResultCode::FileNotOpened);
      const container::FileFacts facts = file.Facts();
      if (change.IsArchiveItself(facts.stamp)) continue;
      NewMember member = DescribeSource(source, facts, change.Index());
      progress.Begin(source.name, facts.stamp.size);
      update.CopyKept([&](std::uint64_t) { progress.Report(0); });
      writeDirectories();
      FileInput input(file, pieceBuffer);
      packer.Pack(input, line.method, member, update.Output(), progress);
      progress.End(member.originalBytes);
      isAnyAdded = true;
    }
    if (!isAnyAdded) throw Failure(ResultCode::NotFound);
    writeDirectories();
  });
}

}  // namespace kozor::commands
