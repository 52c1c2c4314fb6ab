// Restore.cpp - kozor restore: restores the files of a backup set.
#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <optional>
#include <unordered_set>

#include "Catalogue.h"
#include "Commands.h"
#include "Console.h"
#include "Delivery.h"
#include "DeliveryLine.h"
#include "Failure.h"
#include "Host.h"
#include "Mask.h"
#include "Salvage.h"
#include "Volumes.h"
#include "platform/base/Clock.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor restore [OPTION]... VOLUME [-d DIRECTORY] [MASK]...

Restores files of a backup set; without a MASK, all of them.  VOLUME is a path
or a pattern with #, as in "kozor backup".  Volumes of another set than the
first one are refused.  A MASK is the name of a file or directory, with * and ?
in its last component if need be; without a directory before it, it is matched
everywhere.

With the set's catalogue beside the volumes (see "kozor backup"), only the
volumes that hold the wanted files are needed, files that have changed since the
backup are refused, and permissions, symbolic links and empty directories are
restored.  A link that leads out of DIRECTORY is restored as what it led to.
)";

constexpr auto kOptions = Join(
    kDeliveryOptions, std::array<Option, 1>{{{"--continue", "",
                                              "if a volume is missing, restore those files of the\n"
                                              "others that can be identified without it"}}});

class RestoreVolumes : public Volumes {
 public:
  RestoreVolumes(const VolumeName& name, const MaskList& chosen, const MaskList& leaveOut,
                 Delivery& target)
      : Volumes(name), masks(chosen), excludes(leaveOut), delivery(target) {}

 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    // The areas checked last belong to the volume that has been accepted.
    if (param.volume == 1 && !setAreas) {
      setAreas = areas;
      SetTitle((*setAreas)[1]);
    }
    const bool restored = param.fileName != nullptr && *param.fileName != '\0';
    if (param.phase == PhaseFileEnd && restored) Deliver();
    const int stop = Volumes::OnAbort(param);
    const bool isInFile = param.phase == PhaseVolume && param.bytesDone < param.bytesTotal;
    if (param.phase == PhaseVolume && stop == 0) {
      NoteSizes(param.volume + 1, isInFile ? param.bytesTotal - param.bytesDone : 0);
    }
    return stop;
  }

  int OnCheckVolume(int kind, const unsigned char* data, int length) override {
    std::string& area = areas.at(static_cast<std::size_t>(kind));
    area.assign(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    return !setAreas || area == setAreas->at(static_cast<std::size_t>(kind)) ? 1 : 0;
  }

  // Every file is first written to the work folder.
  CString OnMakeFileName(const char* /*destination*/, const char* name) override {
    currentName = name;
    std::optional<std::uint32_t> size;
    if (!sizes.empty()) {
      size = sizes.front();
      sizes.pop_front();
    }
    if (!masks.Empty() && !masks.Means(name)) return "";
    if (excludes.Means(name)) return "";
    try {
      order = delivery.Begin(name);
      workName = std::to_string(++made);
      if (size) delivery.Work().RequireRoom(*size);
      return delivery.Work().LibraryPathOf(workName).c_str();
    } catch (const FileFailure& failure) {
      Complain(VisibleLibraryName(currentName) + ": " + failure.what());
      return "";
    }
  }

 private:
  // The library ends a run when the disk is full.  So where the files that begin on a volume may
  // need more room than there is, the last one going on for up to 4 GiB, their sizes are read
  // first, and those that find none are left out one by one.
  void NoteSizes(int number, std::uint32_t bytesOfLast) {
    constexpr std::size_t kMostSizes = 1 << 20;
    constexpr std::uint64_t kMostBytes = 0xFFFFFFFF;
    sizes.clear();
    try {
      VolumeReader volume(volumeName.Path(number));
      if (volume.Size() + kMostBytes <= delivery.FreeBytes()) return;
      volume.Skip(bytesOfLast);
      while (const std::optional<VolumeRecord> record = volume.Next()) {
        if (sizes.size() == kMostSizes) return sizes.clear();
        sizes.push_back(record->size);
      }
    } catch (const Failure&) {  // the library will say what is wrong with the volume
    }
  }

  void Deliver() {
    WorkFolder& work = delivery.Work();
    try {
      const std::optional<Occupant> file = LookAt(work.Directory(), workName);
      if (!file) throw FileFailure("the file has vanished");
      delivery.Deliver({currentName, file->size, file->time}, workName, order);
      // A set keeps whole seconds.
      if (file->nanoseconds != 0) throw FileFailure("restored, but its time can't be set");
    } catch (const FileFailure& failure) {
      Complain(VisibleLibraryName(currentName) + ": " + failure.what());
      work.Remove(workName);
    }
  }

  const MaskList& masks;
  const MaskList& excludes;
  Delivery& delivery;
  std::array<std::string, 3> areas;                    // of the volume checked last
  std::optional<std::array<std::string, 3>> setAreas;  // of the first volume accepted
  std::deque<std::uint32_t> sizes;  // of the volume's next files, if they may not all find room
  std::string workName;             // of the current file
  Order order;                      // of the current file
  std::uint64_t made = 0;
};

