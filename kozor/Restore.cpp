// Restore.cpp - kozor restore: the files of a backup set.
#include <array>
#include <optional>

#include "Commands.h"
#include "Console.h"
#include "Delivery.h"
#include "Failure.h"
#include "Host.h"
#include "Mask.h"
#include "Volumes.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor restore [OPTION...] VOLUME [-d DIRECTORY] [MASK...]

Brings the files of a backup set back.

VOLUME is the path of every volume, or a pattern with # for the number, as in
"kozor backup".  Volumes of another set than the first one are refused.

A MASK is the name of a file or folder, with * and ? in its last part if need be;
without a folder in front it is looked for everywhere.  Without a MASK every file
is restored.

)";

class RestoreVolumes : public Volumes {
 public:
  RestoreVolumes(const VolumeName& name, const MaskList& chosen, const MaskList& leaveOut,
                 Delivery& target)
      : Volumes(name), masks(chosen), excludes(leaveOut), delivery(target) {}

 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    // The areas seen last are those of the volume that has been taken.
    if (param.volume == 1 && !setAreas) {
      setAreas = areas;
      SetTitle((*setAreas)[1]);
    }
    const bool restored = param.fileName != nullptr && *param.fileName != '\0';
    if (param.phase == PhaseFileEnd && restored) Deliver();
    return Volumes::OnAbort(param);
  }

  int OnCheckVolume(int kind, const unsigned char* data, int length) override {
    std::string& area = areas.at(static_cast<std::size_t>(kind));
    area.assign(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    return !setAreas || area == setAreas->at(static_cast<std::size_t>(kind)) ? 1 : 0;
  }

  // Every file is made in the work folder first.
  CString OnMakeFileName(const char* /*destination*/, const char* name) override {
    currentName = name;
    if (!masks.Empty() && !masks.Means(name)) return "";
    if (excludes.Means(name)) return "";
    try {
      delivery.Begin(name);
      workName = std::to_string(++made);
      return delivery.Work().LibraryPathOf(workName).c_str();
    } catch (const FileFailure& failure) {
      Complain(VisibleLibraryName(currentName) + ": " + failure.what());
      return "";
    }
  }

 private:
  void Deliver() {
    WorkFolder& work = delivery.Work();
    try {
      const std::optional<Occupant> file = LookAt({work.Directory(), workName, {}});
      if (!file) throw FileFailure("the file has vanished");
      delivery.Deliver({currentName, file->size, file->time}, workName);
    } catch (const FileFailure& failure) {
      Complain(VisibleLibraryName(currentName) + ": " + failure.what());
    }
    work.Remove(workName);
  }

  const MaskList& masks;
  const MaskList& excludes;
  Delivery& delivery;
  std::array<std::string, 3> areas;                    // of the volume looked at last
  std::optional<std::array<std::string, 3>> setAreas;  // of the first volume taken
  std::string workName;                                // of the file at hand
  std::uint64_t made = 0;
};

void Restore(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "the volume"));
  const DeliveryRules rules = ReadDeliveryRules(arguments);
  const MaskList masks(arguments.OperandsFrom(1));
  const MaskList excludes(arguments.Values("--exclude"));
  Delivery delivery(AbsolutePath(arguments.Value("-d", ".")), rules);
  RestoreVolumes volumes(name, masks, excludes, delivery);
  // The destination counts for names that the work folder's take the place of.
  volumes.Require(volumes.Restore(nullptr, "C:\\"));
  for (const std::string& mask : masks.Unused()) {
    Complain(VisibleLibraryName(mask) + ": no such file in the set");
  }
}

}  // namespace

const Command kRestoreCommand = {"restore", "bring the files of a backup set back", kHelp,
                                 kDeliveryOptions, Restore};

}  // namespace kozor::program
