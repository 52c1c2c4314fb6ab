// Extract.cpp - kozor extract: members out of an archive into files.
#include <filesystem>
#include <optional>
#include <unordered_set>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Errors.h"
#include "Failure.h"
#include "Host.h"
#include "Mask.h"
#include "TargetGuard.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor extract [OPTION...] ARCHIVE [-d DIRECTORY] [MASK...]

Brings members of an LZH archive out into files; existing files are replaced.

Without a MASK everything is extracted.  A MASK is a member's name, a folder, or
a name with * and ? in its last part, which is looked for in all folders below.

A member whose name leads out of DIRECTORY (it begins at the root, or passes
through a link in DIRECTORY that leads elsewhere) is refused.  Damaged members
are named and the others extracted.  The exit code is 1 in both cases.

Options:
  -d DIRECTORY      extract below this directory; the current one if absent
  --exclude MASK    leave out members and folders of this name; may be repeated
  --allow-outside   extract members that lead out of DIRECTORY, too
)";

constexpr Option kOptions[] = {{"-d", true}, {"--exclude", true}, {"--allow-outside", false}};

// So many bad members, and the rest isn't worth the time.
constexpr int kMaxBadMembers = 100;

class Extraction : public Archive {
 public:
  Extraction(const fs::path& destination, const MaskList& leaveOut, bool allowOutside)
      : excludes(leaveOut) {
    if (!allowOutside) guard.emplace(destination);
  }

  // Extracts what one mask selects.  Returns whether it selected anything.
  bool Run(const std::string& archive, const std::string& name, const std::string& destination,
           const std::string& mask) {
    selectedAny = false;
    while (!Extract(archive.c_str(), destination.c_str(), mask.c_str())) {
      if (!selectedAny && GetError() == ZorErrorCanceled && StopSignal() == 0) return false;
      const bool othersMayWork = !unfinished.empty() && ConcernsOneFile(GetError());
      if (StopSignal() != 0 || !othersMayWork) RemoveUnfinished();
      if (StopSignal() != 0 || !othersMayWork || ++badMembers > kMaxBadMembers) Require(0, name);
      Complain(VisibleLibraryName(unfinishedName) + ": " + std::string(ErrorText(GetError())));
      done.insert(unfinishedName);
      unfinished.clear();
    }
    return true;
  }

 protected:
  // A member that an earlier mask has brought out, or that has failed, isn't tried again.
  CString OnMakeFileName(const char* directory, const char* name) override {
    unfinishedName = name;
    if (excludes.Means(name) || done.contains(name)) return "";
    const std::string refusal = guard ? guard->Refusal(name) : "";
    if (refusal.empty()) return ZorArchive::OnMakeFileName(directory, name);
    Complain(VisibleLibraryName(name) + ": refused: " + Visible(refusal));
    done.insert(name);
    return "";
  }

  int OnAbort(const ONABORTPARAM& param) override {
    selectedAny = selectedAny || param.phase != PhaseEnd;
    if (param.phase == PhaseFileBegin) unfinished = param.fileName;
    if (param.phase == PhaseFileEnd && !unfinished.empty()) {
      unfinished.clear();
      done.insert(unfinishedName);
    }
    return Archive::OnAbort(param);
  }

 private:
  // Where a run breaks off, the file in hand holds the beginning of its member at best.
  void RemoveUnfinished() const {
    std::error_code ignored;
    if (!unfinished.empty()) fs::remove(HostPath(unfinished), ignored);
  }

  const MaskList& excludes;
  std::optional<TargetGuard> guard;
  std::unordered_set<std::string> done;  // names of members, without a root
  std::string unfinishedName;
  std::string unfinished;  // target path of the member in hand, empty between members
  bool selectedAny = false;
  int badMembers = 0;
};

void Extract(const Arguments& arguments) {
  const std::string& name = arguments.Operand(0, "the archive");
  const std::string archive = LibraryPath(name);
  RequireArchive(archive, name);
  const fs::path directory = AbsolutePath(arguments.Value("-d", "."));
  std::vector<std::string> words = arguments.OperandsFrom(1);
  if (words.empty()) words = {"*.*"};
  const MaskList excludes(arguments.Values("--exclude"));
  Extraction extraction(directory, excludes, arguments.Has("--allow-outside"));
  const std::string destination = LibraryPath(directory);
  for (const std::string& word : words) {
    const bool found =
        extraction.Run(archive, name, destination, MemberMask(word)) ||
        (!HasWildcards(word) && extraction.Run(archive, name, destination, MemberMask(word + "/")));
    if (!found) Complain(Visible(word) + ": no such member in " + Visible(name));
  }
}

}  // namespace

const Command kExtractCommand = {"extract", "bring members of an archive out into files", kHelp,
                                 kOptions, Extract};

}  // namespace kozor::program
