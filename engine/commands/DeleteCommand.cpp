// DeleteCommand.cpp - the command `d`: deletes members.
#include <algorithm>
#include <optional>
#include <string>

#include "engine/commands/ArchiveChange.h"
#include "engine/commands/Archiver.h"
#include "engine/container/Failure.h"
#include "engine/container/MemberSearch.h"
#include "engine/container/Path.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::MemberSearch;
using container::ResultCode;

// A name is exact, and never a mask.
void SelectByName(const std::string& name, ArchiveChange& change) {
  if (const auto position = change.Index().FindExactly(name)) change.Remove(*position);
  if (const auto position = change.Index().FindLink(name)) change.Remove(*position);
}

// Selects the members for one word: the member of that name, a directory with or without its '\', a
// link, or all matches of a mask.  Masks don't match links.
void SelectByWord(const std::string& word, ArchiveChange& change) {
  const container::ArchiveIndex& index = change.Index();
  if (word.find_first_of("*?") != std::string::npos) {
    MemberSearch search(index, word, MemberSearch::Depth::AndBelow,
                        MemberSearch::Kinds::FilesAndDirectories);
    while (const auto position = search.Next()) change.Remove(*position);
    return;
  }
  auto position = index.Find(word);
  if (!position) position = index.Find(word + '\\');
  if (!position) position = index.FindLink(word);
  if (position) SelectByName(index.Members().NameAt(*position), change);
}

// An archive may hold several members of one name, of which a look-up finds only the last.
void SelectOlderOnes(ArchiveChange& change) {
  const container::ArchiveIndex& index = change.Index();
  const auto isRemoved = [&](std::optional<std::size_t> position) {
    return position && change.IsRemoved(*position);
  };
  bool isAny = false;
  for (std::size_t i = 0; i < index.Members().size(); ++i) {
    const std::string name = index.Members().NameAt(i);
    if (isRemoved(index.FindExactly(name)) || isRemoved(index.FindLink(name))) change.Remove(i);
    isAny = isAny || change.IsRemoved(i);
  }
  if (!isAny) throw Failure(ResultCode::NotFound);
}

}  // namespace

void Archiver::Delete(const CommandLine& line, const ProgressListener& listener) {
  ArchiveChange change(indexes, line);
  if (change.IsNew()) throw Failure(ResultCode::ArchiveNotFound);
  for (const Operand& operand : line.operands) SelectByWord(operand.text, change);
  if (!line.nameList.empty()) {
    ForEachInResponseFile(container::PathFrom(line.workDirectory, line.nameList),
                          [&](const std::string& name) { SelectByName(name, change); });
  }
  SelectOlderOnes(change);

  if (!change.LeavesMembers()) {
    change.RemoveFile();
    return;
  }
  Progress progress(listener);
  change.Apply([&](container::ArchiveUpdate& update) {
    const std::uint64_t total = change.KeptBytes();
    std::uint64_t done = 0;
    progress.Begin(line.archive, total);
    update.CopyKept([&](std::uint64_t bytes) { progress.Report(done += bytes); });
    progress.End(total);
  });
}

}  // namespace kozor::commands
