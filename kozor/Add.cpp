// Add.cpp - kozor add: files, a directory or standard input into an archive.
#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <sstream>
#include <vector>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Output.h"
#include "Packing.h"
#include "Selection.h"
#include "SourceList.h"
#include "WorkFolder.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor add [OPTION]... ARCHIVE [-C BASE] PATH...
  or:  kozor add [OPTION]... --dir DIRECTORY ARCHIVE
  or:  kozor add [OPTION]... --stdin NAME ARCHIVE
  or:  kozor add [OPTION]... --files-from FILE ARCHIVE

Adds files to an LZH archive, and creates the archive if it doesn't exist.  With
"-" as ARCHIVE, a new archive is written to standard output.

A PATH is a file; a directory, with everything below it; or a mask, with * and ?
in its last component, that is matched in its directory and all directories
below.  Quote masks, or the shell expands them.  Paths are relative to BASE, and
so are the names in the archive.  Files outside of BASE are stored by their
absolute paths without the leading slash: /usr/include/stdio.h becomes
usr/include/stdio.h.

Permissions, symbolic links and directories are stored too, as UNIX programs
expect it.  For programs on Windows use --no-unix.

Files that can't be stored are left out and named on standard error, and the
exit status is 1: unreadable and special files, files of 4 GiB or more, and
names with a control character or one of \ : * ? " < > |
)";

constexpr std::array<Option, 13> kOwnOptions = {{
    kBaseOption,
    kExcludeOption,
    {"--new", "",
     "create a new archive; an existing one is replaced as\n"
     "soon as the new one is complete"},
    {"--overwrite", "",
     "replace members of the same name; without this option\n"
     "they are reported and nothing is added"},
    {"--sfx", "",
     "make a self-extracting program of the archive as well,\n"
     "beside it: a.run of a.lzh, or a.exe for Windows\n(a.run --help); implies --no-unix"},
    {"--for", "SYSTEM",
     "with --sfx: linux or windows (or linux-x64, linux-arm64,\n"
     "windows-x64, windows-x86); default: this system"},
    {"--work-dir", "DIR", "directory for temporary files (default: that of the\narchive)"},
    {"--dir", "DIRECTORY",
     "add everything below DIRECTORY, empty directories\n"
     "too, and replace members of the same name"},
    {"--stdin", "NAME", "add standard input as a member called NAME"},
    {"--update", "",
     "add only files that are new or newer than the member\n"
     "of the same name, which they replace"},
    {"--files-from", "FILE",
     "read the paths to add from FILE, one per line; - is\n"
     "standard input"},
    {"--null", "", "paths in FILE end with a zero byte, not a newline"},
    {"--dry-run", "", "print the names of what would be added, change nothing"},
}};
constexpr auto kOptions = Join(kOwnOptions, kPackingOptions);

constexpr const char* kNothingAdded = "nothing was added (--overwrite replaces existing members)";
// An archive isn't given up for one that lacks files.
constexpr const char* kOldStays = "the old archive stays: a new one would lack what can't be read";

void ComplainOfClash(const std::string& name) {
  Complain(VisibleLibraryName(name) + ": the archive already has a member of that name");
}

// Reports each selected file whose name is already in the archive.
bool HasClashes(const std::vector<FileGroup>& groups, const Output& output,
                const std::string& archiveName) {
  if (!Exists(HostPath(output.Path()))) return false;
  const ArchiveReader members(output.Path(), archiveName);
  const int before = Complaints();
  for (const FileGroup& group : groups) {
    for (const auto* names : {&group.names, &group.links}) {
      for (const std::string& name : *names) {
        if (members.FindReplacedBy(name)) ComplainOfClash(name);
      }
    }
  }
  return Complaints() > before;
}

// The self-extracting program may replace an older one, but no other file.
void RequireRoomForProgram(const fs::path& archive, const std::string& suffix) {
  const fs::path program = ProgramOf(archive, suffix);
  if (!Exists(program)) return;
  ZorArchive object;
  if (object.IsEnabled() && object.IsArchive(LibraryPath(program).c_str())) return;
  throw Failure(Visible(program.string()) +
                ": exists and isn't a self-extracting archive; not replaced");
}

