// Restore.cpp - kozor restore: the files of a backup set.
#include <array>
#include <optional>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Mask.h"
#include "TargetGuard.h"
#include "Volumes.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor restore [OPTION...] VOLUME [-d DIRECTORY] [MASK...]

Brings the files of a backup set back; existing files are replaced.

VOLUME is the path of every volume, or a pattern with # for the number, as in
"kozor backup".  Volumes of another set than the first one are refused.

A MASK is the name of a file or folder, with * and ? in its last part if need be;
without a folder in front it is looked for everywhere.  Without a MASK every file
is restored.  A file whose name leads out of DIRECTORY is refused, and the exit
code is 1.

Options:
  -d DIRECTORY      restore below this directory; the current one if absent
  --allow-outside   restore files that lead out of DIRECTORY, too
)";

constexpr Option kOptions[] = {{"-d", true}, {"--allow-outside", false}};

class RestoreVolumes : public Volumes {
 public:
  RestoreVolumes(const VolumeName& name, const MaskList& maskList, const fs::path& destination,
                 bool allowOutside)
      : Volumes(name), masks(maskList) {
    if (!allowOutside) guard.emplace(destination);
  }

  // What a signal has cut short holds the beginning of its file only.
  void RemoveUnfinished() const {
    std::error_code ignored;
    if (StopSignal() != 0 && !unfinished.empty()) fs::remove(HostPath(unfinished), ignored);
  }

 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    // The areas seen last are those of the volume that has been taken.
    if (param.volume == 1 && !setAreas) setAreas = areas;
    if (param.phase == PhaseFileRunning) unfinished = param.fileName;
    if (param.phase == PhaseFileEnd) unfinished.clear();
    return Volumes::OnAbort(param);
  }

  int OnCheckVolume(int kind, const unsigned char* data, int length) override {
    std::string& area = areas.at(static_cast<std::size_t>(kind));
    area.assign(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    return !setAreas || area == setAreas->at(static_cast<std::size_t>(kind)) ? 1 : 0;
  }

  CString OnMakeFileName(const char* destination, const char* name) override {
    if (!masks.Empty() && !masks.Means(name)) return "";
    const std::string refusal = guard ? guard->Refusal(name) : "";
    if (refusal.empty()) return ZorMultiVolume::OnMakeFileName(destination, name);
    Complain(VisibleLibraryName(name) + ": refused: " + Visible(refusal));
    return "";
  }

 private:
  const MaskList& masks;
  std::optional<TargetGuard> guard;
  std::array<std::string, 3> areas;                    // of the volume looked at last
  std::optional<std::array<std::string, 3>> setAreas;  // of the first volume taken
  std::string unfinished;                              // target path
};

void Restore(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "the volume"));
  const MaskList masks(arguments.OperandsFrom(1));
  const fs::path directory = AbsolutePath(arguments.Value("-d", "."));
  RestoreVolumes volumes(name, masks, directory, arguments.Has("--allow-outside"));
  const int restored = volumes.Restore(nullptr, LibraryPath(directory).c_str());
  if (!restored) volumes.RemoveUnfinished();
  volumes.Require(restored);
  for (const std::string& mask : masks.Unused()) {
    Complain(VisibleLibraryName(mask) + ": no such file in the set");
  }
}

}  // namespace

const Command kRestoreCommand = {"restore", "bring the files of a backup set back", kHelp, kOptions,
                                 Restore};

}  // namespace kozor::program
