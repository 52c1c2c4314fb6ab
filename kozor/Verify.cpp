// Verify.cpp - kozor verify: checks a backup set against its checksums and catalogue.
#include <fstream>
#include <unordered_map>

#include "Catalogue.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Mask.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor verify [OPTION]... VOLUME

Reads every volume of a backup set, and compares it with its checksum and with
the catalogue (see "kozor backup").  Names each volume and file that has changed
or is missing; the exit status is 1 then.  Without checksums, only the structure
of the volumes is checked.  VOLUME is a path or a pattern with #, as in "kozor
backup".
)";

constexpr std::array<Option, 2> kOptions = {{
    {"-C", "BASE", "also compare the stored files with those below BASE"},
    {"--exclude", "MASK", "leave such files and directories out of what -C compares"},
}};

class Verification {
 public:
  explicit Verification(const VolumeName& volumeName)
      : name(volumeName), known(ReadCatalogue(CataloguePath(volumeName))) {}

  void Run() {
    const int before = Complaints();
    while (!scanner.AtEnd() && ScanNext()) {
    }
    if (known) CompareFiles();
    if (!hadSums && Complaints() == before) {
      Remark("there are no checksums beside the volumes; only their structure was checked");
    }
  }

  void CompareWith(const fs::path& base, const MaskList& excludes) {
    for (const CatalogueFile& file : scanner.Result().files) {
      StopIfAsked();
      if (excludes.Means(file.name)) continue;
      const std::string shown = VisibleLibraryName(file.name);
      const fs::path path = base / HostName(file.name);
      const FileState state = Inspect(path);
      if (!state.problem.empty() || state.isDirectory) {
        Complain(shown + ": missing below " + Visible(base.string()));
      } else if (state.version.size != file.bytes || SumOf(path) != file.sha256) {
        Complain(shown + ": differs from the file below " + Visible(base.string()));
      }
    }
  }

  void PrintResult() const {
    const std::size_t files = scanner.Result().files.size();
    const std::size_t volumes = scanner.Result().volumes.size();
    PrintLine(std::to_string(files) + (files == 1 ? " file" : " files") + " on " +
              std::to_string(volumes) + (volumes == 1 ? " volume" : " volumes") +
              (Complaints() == 0 ? " OK" : ", not all OK"));
  }

 private:
  // Returns whether to go on.
  bool ScanNext() {
    const auto number = static_cast<int>(scanner.Result().volumes.size()) + 1;
    const fs::path path = name.Path(number);
    if (number > 1 && !name.IsPattern() && !NextMedium(path, number)) return false;
    try {
      scanner.Scan(path);
    } catch (const Failure& failure) {
      Complain(failure.what());
      return false;
    }
    CompareVolume(scanner.Result().volumes.back(), path);
    return true;
  }

  static bool NextMedium(const fs::path& path, int number) {
    const std::string wanted =
        Visible(path.string()) + ": volume " + std::to_string(number) + " is needed";
    std::string answer;
    if (CanAsk() &&
        AskUser(wanted + ".\nInsert its medium and press Enter, or q and Enter to quit:", answer) &&
        !answer.starts_with('q')) {
      return true;
    }
    StopIfAsked();
    Complain(wanted);
    return false;
  }

  void CompareVolume(const CatalogueVolume& volume, const fs::path& path) {
    std::optional<std::string> sum = ReadChecksum(path);
    const auto index = static_cast<std::size_t>(volume.number - 1);
    if (!sum && known && index < known->volumes.size()) sum = known->volumes[index].sha256;
    if (!sum) return;
    hadSums = true;
    if (*sum != volume.sha256) Complain(Visible(path.string()) + ": changed since it was written");
  }

  void CompareFiles() {
    hadSums = true;
    std::unordered_map<std::string, const CatalogueFile*> found;
    for (const CatalogueFile& file : scanner.Result().files) found[file.name] = &file;
    for (const CatalogueFile& file : known->files) {
      const auto now = found.find(file.name);
      const std::string where = " on volume " + std::to_string(file.volume);
      if (now == found.end() || now->second->sha256.empty()) {
        Complain(VisibleLibraryName(file.name) + ": missing or incomplete" + where);
      } else if (now->second->sha256 != file.sha256) {
        Complain(VisibleLibraryName(file.name) + ": changed" + where);
      }
    }
  }

  static std::string SumOf(const fs::path& path) {
    Sha256 sum;
    std::ifstream file(CallPath(path), std::ios::binary);
    std::vector<unsigned char> block(1 << 16);
    while (file.read(reinterpret_cast<char*>(block.data()),
                     static_cast<std::streamsize>(block.size())) ||
           file.gcount() > 0) {
      sum.Add(std::span(block).first(static_cast<std::size_t>(file.gcount())));
    }
    return file.eof() ? sum.Finish() : "";
  }

  const VolumeName& name;
  const std::optional<Catalogue> known;
  SetScanner scanner;
  bool hadSums = false;
};

void Verify(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "VOLUME"));
  arguments.AllowOperands(1);
  arguments.Require("--exclude", "-C");
  Verification verification(name);
  verification.Run();
  if (arguments.Has("-C")) {
    verification.CompareWith(AbsolutePath(arguments.Value("-C")),
                             MaskList(arguments.Values("--exclude")));
  }
  verification.PrintResult();
}

}  // namespace

const Command kVerifyCommand = {"verify", "check a backup set against its checksums", kHelp,
                                kOptions, Verify};

}  // namespace kozor::program