// Returns whether no member may be replaced, and tells the archiver, which looks while it has the
// archive locked.  The library would list all members before, and detect the clashes of its own
// selection only.
bool KeepMembers(const Arguments& arguments) {
  for (const char* const option : {"--overwrite", "--update", "--dir", "--new"}) {
    if (arguments.Has(option)) return false;
  }
  AddPackingSwitch("-keep");
  return true;
}

// The operands, and the names in the file of --files-from.
std::vector<std::string> WhatToAdd(const Arguments& arguments) {
  if (arguments.Has("--dir")) {
    arguments.AllowOperands(1);
    return {"."};
  }
  std::vector<std::string> words = arguments.OperandsFrom(1);
  if (!arguments.Has("--files-from")) {
    arguments.Operand(1, "PATH");
    return words;
  }
  const std::string list = arguments.Value("--files-from");
  std::string text;
  if (list == "-") {
    const std::vector<unsigned char> input = ReadStandardInput();
    text.assign(input.begin(), input.end());
  } else {
    std::ifstream file(CallPath(FromUtf8(list)), std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), {});
    if (!file) throw Failure(Visible(list) + ": can't read the list of paths");
  }
  const char end = arguments.Has("--null") ? '\0' : '\n';
  std::istringstream names(text);
  for (std::string name; std::getline(names, name, end);) {
    if (!name.empty()) words.push_back(name);
  }
  return words;
}

// Decides which files an archive already holds in their present state.  A folder counts if the
// archive has it at all.
class UpToDate {
 public:
  UpToDate(const std::string& archive, const std::string& name) {
    if (Exists(HostPath(archive))) members = std::make_shared<ArchiveReader>(archive, name);
  }
  bool operator()(const std::string& name, const FileState& state) const {
    const auto found = members ? members->FindExactly(name) : std::nullopt;
    return found && members->At(*found).Seconds() >= state.time;
  }

 private:
  std::shared_ptr<ArchiveReader> members;  // null if there is no archive
};

std::vector<FileGroup> SelectFiles(const Arguments& arguments, const std::string& name,
                                   const fs::path& archive) {
  const fs::path directory = FromUtf8(arguments.Value("--dir"));
  const bool keepsFacts = KeepsUnixFacts(arguments);
  SelectionRequest request = {
      .base = FromUtf8(arguments.Value("--dir", arguments.Value("-C", "."))),
      .words = WhatToAdd(arguments),
      .excludes = arguments.Values("--exclude"),
      .isOwnFile =
          [&, own = Inspect(archive).identity](const fs::path& path, const FileState& state) {
            return path.native() == archive.native() || state.identity.IsSame(own);
          },
      .links = keepsFacts ? LinkRule::Kept : LinkRule::Followed,
      .takesFolders = keepsFacts || arguments.Has("--dir")};
  if (arguments.Has("--new") && Exists(archive)) request.refusal = kOldStays;
  if (arguments.Has("--update")) request.isUpToDate = UpToDate(LibraryPath(archive), name);
  std::vector<FileGroup> groups = Select(request);
  if (!request.takesFolders) {
    for (FileGroup& group : groups) group.folders.clear();
  }
  return groups;
}

void PrintNames(const std::vector<FileGroup>& groups) {
  for (const FileGroup& group : groups) {
    for (const std::string& name : group.folders) PrintLine(VisibleLibraryName(name + '\\'));
    for (const std::string& name : group.names) PrintLine(VisibleLibraryName(name));
    for (const std::string& name : group.links) PrintLine(VisibleLibraryName(name));
  }
}

// What one line of the archiver adds: a selection of the library, and the rest in a list.
struct Line {
  explicit Line(const std::vector<FileGroup>& groups) {
    for (const FileGroup& group : groups) {
      bytes += group.bytes;
      files += group.names.size();
      std::vector<std::string> others = group.names;
      if (!find && !group.names.empty()) {
        others.clear();
        find = group.Find(others);
      }
      list.Add(group.base, others);
    }
    for (const FileGroup& group : groups) {
      list.Add(group.base, group.links);
      list.AddFolders(group.base, group.folders);
    }
  }

  std::uint64_t bytes = 0;
  std::size_t files = 0;
  std::optional<ZorFind> find;  // empty if there are only folders and links
  SourceList list;
};