// Restores by a catalogue, one file at a time.
class CatalogueRestore {
 public:
  CatalogueRestore(const Catalogue& known, const VolumeName& volumeName, Delivery& target,
                   Destination::Links linksRule)
      : catalogue(known),
        name(volumeName),
        delivery(target),
        linkRule(linksRule),
        progress(known.TotalBytes()),
        line(target, [this](const Item& item) {
          progress.FileEnds(item.size);
          Mention(item.name);
        }) {}

  // `wanted` returns whether a name is selected.
  template <typename Wanted>
  void Run(Wanted wanted, bool goesOn) {
    FindLinks(wanted);
    for (const CatalogueFolder& folder : catalogue.folders) {
      if (wanted(folder.name)) Try(folder.name, [&] { delivery.MakeFolder(folder.name); });
    }
    try {
      for (const CatalogueFile& file : catalogue.files) {
        StopIfAsked();
        if (!wanted(file.name) || LiesBelowLink(file.name)) continue;
        if (!goesOn) Volume(file.volume);
        Try(file.name, [&] { RestoreFile(file, goesOn); });
      }
    } catch (...) {
      line.Finish();
      throw;
    }
    line.Finish();
    for (const auto& [linkName, found] : links) {
      const CatalogueLink& link = *found;
      const Item item = {linkName, 0, link.time};
      Try(linkName, [&] { delivery.MakeLink(item, link.target, FileTimeOfUnix(link.time)); });
    }
    for (auto folder = catalogue.folders.rbegin(); folder != catalogue.folders.rend(); ++folder) {
      if (!wanted(folder->name)) continue;
      Try(folder->name,
          [&] { delivery.FinishFolder(folder->name, folder->mode, FileTimeOfUnix(folder->time)); });
    }
    HideProgress();
  }

 private:
  struct MissingVolume : Failure {
    using Failure::Failure;
  };

  template <typename Step>
  static void Try(const std::string& itemName, Step step) {
    try {
      step();
    } catch (const FileFailure& failure) {
      Complain(VisibleLibraryName(itemName) + ": " + failure.what());
    }
  }

  // A link is restored as a link if its target is in the set too, if nothing was stored of it, or
  // if links may lead anywhere.  Any other becomes a file, or a folder of files.
  template <typename Wanted>
  void FindLinks(Wanted wanted) {
    const std::unordered_set<std::string> stored = StoredNames();
    for (const CatalogueLink& link : catalogue.links) {
      if (!wanted(link.name)) continue;
      const fs::path own = HostName(link.name);
      const fs::path target = (own.parent_path() / FromUtf8(link.target)).lexically_normal();
      if (linkRule == Destination::Links::MayLeadOut || !stored.contains(own.generic_string()) ||
          stored.contains(target.generic_string())) {
        links[link.name] = &link;
      }
    }
  }

  // The names of all files and folders, and of the folders that they are in.
  std::unordered_set<std::string> StoredNames() const {
    std::unordered_set<std::string> names;
    const auto add = [&](const std::string& libraryName) {
      for (fs::path path = HostName(libraryName); !path.empty(); path = path.parent_path()) {
        if (!names.insert(path.generic_string()).second) break;
      }
    };
    for (const CatalogueFile& file : catalogue.files) add(file.name);
    for (const CatalogueFolder& folder : catalogue.folders) add(folder.name);
    return names;
  }

  bool LiesBelowLink(const std::string& fileName) const {
    if (links.empty()) return false;
    for (std::size_t end = fileName.find('\\');; end = fileName.find('\\', end + 1)) {
      if (links.contains(fileName.substr(0, end))) return true;
      if (end == std::string::npos) return false;
    }
  }

  void RestoreFile(const CatalogueFile& file, bool goesOn) {
    const Item item = {file.name, file.bytes, file.time};
    std::optional<Order> order = delivery.Wants(item);
    if (!order) return;
    const FileFacts facts = {file.mode, FileTimeOfUnix(file.time), file.attribute};
    line.Add(item, *std::move(order), facts,
             [&](std::span<unsigned char> contents) { ReadFile(file, contents, goesOn); });
  }

