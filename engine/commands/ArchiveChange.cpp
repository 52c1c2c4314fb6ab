// ArchiveChange.cpp - see ArchiveChange.h.
#include "engine/commands/ArchiveChange.h"

#include <algorithm>

#include "engine/container/Failure.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::ResultCode;

// Why an existing archive could not be opened for writing.
ResultCode OpenFailureCode(DWORD error, const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  const bool isFile =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  const bool isProtected = error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT;
  return isProtected && isFile ? ResultCode::ArchiveReadOnly : ResultCode::ArchiveNotOpened;
}

// Needed because a rewritten archive replaces the target of a link, not the link.
bool IsLink(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Opens an archive and denies other writers.  A run that replaces an archive keeps the old file
// open until the new one has its name.  So the file just opened may already be replaced, and
// changes to it would be lost: check that the name still leads to it.
bool OpenForUpdate(const std::string& path, container::File& file) {
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (!file.Open(path, container::File::Mode::Update)) return false;
    const auto named = container::FindStamp(path);
    if (named && named->IsSameFile(file.Facts().stamp)) return true;
  }
  file.Close();
  SetLastError(ERROR_SHARING_VIOLATION);
  return false;
}

}  // namespace

ArchiveChange::ArchiveChange(container::IndexCache& cache, const CommandLine& commandLine)
    : indexes(cache), line(commandLine) {
  archive.path = line.archive;
  indexes.LetGo();
  if (OpenForUpdate(archive.path, archive.file)) {
    if (IsLink(archive.path)) archive.path = archive.file.FinalPath();
    archive.index = indexes.Get(archive.path, archive.file);
    if (const auto damage = Index().Damage()) throw Failure(*damage);
    stampOfArchive = archive.file.Facts().stamp;
    container::RefuseCodeBehindArchive(archive);
  } else {
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_NOT_FOUND) throw Failure(OpenFailureCode(error, archive.path));
    archive.index = std::make_shared<container::ArchiveIndex>(GetACP());
  }
  removed.resize(Index().Members().size());
}

bool ArchiveChange::IsArchiveItself(const container::FileStamp& stamp) const {
  return !IsNew() && stamp.IsSameFile(stampOfArchive);
}

std::optional<std::size_t> ArchiveChange::ReplacedBy(const std::string& name) const {
  return KzCreatesExactly() ? Index().FindExactly(name) : Index().Find(name);
}

void ArchiveChange::RemoveReplacedBy(const std::string& name) {
  for (const auto position : {LinkReplacedBy(name), ReplacedBy(name)}) {
    if (!position) continue;
    if (line.packing.keepsMembers) throw Failure(ResultCode::SameName);
    Remove(*position);
  }
}

bool ArchiveChange::LeavesMembers() const {
  return std::find(removed.begin(), removed.end(), false) != removed.end();
}

void ArchiveChange::Apply(const std::function<void(container::ArchiveUpdate&)>& write) {
  const bool removesMembers = std::find(removed.begin(), removed.end(), true) != removed.end();
  const bool isInPlace = !removesMembers && container::CanAppendInPlace(archive);
  const auto update = isInPlace ? container::AppendInPlace(archive)
                                : container::RewriteArchive(archive, removed, line.workDirectory);
  write(*update);
  update->Commit();
  if (!isInPlace) return;
  archive.index.reset();  // lets the cache extend the index without a copy
  indexes.MembersAppended(archive.path, archive.file);
}

void ArchiveChange::RemoveFile() {
  const auto remove = [&] { return archive.file.Remove(archive.path); };
  if (!container::RepeatWhileShared(remove)) throw Failure(container::WriteFailureCode());
}

}  // namespace kozor::commands
