// Backup.cpp - kozor backup: files over several volumes.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string_view>
#include <unordered_map>

#include "Catalogue.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Selection.h"
#include "VolumeFollower.h"
#include "VolumeReader.h"
#include "Volumes.h"
#include "WorkFolder.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor backup [OPTION]... VOLUME [-C BASE] PATH...

Backs files up, uncompressed, to a set of one or more volumes.

VOLUME is the path of every volume.  A # in its last component (set-#.vol)
stands for the volume's number.  Without a #, each volume is on a medium of its
own, and the program asks for the next medium when one is full.  A volume of
another set is replaced only if you agree (see --force); any other file is never
replaced.

Beside each volume goes its checksum (set-1.vol.sha256), and after the last one
a catalogue of the set (set-catalogue.vol.json), for "kozor verify" and "kozor
restore".  The catalogue also keeps what volumes can't: permissions, symbolic
links and empty directories.  The volumes hold what links lead to, for programs
that don't know the catalogue, unless you say --no-dereference.

PATH, BASE and --exclude are those of "kozor add", but either all files are
below BASE or none.
)";

constexpr std::array<Option, 11> kOptions = {{
    kBaseOption,
    kExcludeOption,
    {"--force", "", "replace volumes of other sets without asking"},
    {"--volume-size", "N",
     "largest volume in bytes, or with K, M or G after the\nnumber (default: all free space)"},
    {"--id", "TEXT", "identity of the set (default: a random one)"},
    {"--label", "TEXT", "label of the set, shown in questions"},
    {"--memo", "TEXT", "any text to keep with the set"},
    {"--format", "N", "format of the volumes: 101 (default), or 100 for older\nprograms"},
    {"--no-catalogue", "", "write neither checksums nor a catalogue"},
    {"--no-dereference", "",
     "keep symbolic links in the catalogue alone, and don't\nstore what they lead to"},
    {"--sync-each", "", "flush each write to the medium, not only each complete\nvolume"},
}};

// The identity and texts of a set.
struct Areas {
  std::string id;
  std::string label;
  std::string memo;
};

bool LiesBelowAny(const std::set<std::string, std::less<>>& names, std::string_view name) {
  for (std::size_t cut = name.find('\\'); cut != name.npos; cut = name.find('\\', cut + 1)) {
    if (names.contains(name.substr(0, cut))) return true;
  }
  return false;
}

class BackupVolumes : public Volumes {
 public:
  // Call after the last volume.  Writes the catalogue of the stored files, folders and links.
  void WriteCatalogue(const FileGroup& group) {
    FinishFollowing();
    while (!scanner.AtEnd()) ScanUpTo(static_cast<int>(scanner.Result().volumes.size()) + 1);
    Catalogue& catalogue = scanner.Result();
    const fs::path base = HostPath(group.base);
    std::unordered_map<std::string_view, unsigned int> modes;
    for (std::size_t i = 0; i < group.names.size(); ++i) modes[group.names[i]] = group.modes[i];
    for (CatalogueFile& file : catalogue.files) {
      file.mode = modes[file.name];
      if (file.time == 0) CheckTimeless(base, file.name);
    }
    const std::set<std::string, std::less<>> links(group.links.begin(), group.links.end());
    for (const std::string& name : group.folders) {
      if (LiesBelowAny(links, name)) continue;  // restored by way of the link
      const FileState state = LookAgain(base, name);
      catalogue.folders.push_back({name, state.time, state.mode});
    }
    for (const std::string& name : group.links) {
      try {
        const LinkState link = InspectLink(base / HostName(name));
        catalogue.links.push_back({name, link.target, link.time});
      } catch (const FileFailure& failure) {
        Complain(VisibleLibraryName(name) +
                 ": the link is not in the catalogue: " + failure.what());
      }
    }
    program::WriteCatalogue(catalogue, CataloguePath(volumeName));
  }

  BackupVolumes(const VolumeName& name, const Areas& setAreas, unsigned long maxVolumeBytes,
                int format, std::uint64_t totalBytes, bool replacesOtherSets, bool writesCatalogue)
      : Volumes(name, totalBytes),
        areas(setAreas),
        maxBytes(maxVolumeBytes),
        mostVolumes(format == 100 ? 65'535 : std::numeric_limits<int>::max()),
        mayReplace(replacesOtherSets),
        hasCatalogue(writesCatalogue) {
    SetTitle(areas.label);
    const auto set = [this](auto setter, const std::string& text) {
      (this->*setter)(reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
    };
    set(&BackupVolumes::SetAppricationID, areas.id);
    set(&BackupVolumes::SetVolume, areas.label);
    set(&BackupVolumes::SetMemo, areas.memo);
    SetBackupVersion(format);
  }

 protected:
  // The free space on the disk that holds the path now, independent of the mapped drives.
  unsigned long OnQueryDiskSpace(const char* path) override {
    unsigned long space = 0;
    UseOwnDrive(HostPath(path), [&](const std::string& onDrive) {
      space = ZorMultiVolume::OnQueryDiskSpace(onDrive.c_str());
    });
    const unsigned long kept = hasCatalogue ? std::min(space, kChecksumRoom) : 0;
    return std::min(maxBytes, space - kept);
  }

  // A volume is read back for its checksum while it is being written, at the latest before the
  // medium is changed.
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseVolume) {
      ScanUpTo(param.volume);
      if (param.volume == mostVolumes) return Stop(Visible(volumeName.Word()) + kTooManyVolumes);
    }
    if (param.phase == PhaseFileRunning || param.phase == PhaseFileEnd) Follow(param.volume);
    return Volumes::OnAbort(param);
  }