  void ReadFile(const CatalogueFile& file, std::span<unsigned char> contents, bool goesOn) {
    Sha256 sum;
    std::uint64_t offset = file.offset;
    for (int number = file.volume; !contents.empty(); ++number) {
      VolumeReader& volume = VolumeFor(number, goesOn);
      if (number != file.volume) offset = volume.PayloadOffset();
      if (offset > volume.Size()) throw FileFailure(kChanged + std::to_string(number));
      const auto here = contents.first(static_cast<std::size_t>(
          std::min<std::uint64_t>(contents.size(), volume.Size() - offset)));
      try {
        volume.Read(offset, here);
      } catch (const Failure&) {
        throw FileFailure(kChanged + std::to_string(number));
      }
      sum.Add(here);
      contents = contents.subspan(here.size());
      progress.Running(file.bytes - contents.size(), file.name);
      StopIfAsked();
    }
    if (!file.sha256.empty() && sum.Finish() != file.sha256) {
      throw FileFailure(kChanged + std::to_string(file.volume) + " or after it");
    }
  }

  VolumeReader& VolumeFor(int number, bool goesOn) {
    try {
      return Volume(number);
    } catch (const MissingVolume& missing) {
      if (!goesOn) throw;
      throw FileFailure("lost with " + std::string(missing.what()));
    }
  }

  VolumeReader& Volume(int number) {
    if (openVolume && volumeNumber == number) return *openVolume;
    openVolume.reset();
    const fs::path path = name.Path(number);
    const std::string wanted =
        Visible(path.string()) + ": volume " + std::to_string(number) + " is needed, but ";
    try {
      openVolume.emplace(path);
    } catch (const Failure&) {
      throw MissingVolume(wanted + ReasonText(ZorMultiVolume::VolumeNoOpen));
    }
    if (IdentityOf(openVolume->Header()) != catalogue.identity) {
      openVolume.reset();
      throw MissingVolume(wanted + ReasonText(ZorMultiVolume::VolumeBadIdentity));
    }
    if (openVolume->Header().number != number) {
      openVolume.reset();
      throw MissingVolume(wanted + ReasonText(ZorMultiVolume::VolumeWrongNumber));
    }
    volumeNumber = number;
    return *openVolume;
  }

  static inline const std::string kChanged = "changed since it was stored, on volume ";

  const Catalogue& catalogue;
  const VolumeName& name;
  Delivery& delivery;
  const Destination::Links linkRule;
  Progress progress;
  std::map<std::string, const CatalogueLink*> links;  // restored as links
  std::optional<VolumeReader> openVolume;
  int volumeNumber = 0;
  DeliveryLine line;
};

// The catalogue, if there is one for this set and all volumes are accessible at once.
std::optional<Catalogue> UsableCatalogue(const VolumeName& name) {
  std::optional<Catalogue> catalogue = ReadCatalogue(CataloguePath(name));
  if (!catalogue || (!name.IsPattern() && catalogue->volumes.size() > 1)) return std::nullopt;
  try {
    if (IdentityOf(VolumeReader(name.Path(1)).Header()) != catalogue->identity) {
      Remark(Visible(CataloguePath(name).string()) + ": belongs to another set; not used");
      return std::nullopt;
    }
  } catch (const Failure&) {
    // The first volume is missing.
  }
  return catalogue;
}

void Restore(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "VOLUME"));
  const DeliveryRules rules = ReadDeliveryRules(arguments);
  const MaskList masks(arguments.OperandsFrom(1));
  const MaskList excludes(arguments.Values("--exclude"));
  Delivery delivery(AbsolutePath(arguments.Value("-d", ".")), rules);
  const bool goesOn = arguments.Has("--continue");
  std::optional<Catalogue> catalogue = UsableCatalogue(name);
  if (!catalogue && goesOn && name.IsPattern()) catalogue = SalvageCatalogue(name);
  if (catalogue) {
    const auto wanted = [&](const std::string& file) {
      return (masks.Empty() || masks.Means(file)) && !excludes.Means(file);
    };
    CatalogueRestore(*catalogue, name, delivery, rules.links).Run(wanted, goesOn);
  } else {
    if (goesOn) Remark("--continue has no effect: there is no catalogue, and VOLUME has no #");
    RestoreVolumes volumes(name, masks, excludes, delivery);
    // OnMakeFileName decides where each file goes, but the library requires a directory.
    volumes.Require(volumes.Restore(nullptr, "C:\\"));
  }
  for (const std::string& mask : masks.Unused()) {
    Complain(VisibleLibraryName(mask) + ": no such file in the set");
  }
}

}  // namespace

const Command kRestoreCommand = {
    "restore", "restore files of a backup set", kHelp, kOptions, Restore, kDeliveryHelp};

}  // namespace kozor::program
