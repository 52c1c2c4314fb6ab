// Output.cpp - see Output.h.
#include "Output.h"

#include "Archive.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "ZorFileServices.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

// The folder for a new archive, in the run's own.
constexpr const char* kStaging = "new";

void RequireReplaceable(const fs::path& archive, const FileState& state, const std::string& name) {
  unsigned int attribute = 0;
  const std::string libraryPath = LibraryPath(archive);
  if (ZorGetFileAttribute(libraryPath.c_str(), attribute) &&
      (attribute & FILE_ATTRIBUTE_READONLY) != 0) {
    throw Failure(Visible(name) + ": the archive is read-only");
  }
  if (state.version.size > 0) RequireArchive(libraryPath, name);
}

void RequireDirectory(const fs::path& path) {
  if (!IsDirectory(path)) throw Failure(Visible(Shown(path)) + ": no such directory");
}

}  // namespace

Output::Output(const std::string& name, bool fresh, const std::string& givenWorkDirectory)
    : archive(WeaklyCanonical(FromUtf8(name))), append(fresh ? 0 : 1) {
  RequireDirectory(archive.parent_path());
  if (!CanBeMade(Shown(archive.filename()))) {
    throw Failure(Visible(name) + ": no file can have this name here");
  }
  const bool exists = Exists(archive);
  const FileState state = exists ? Inspect(archive) : FileState();
  if (state.isDirectory) throw Failure(Visible(name) + ": a directory, not an archive");
  if (!state.problem.empty()) throw Failure(Visible(name) + ": " + state.problem);
  path = LibraryPath(archive);
  const bool replace = fresh && exists;
  if (replace) RequireReplaceable(archive, state, name);
  if (givenWorkDirectory.empty() || replace) MakeOwnDirectory();
  if (!givenWorkDirectory.empty()) {
    workDirectory = LibraryPath(FromUtf8(givenWorkDirectory));
    RequireDirectory(FromUtf8(givenWorkDirectory));
  }
  if (replace) {
    bool isNew = false;
    staging = OpenOrMakeFolder(ownDirectory->Directory(), kStaging, isNew);
    if (!staging.IsOpen()) throw Failure(Visible(name) + ": " + LastSystemError());
    path = LibraryPath(archive.parent_path() / FromUtf8(ownDirectory->Name()) / kStaging /
                       archive.filename());
  }
}

void Output::MakeOwnDirectory() {
  const fs::path parent = archive.parent_path();
  try {
    const Descriptor directory = OpenDirectory(parent);
    ownDirectory.emplace(directory.Number());
  } catch (const FileFailure& failure) {
    throw Failure(Visible(parent.string()) + ": " + failure.what());
  }
  workDirectory = LibraryPath(parent / FromUtf8(ownDirectory->Name()));
}

void Output::Commit(const std::string& programSuffix) {
  if (!staging.IsOpen()) return;
  const Descriptor folder = OpenDirectory(archive.parent_path());
  const auto place = [&](const fs::path& file) {
    const std::string name = Shown(file.filename());
    try {
      if (!folder.IsOpen()) FailBySystem();
      MoveTo(staging.Number(), name, folder.Number(), name, true);
    } catch (const FileFailure& failure) {
      throw Failure(Visible(Shown(file)) + ": " + failure.what());
    }
  };
  if (!programSuffix.empty()) place(ProgramOf(archive, programSuffix));
  place(archive);
}

fs::path ProgramOf(fs::path archive, const std::string& suffix) {
  return archive.replace_extension(suffix);
}

}  // namespace kozor::program
