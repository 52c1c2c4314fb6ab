// AddCommand.cpp - the command `a`: adds files from disk.
#include <algorithm>
#include <optional>
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

// Removes members that are replaced.  Drops directories that the archive already holds.
void PlanReplacements(ArchiveChange& change, std::vector<Source>& sources) {
  if (change.Index().Members().empty()) return;
  std::erase_if(sources, [&](const Source& source) {
    if (source.kind != SourceKind::Directory) {
      change.RemoveReplacedBy(source.name);
      return false;
    }
    const std::string nameOfLink = source.name.substr(0, source.name.size() - 1);
    if (const auto link = change.LinkReplacedBy(nameOfLink)) change.Remove(*link);
    return change.ReplacedBy(source.name).has_value();
  });
}

NewMember DescribeSource(const Source& source, const container::FileFacts& facts,
                         std::optional<container::UnixFacts> unixFacts, unsigned int workingPage) {
  NewMember member;
  member.name = container::EncodeName(
      source.name, workingPage,
      unixFacts ? container::NameEncoding::Utf8 : container::NameEncoding::ShiftJisIfPossible);
  member.unixFacts = unixFacts;
  member.utcTime = facts.stamp.lastWrite;
  member.attribute = static_cast<std::uint16_t>(facts.attributes & kFileAttributes);
  if (source.kind == SourceKind::Directory) {
    member.method = container::kDirectoryMethod;
    member.attribute |= kDirectoryAttribute;
  }
  return member;
}

NewMember DescribeLink(const Source& source, unsigned int workingPage) {
  const std::optional<container::Link> link = container::ReadLink(source.path);
  if (!link) throw Failure(SourceFailureCode());
  NewMember member;
  member.name = container::EncodeName(source.name + '|' + link->target, workingPage,
                                      container::NameEncoding::Utf8);
  member.method = container::kDirectoryMethod;
  member.utcTime = link->lastWrite;
  member.unixFacts = link->unixFacts;
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
    // Headers of directories and links are held back until the next file.  Old members are copied
    // after the first file has been reported as begun, so that the copying can be stopped too.
    std::vector<std::uint8_t> waiting;
    bool isCopied = false;
    const auto copyAndWrite = [&](std::span<const std::uint8_t> headers,
                                  const container::CopyProgress& told) {
      if (!std::exchange(isCopied, true)) update.CopyKept(told);
      if (!headers.empty()) update.Output().Write(headers);
    };
    const unsigned int page = change.Index().WorkingPage();
    MemberPacker packer(line.packing, update, progress, segmentPacker);
    const auto letWait = [&](const NewMember& member) {
      const auto header = container::BuildHeader(member);
      waiting.insert(waiting.end(), header.begin(), header.end());
    };
    const auto add = [&](const Source& source) {
      if (source.kind == SourceKind::Link) return letWait(DescribeLink(source, page));
      const bool isDirectory = source.kind == SourceKind::Directory;
      File file;
      OpenSource(source, isDirectory ? File::Mode::Facts : File::Mode::Read, file);
      const container::FileFacts facts = file.Facts();
      const auto unixFacts =
          line.packing.keepsUnixFacts ? file.FactsOfUnix() : std::optional<container::UnixFacts>();
      NewMember member = DescribeSource(source, facts, unixFacts, page);
      if (isDirectory) return letWait(member);
      // The source has become the archive since it was selected.  Packing it would never end.
      if (change.IsArchiveItself(facts.stamp)) throw Failure(ResultCode::FileNotOpened);
      packer.Add(
          std::move(member), std::make_unique<FileInput>(std::move(file)), facts.stamp.size,
          [&, &added = source, size = facts.stamp.size, before = std::exchange(waiting, {})] {
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
    copyAndWrite(waiting, {});
  });
}

}  // namespace kozor::commands
