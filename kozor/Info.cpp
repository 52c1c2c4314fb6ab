// Info.cpp - kozor info: shows the header and the files of a backup volume.
#include <array>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Listing.h"
#include "Mask.h"
#include "VolumeReader.h"
#include "Volumes.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor info [OPTION]... VOLUME

Shows the header of a backup volume, and the files that begin on the volume:
size in bytes, last change, attributes, name.  VOLUME is a path, or a pattern
with # for all volumes of a set.

A volume other than the first begins with the rest of a file.  How long that is
follows from the volumes before it, which are read too if their names differ in
the number alone.
)";

void PrintHeader(const fs::path& path, const VolumeHeader& header) {
  PrintLine("Volume:        " + Visible(path.string()));
  PrintLine(std::string("Format:        ") + (header.formatVersion == 100 ? "1.00" : "1.01"));
  PrintLine("Number:        " + std::to_string(header.number));
  PrintLine("Files in set:  " + std::to_string(header.files));
  PrintLine("Identity:      " + Visible(header.id));
  PrintLine("Label:         " + Visible(header.label));
  PrintLine("Memo:          " + Visible(header.memo));
}

constexpr std::array<Option, 1> kOptions = {kExcludeOption};

// Prints the records that begin on the volume and returns how many there are.
std::int64_t PrintRecords(VolumeReader& volume, std::int64_t recordsLeft,
                          const MaskList& excludes) {
  std::int64_t count = 0;
  while (count < recordsLeft) {
    const std::optional<VolumeRecord> record = volume.Next();
    if (!record) break;
    ++count;
    if (excludes.Means(record->name)) continue;
    PrintLine(EntryLine(std::to_string(record->size), TimeText(record->time), record->attribute,
                        VisibleLibraryName(record->name)));
  }
  return count;
}

// Follows a set from its first volume on, because only a file's record head gives the position of
// the next one.
class SetReader {
 public:
  SetReader(const VolumeName& volumeName, const MaskList& leaveOut)
      : name(volumeName), excludes(leaveOut) {}

  // Reads the next volume of the set; prints it if `number` is its number, or 0.
  VolumeHeader Follow(int next, std::int64_t number) {
    const fs::path path = name.Path(next);
    VolumeReader volume(path);
    if (volume.Header().number != next) {
      throw Failure(Visible(path.string()) + ": another volume of the set");
    }
    if (next > 1 && !first.IsOfSameSet(volume.Header())) {
      throw Failure(Visible(path.string()) + ": a volume of another set");
    }
    if (next == 1) first = volume.Header();
    volume.Skip(carriedOver);
    if (number == 0 || number == next) {
      PrintHeader(path, volume.Header());
      recordsRead += PrintRecords(volume, first.files - recordsRead, excludes);
    } else {
      while (recordsRead < first.files && volume.Next()) ++recordsRead;
    }
    carriedOver = volume.BytesCarriedOver();
    return volume.Header();
  }

  bool AtEnd() const { return recordsRead >= first.files && carriedOver == 0; }

 private:
  const VolumeName& name;
  const MaskList& excludes;
  VolumeHeader first;
  std::int64_t recordsRead = 0;
  std::uint64_t carriedOver = 0;
};

void ShowSet(const VolumeName& name, const MaskList& excludes) {
  SetReader reader(name, excludes);
  int number = 0;
  do {
    if (number > 0) PrintLine("");
    reader.Follow(++number, 0);
  } while (!reader.AtEnd());
}

// The pattern for all volumes of the set, if `path` contains the volume's number.
std::string PatternOf(const fs::path& path, std::int64_t number) {
  std::string file = path.filename().string();
  const std::string digits = std::to_string(number);
  const std::size_t found = file.rfind(digits);
  if (found == std::string::npos) return "";
  return (path.parent_path() / FromUtf8(file.replace(found, digits.size(), "#"))).string();
}

void ShowVolume(const fs::path& path, const MaskList& excludes) {
  VolumeReader volume(path);
  const VolumeHeader& header = volume.Header();
  if (header.number == 1) {
    PrintHeader(path, header);
    PrintRecords(volume, header.files, excludes);
    return;
  }
  const std::string pattern = PatternOf(path, header.number);
  const VolumeName name(pattern);
  if (pattern.empty() || !Exists(name.Path(1))) {
    PrintHeader(path, header);
    Complain(Visible(path.string()) + ": its files can't be listed without the volumes before it");
    return;
  }
  SetReader reader(name, excludes);
  for (int next = 1; next <= header.number; ++next) reader.Follow(next, header.number);
}

void Info(const Arguments& arguments) {
  const VolumeName name(arguments.Operand(0, "VOLUME"));
  arguments.AllowOperands(1);
  const MaskList excludes(arguments.Values("--exclude"));
  if (name.IsPattern()) {
    ShowSet(name, excludes);
  } else {
    ShowVolume(name.Path(1), excludes);
  }
}

}  // namespace

const Command kInfoCommand = {"info", "show what is on a backup volume", kHelp, kOptions, Info};

}  // namespace kozor::program
