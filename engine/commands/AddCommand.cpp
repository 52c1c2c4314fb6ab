// AddCommand.cpp - the command `a`: adds files from disk.
#include <algorithm>
#include <utility>

#include "engine/commands/ArchiveChange.h"
#include "engine/commands/Archiver.h"
#include "engine/commands/MemberPacker.h"
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

void OpenSource(const Source& source, File::Mode mode, File& file) {
  if (!file.Open(source.path, mode)) throw Failure(SourceFailureCode());
}

// Marks members that are replaced.  Drops directories that the archive already holds.
void PlanReplacements(ArchiveChange& change, std::vector<Source>& sources) {
  if (change.Index().Members().empty()) return;
  std::erase_if(sources, [&](const Source& source) {
    const auto replaced = change.ReplacedBy(source.name);
    if (!replaced) return false;
    if (!source.isDirectory) change.Remove(*replaced);
    return source.isDirectory;
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
  std::vector<Source> sources = SelectSources(line);
  if (sources.empty() && !line.isDirectoryMode) return;  // only the archive itself was named
  ArchiveChange change(indexes, line);
  PlanReplacements(change, sources);
  if (sources.empty() && !change.IsNew()) return;

  Progress progress(listener);
  change.Apply([&](container::ArchiveUpdate& update) {
    // Directory headers are held back until the next file.  Old members are copied after the first
    // file has been reported as begun, so that the copying can be stopped too.
    std::vector<std::uint8_t> directories;
    bool isCopied = false;
    const auto copyAndWrite = [&](std::span<const std::uint8_t> headers,
                                  const container::CopyProgress& told) {
      if (!std::exchange(isCopied, true)) update.CopyKept(told);
      if (!headers.empty()) update.Output().Write(headers);
    };
    MemberPacker packer(line.packing, update, progress, segmentPacker);
    const auto add = [&](const Source& source) {
      File file;
      OpenSource(source, source.isDirectory ? File::Mode::Facts : File::Mode::Read, file);
      const container::FileFacts facts = file.Facts();
      NewMember member = DescribeSource(source, facts, change.Index());
      if (source.isDirectory) {
        const auto header = container::BuildHeader(member);
        directories.insert(directories.end(), header.begin(), header.end());
        return;
      }
      // The source has become the archive since it was selected.  Packing it would never end.
      if (change.IsArchiveItself(facts.stamp)) throw Failure(ResultCode::FileNotOpened);
      packer.Add(
          std::move(member), std::make_unique<FileInput>(std::move(file)), facts.stamp.size,
          [&, &added = source, size = facts.stamp.size, before = std::exchange(directories, {})] {
            progress.Begin(added.name, size);
            copyAndWrite(before, [&](std::uint64_t) { progress.Report(0); });
          });
    };
    try {
      for (const Source& source : sources) add(source);
    } catch (...) {
      packer.FinishBeforeFailure();
      throw;
    }
    packer.Finish();
    copyAndWrite(directories, {});
  });
}

}  // namespace kozor::commands