void AddFiles(const Arguments& arguments, const std::string& name) {
  const fs::path own = WeaklyCanonical(FromUtf8(name));
  const bool replaces = arguments.Has("--new") && Exists(own);
  const std::vector<FileGroup> groups = SelectFiles(arguments, name, own);
  if (arguments.Has("--dry-run")) return PrintNames(groups);
  if (groups.empty()) return Remark(Visible(name) + ": up to date");
  const bool makesProgram = arguments.Has("--sfx");
  const std::string suffix = makesProgram ? ProgramSuffix(arguments) : "";
  if (makesProgram) RequireRoomForProgram(own, suffix);
  Line line(groups);
  Output output(name, arguments.Has("--new"), arguments.Value("--work-dir"));
  const bool keepsMembers = KeepMembers(arguments);
  const auto refuseClashes = [&] {
    if (keepsMembers && HasClashes(groups, output, name)) {
      throw Failure(kNothingAdded);
    }
  };
  const auto list = line.list.Pass(output.WorkDirectory());
  if (!line.find) {
    refuseClashes();
    AddListOnly(output.Path(), output.WorkDirectory(), name);
    return output.Commit();
  }
  Archive archive(line.bytes);
  archive.SetWorkDirectory(output.WorkDirectory().c_str());
  archive.SetOverwriteMode(1);
  const int done =
      archive.Compress(*line.find, output.Path().c_str(), output.Append(), makesProgram ? 1 : 0);
  if (!done && archive.GetError() == ZorErrorSameName) refuseClashes();
  archive.Require(done, name);
  if (!archive.RequireAll(line.files) && replaces) throw Failure(kOldStays);
  output.Commit(suffix);
  for (const FileGroup& group : groups) ReportChangedFiles(group);
}

void AddStandardInput(const Arguments& arguments, const std::string& name) {
  arguments.AllowOperands(1);
  const std::string memberName = arguments.Value("--stdin");
  if (!CanBeExpressed(FromUtf8('/' + memberName))) {
    throw UsageError("--stdin: " + Visible(memberName) + ": " + kUnnameable);
  }
  const std::vector<unsigned char> data = ReadStandardInput();
  Output output(name, arguments.Has("--new"), arguments.Value("--work-dir"));
  Archive archive;
  archive.SetWorkDirectory(output.WorkDirectory().c_str());
  archive.SetOverwriteMode(1);
  const bool keepsMembers = KeepMembers(arguments);
  const std::string member = MemberName(memberName);
  const int done = archive.CompressMem(output.Path().c_str(), member.c_str(), data.data(),
                                       static_cast<unsigned long>(data.size()), output.Append());
  if (!done && keepsMembers && archive.GetError() == ZorErrorSameName) {
    ComplainOfClash(member);
    throw Failure(kNothingAdded);
  }
  archive.Require(done, name);
  output.Commit();
}

void AddTo(const Arguments& arguments, const std::string& name) {
  if (arguments.Has("--stdin")) return AddStandardInput(arguments, name);
  AddFiles(arguments, name);
}

void Add(const Arguments& arguments) {
  arguments.Exclude("--dir", {"--stdin", "-C", "--files-from"});
  arguments.Exclude("--new", {"--update"});
  arguments.Exclude("--sfx", {"--unix"});
  arguments.Exclude("--stdin", {"--sfx", "--exclude", "-C", "--update", "--files-from", "--dry-run",
                                "--unix", "--no-unix"});
  arguments.Require("--for", "--sfx");
  arguments.Require("--null", "--files-from");
  SetUpPacking(arguments);
  const std::string& name = arguments.Operand(0, "ARCHIVE");
  if (name != "-") return AddTo(arguments, name);
  if (arguments.Has("--sfx"))
    throw UsageError("--sfx needs an archive on disk, not standard output");
  const TemporaryFolder folder;
  const fs::path archive = folder.Path() / "archive.lzh";
  AddTo(arguments, Shown(archive));
  if (Exists(archive)) CopyToStandardOutput(archive);
}

}  // namespace

const Command kAddCommand = {"add", "add files to an archive", kHelp, kOptions, Add};

}  // namespace kozor::program
