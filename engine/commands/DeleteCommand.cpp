// DeleteCommand.cpp - the command `d`: deletes members.
#include <algorithm>
#include <unordered_set>

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
  if (position) change.Remove(*position);
}

// Names in a list are exact, and none is a mask.
void SelectListed(const std::string& path, ArchiveChange& change) {
  const container::ArchiveIndex& index = change.Index();
  for (const std::string& name : ReadResponseFile(path)) {
    if (const auto position = index.FindExactly(name)) change.Remove(*position);
    if (const auto position = index.FindLink(name)) change.Remove(*position);
  }
}

// An archive may hold several members of one name, of which a look-up finds only the last.
void SelectOlderOnes(ArchiveChange& change) {
  const auto& members = change.Index().Members();
  std::unordered_set<std::string> names;
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (change.IsRemoved(i)) names.insert(members.NameAt(i));
  }
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (names.contains(members.NameAt(i))) change.Remove(i);
  }
  if (names.empty()) throw Failure(ResultCode::NotFound);
}

}  // namespace

void Archiver::Delete(const CommandLine& line, const ProgressListener& listener) {
  ArchiveChange change(indexes, line);
  if (change.IsNew()) throw Failure(ResultCode::ArchiveNotFound);
  for (const Operand& operand : line.operands) SelectByWord(operand.text, change);
  if (!line.nameList.empty()) {
    SelectListed(container::PathFrom(line.workDirectory, line.nameList), change);
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
