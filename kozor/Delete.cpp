// Delete.cpp - kozor delete: deletes members from an archive.
#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Contents.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor delete [OPTION]... ARCHIVE MASK...

Deletes members from an LZH archive.  A MASK is the name of a member; a
directory, with everything below it; or a name with * and ? in its last
component, which is matched in its directory and all below.  If one MASK matches
nothing, nothing is deleted.  An archive that loses its last member is removed.
)";

constexpr std::array<Option, 1> kOptions = {kNamePageOption};

// The masks for the archiver: a mask unchanged, a member's own name, or everything below a folder
// and then the folder.
std::vector<std::string> MasksFor(const std::string& word,
                                  const std::vector<const Member*>& meant) {
  std::string name = MemberName(word);
  std::vector<std::string> masks;
  for (const Member* member : meant) {
    if (member->kind == MemberKind::Link) masks.push_back(member->name);
  }
  if (HasWildcards(word)) {
    masks.insert(masks.begin(), name);
    return masks;
  }
  if (name.ends_with('\\')) name.pop_back();
  bool hasFilesBelow = false;
  for (const Member* member : meant) {
    if (member->kind == MemberKind::Link) continue;
    const std::size_t separator = member->kind == MemberKind::Folder ? 1 : 0;
    const bool isMeantItself = member->name.size() == name.size() + separator;
    if (isMeantItself) masks.push_back(member->name);
    hasFilesBelow = hasFilesBelow || (!isMeantItself && member->kind == MemberKind::File);
  }
  if (hasFilesBelow) masks.insert(masks.begin(), name + "\\*.*");
  return masks;
}

void Delete(const Arguments& arguments) {
  ChooseNamePage(arguments);
  const std::string& name = arguments.Operand(0, "ARCHIVE");
  arguments.Operand(1, "MASK");
  const std::string path = LibraryPath(FromUtf8(name));
  std::vector<std::string> masks;
  const std::vector<Member> members = ReadMembers(path, name);
  for (const std::string& word : arguments.OperandsFrom(1)) {
    const std::vector<const Member*> meant = Meant(members, word);
    if (meant.empty()) {
      throw Failure(Visible(word) + ": no such member in " + Visible(name) +
                    "; nothing was deleted");
    }
    for (std::string& mask : MasksFor(word, meant)) masks.push_back(std::move(mask));
  }
  // One mask at a time: with several the library drops names that differ only in case.  It is no
  // error if an earlier mask has deleted a member, or the whole archive, already.
  Archive archive;
  for (std::size_t i = 0; i < masks.size() && Exists(HostPath(path)); ++i) {
    ZorFind find;
    find.AddTail(masks[i].c_str());
    const int deleted = archive.Delete(find, path.c_str());
    if (i > 0 && !deleted && archive.GetError() == ZorErrorEngine800F) continue;
    archive.Require(deleted, name + ": " + masks[i]);
  }
}

}  // namespace

const Command kDeleteCommand = {"delete", "delete members from an archive", kHelp, kOptions,
                                Delete};

}  // namespace kozor::program