  // A volume of another set may be replaced if the user agrees, a volume just written never.
  std::string ObjectionTo(const ONABORTPARAM& param) override {
    const fs::path path = volumeName.Path(param.volume + 1);
    if (!Exists(path)) return "";
    const FileState state = Inspect(path);
    if (state.isDirectory || !state.problem.empty()) return kNoVolume;
    // Left by a run that was killed before its first write.
    if (state.version.size == 0) return "";
    try {
      const VolumeHeader header = VolumeReader(path).Header();
      const bool ours =
          header.id == areas.id && header.label == areas.label && header.memo == areas.memo;
      if (ours && header.number <= param.volume) {
        return "this is volume " + std::to_string(header.number) + " of the same set";
      }
      if (ours || mayReplace || MayReplace(path, header)) return "";
      return "volume " + std::to_string(header.number) + " of another set is in its place " +
             "(--force replaces it)";
    } catch (const Failure&) {
      return kNoVolume;
    }
  }

 private:
  static FileState LookAgain(const fs::path& base, const std::string& name) {
    FileState state = Inspect(base / HostName(name));
    if (!state.problem.empty()) {
      Complain(VisibleLibraryName(name) +
               ": its permission bits are not in the catalogue: " + state.problem);
    }
    return state;
  }

  // Files of 1970 and of times that the format has no room for are stored with the time 0.
  static void CheckTimeless(const fs::path& base, const std::string& name) {
    const FileState state = Inspect(base / HostName(name));
    if (state.time > 0 && state.time <= kLatestTime) {
      Complain(VisibleLibraryName(name) + ": stored without its time, which can't be read");
    }
  }

  void Follow(int number) {
    if (follower) return follower->NoteProgress();
    if (!hasCatalogue || triedToFollow == number) return;
    triedToFollow = number;
    follower = VolumeFollower::Start(scanner, volumeName.Path(number));
  }

  void FinishFollowing() {
    const std::unique_ptr<VolumeFollower> last = std::move(follower);
    if (!last) return;
    last->Finish();
    NoteScanned();
  }

  void NoteScanned() {
    const CatalogueVolume& volume = scanner.Result().volumes.back();
    WriteChecksum(volume, volumeName.Path(volume.number));
  }

  void ScanUpTo(int number) {
    if (!hasCatalogue) return;
    FinishFollowing();
    while (static_cast<int>(scanner.Result().volumes.size()) < number) {
      scanner.Scan(volumeName.Path(static_cast<int>(scanner.Result().volumes.size()) + 1));
      NoteScanned();
    }
  }

  // Later times are stored as 0, by the format.
  static constexpr std::int64_t kLatestTime = 0x7FFFFFFF;
  // Space for the checksum file of a volume.
  static constexpr unsigned long kChecksumRoom = 16 << 10;
  static constexpr const char* kTooManyVolumes =
      ": a set of format 100 has 65,535 volumes at most; choose larger ones, or --format 101";
  static constexpr const char* kNoVolume = "a file that isn't a volume is in its place";

  bool MayReplace(const fs::path& path, const VolumeHeader& header) {
    if (!CanAsk()) return false;
    std::string answer;
    const std::string question = Visible(path.string()) + " is volume " +
                                 std::to_string(header.number) + " of another set, labelled \"" +
                                 Visible(header.label) +
                                 "\".\nReplace it? [y]es, [n]o, [a]ll such volumes:";
    if (!AskUser(question, answer) || answer.empty()) return false;
    mayReplace = answer[0] == 'a';
    return mayReplace || answer[0] == 'y';
  }

  const Areas& areas;
  const unsigned long maxBytes;
  const int mostVolumes;  // whose numbers have room in the format
  bool mayReplace;
  const bool hasCatalogue;
  SetScanner scanner;
  std::unique_ptr<VolumeFollower> follower;  // of the volume that is being written, if it can be
  int triedToFollow = 0;                     // number of that volume
};

// Parses "--volume-size"; a volume can have at most 4 GiB - 1 bytes.
unsigned long ReadSize(const std::string& text) {
  constexpr std::uint64_t kMaxBytes = 0xFFFFFFFF;
  if (text.empty()) return kMaxBytes;
  std::uint64_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view unit(rest, static_cast<std::size_t>(text.data() + text.size() - rest));
  const unsigned int shift = unit == "G" ? 30 : unit == "M" ? 20 : unit == "K" ? 10 : 0;
  const bool unitKnown = shift > 0 || unit.empty();
  if (error != std::errc() || !unitKnown || number == 0 || number > kMaxBytes >> shift) {
    throw UsageError("--volume-size must be from 1 to 4294967295 bytes, not " + Visible(text));
  }
  return static_cast<unsigned long>(number << shift);
}

