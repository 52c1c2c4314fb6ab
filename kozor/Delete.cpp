// Delete.cpp - kozor delete: deletes members from an archive.
#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Contents.h"
#include "Failure.h"
#include "Host.h"
#include "SourceList.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor delete [OPTION]... ARCHIVE MASK...

Deletes members from an LZH archive, all by one change.  A MASK is the name of a
member; a directory, with everything below it; or a name with * and ? in its
last component, which is matched in its directory and all below.  If one MASK
matches nothing, nothing is deleted.  An archive that loses its last member is
removed.
)";

constexpr std::array<Option, 2> kOptions = {{
    {"--exclude", "MASK", "keep files and directories of this name; may be\nrepeated"},
    kNamePageOption,
}};

// By position, the members that the words mean.  Throws Failure if one means nothing.
std::vector<bool> MeantByAny(const ArchiveReader& reader, const std::vector<std::string>& words,
                             const std::string& archiveName) {
  std::vector<bool> all(reader.Count());
  for (const std::string& word : words) {
    const std::vector<bool> meant = reader.Meant(word);
    if (std::find(meant.begin(), meant.end(), true) == meant.end()) {
      throw Failure(Visible(word) + ": no such member in " + Visible(archiveName) +
                    "; nothing was deleted");
    }
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = all[i] || meant[i];
  }
  return all;
}

// Keeps what is excluded, and the folders above it.
void KeepExcluded(const ArchiveReader& reader, const MaskList& excludes,
                  std::vector<bool>& deleted) {
  std::unordered_set<std::string> folders;
  for (std::size_t i = 0; i < deleted.size(); ++i) {
    const std::string name = reader.NameAt(i);
    if (!deleted[i] || !excludes.Means(name)) continue;
    deleted[i] = false;
    for (std::size_t end = name.find('\\'); end != name.npos; end = name.find('\\', end + 1)) {
      folders.insert(name.substr(0, end + 1));
    }
  }
  for (std::size_t i = 0; i < deleted.size(); ++i) {
    if (deleted[i] && folders.contains(reader.NameAt(i))) deleted[i] = false;
  }
}

// Passes the names to delete to the archiver; `list` stays empty if there are none.  Shown names
// hold neither quotes nor line ends.
void PassNames(const Arguments& arguments, const std::string& path, const std::string& archiveName,
               std::optional<NameList>& list) {
  const ArchiveReader reader(path, archiveName);
  std::vector<bool> deleted = MeantByAny(reader, arguments.OperandsFrom(1), archiveName);
  const MaskList excludes(arguments.Values("--exclude"));
  if (!excludes.Empty()) KeepExcluded(reader, excludes, deleted);
  if (std::find(deleted.begin(), deleted.end(), true) == deleted.end()) return;
  list.emplace(std::filesystem::temp_directory_path());
  for (std::size_t i = 0; i < deleted.size(); ++i) {
    if (deleted[i]) list->Add('"' + reader.NameAt(i) + "\"\n");
  }
  list->Pass();
}

void Delete(const Arguments& arguments) {
  ChooseNamePage(arguments);
  const std::string& name = arguments.Operand(0, "ARCHIVE");
  arguments.Operand(1, "MASK");
  const std::string path = LibraryPath(FromUtf8(name));
  std::optional<NameList> list;
  PassNames(arguments, path, name, list);
  if (!list) return Remark(Visible(name) + ": nothing to delete");
  // The archiver takes the names from the list.  The library wants a mask: an empty one means none.
  ZorFind find;
  find.AddTail("");
  Archive archive;
  archive.Require(archive.Delete(find, path.c_str()), name);
}

}  // namespace

const Command kDeleteCommand = {"delete", "delete members from an archive", kHelp, kOptions,
                                Delete};

}  // namespace kozor::program
