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

void RequireReplaceable(const fs::path& archive, const std::string& name) {
  unsigned int attribute = 0;
  const std::string libraryPath = LibraryPath(archive);
  if (ZorGetFileAttribute(libraryPath.c_str(), attribute) &&
      (attribute & FILE_ATTRIBUTE_READONLY) != 0) {
    throw Failure(Visible(name) + ": the archive is read-only");
  }
  if (fs::is_regular_file(archive) && fs::is_empty(archive)) return;
  RequireArchive(libraryPath, name);
}

}  // namespace

Output::Output(const std::string& name, bool fresh, const std::string& givenWorkDirectory)
    : archive(fs::weakly_canonical(AbsolutePath(name))), append(fresh ? 0 : 1) {
  if (!fs::is_directory(archive.parent_path())) {
    throw Failure(Visible(archive.parent_path().string()) + ": no such directory");
  }
  if (fs::is_directory(archive)) throw Failure(Visible(name) + ": a directory, not an archive");
  if (Exists(archive) && !fs::is_regular_file(archive)) {
    throw Failure(Visible(name) + ": not a regular file");
  }
  path = LibraryPath(archive);
  const bool replace = fresh && Exists(archive);
  if (replace) RequireReplaceable(archive, name);
  if (givenWorkDirectory.empty() || replace) MakeOwnDirectory();
  if (!givenWorkDirectory.empty()) {
    workDirectory = LibraryPath(FromUtf8(givenWorkDirectory));
    if (!fs::is_directory(FromUtf8(givenWorkDirectory))) {
      throw Failure(Visible(givenWorkDirectory) + ": no such directory");
    }
  }
  if (replace) {
    staging = archive.parent_path() / FromUtf8(ownDirectory->Name()) / "new";
    fs::create_directory(staging);
    path = LibraryPath(staging / archive.filename());
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
  if (staging.empty()) return;
  const fs::path made = staging / archive.filename();
  if (!programSuffix.empty()) {
    fs::rename(ProgramOf(made, programSuffix), ProgramOf(archive, programSuffix));
  }
  fs::rename(made, archive);
}

fs::path ProgramOf(fs::path archive, const std::string& suffix) {
  return archive.replace_extension(suffix);
}

}  // namespace kozor::program