int ReadFormat(const std::string& text) {
  if (text == "100") return 100;
  if (text == "101") return 101;
  throw UsageError("--format must be 100 or 101, not " + Visible(text));
}

std::string UniqueIdentity() {
  std::random_device random;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "kozor-%08x%08x", random(), random());
  return text.data();
}

Areas ReadAreas(const Arguments& arguments, int format) {
  Areas areas{arguments.Has("--id") ? arguments.Value("--id") : UniqueIdentity(),
              arguments.Value("--label"), arguments.Value("--memo")};
  // Without these bytes the last volume of a set of format 1.00 can be too short to be read.
  constexpr std::size_t kLeastBytes = 7;
  const std::size_t bytes = areas.id.size() + areas.label.size() + areas.memo.size();
  if (format == 100 && bytes < kLeastBytes) areas.memo.append(kLeastBytes - bytes, ' ');
  constexpr std::size_t kMostBytes = 0xFFFF;
  if (std::max({areas.id.size(), areas.label.size(), areas.memo.size()}) > kMostBytes) {
    throw UsageError("--id, --label and --memo: at most 65535 bytes each");
  }
  return areas;
}

// With several masks the library drops names that differ only in case, and a set has only one
// selection.  In a folder of links to the files, one mask selects them all.
class LinkTree {
 public:
  explicit LinkTree(const FileGroup& group) {
    const fs::path root = folder.Path();
    const fs::path base = HostPath(group.base);
    for (const std::string& name : group.names) {
      const fs::path relative = HostName(name);
      MakeDirectories((root / relative).parent_path());
      fs::create_symlink(base / relative, root / relative);
    }
  }

  ZorFind Find() const {
    ZorFind find;
    find.SetCurrentDirectoryA(LibraryPath(folder.Path()).c_str());
    find.AddTail("*.*");
    return find;
  }

 private:
  TemporaryFolder folder;
};

// Whether a file is one of the set's volumes, checksums or the catalogue.
bool IsOwnFile(const VolumeName& name, const fs::path& catalogue, const fs::path& path) {
  if (name.Means(path) || path.native() == catalogue.native()) return true;
  return path.extension() == ".sha256" && name.Means(fs::path(path).replace_extension());
}

// A set can hold only one group of files.
FileGroup SelectForSet(const SelectionRequest& request) {
  std::vector<FileGroup> groups = Select(request);
  if (groups.size() > 1) {
    throw Failure("some files are below " + Visible(request.base.string()) +
                  " and some aren't; choose a base directory above them all (-C)");
  }
  return std::move(groups[0]);
}

// A file of the catalogue's name that is no catalogue is somebody else's.
void RequireCataloguePlace(const fs::path& path) {
  try {
    ReadCatalogue(path);
  } catch (const Failure&) {
    throw Failure(Visible(Shown(path)) + ": exists and isn't a catalogue (--force replaces " +
                  "it, --no-catalogue does without)");
  }
}

LinkRule LinksOf(const Arguments& arguments) {
  arguments.Exclude("--no-catalogue", {"--no-dereference"});
  if (arguments.Has("--no-catalogue")) return LinkRule::Followed;
  return arguments.Has("--no-dereference") ? LinkRule::Kept : LinkRule::Noted;
}

void Backup(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "VOLUME"));
  arguments.Operand(1, "PATH");
  const int format = ReadFormat(arguments.Value("--format", "101"));
  const Areas areas = ReadAreas(arguments, format);
  const unsigned long maxVolumeBytes = ReadSize(arguments.Value("--volume-size"));
  const fs::path catalogue = CataloguePath(name);
  const FileGroup group =
      SelectForSet({.base = FromUtf8(arguments.Value("-C", ".")),
                    .words = arguments.OperandsFrom(1),
                    .excludes = arguments.Values("--exclude"),
                    .isOwnFile = [&](const fs::path& path,
                                     const FileState&) { return IsOwnFile(name, catalogue, path); },
                    .links = LinksOf(arguments)});
  std::vector<std::string> others;
  ZorFind find = group.Find(others);
  std::optional<LinkTree> links;
  if (!others.empty()) find = links.emplace(group).Find();
  const bool hasCatalogue = !arguments.Has("--no-catalogue");
  if (hasCatalogue && !arguments.Has("--force")) RequireCataloguePlace(catalogue);
  BackupVolumes volumes(name, areas, maxVolumeBytes, format, group.bytes, arguments.Has("--force"),
                        hasCatalogue);
  if (!arguments.Has("--sync-each")) FlushFilesAtClose();
  volumes.Require(volumes.Backup(find, nullptr));
  volumes.RequireAll(group.names.size());
  if (hasCatalogue) volumes.WriteCatalogue(group);
  ReportChangedFiles(group);
}

}  // namespace

const Command kBackupCommand = {"backup", "back files up over several volumes", kHelp, kOptions,
                                Backup};

}  // namespace kozor::program
