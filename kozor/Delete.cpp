// Delete.cpp - kozor delete: members out of an archive.
#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor delete ARCHIVE MASK...

Deletes members from an LZH archive.  A MASK is a member's complete name, a
folder with a slash behind it, which stands for everything below it, or a name
with * and ? in its last part, which is looked for in all folders below.  When a
MASK means nothing, nothing is deleted.  An archive that has lost its last member
is removed.
)";

void Delete(const Arguments& arguments) {
  const std::string& name = arguments.Operand(0, "the archive");
  arguments.Operand(1, "what to delete");
  const std::string path = LibraryPath(name);
  RequireArchive(path, name);
  const std::vector<std::string> words = arguments.OperandsFrom(1);
  for (const std::string& word : words) {
    if (ForEachMember(path, name, MemberMask(word), [](const Member&) {}) == 0) {
      throw Failure(Visible(word) + ": no such member in " + Visible(name) +
                    "; nothing was deleted");
    }
  }
  // One mask at a time: of several the library would drop names that differ in case alone.  What an
  // earlier mask has deleted already, the archive itself perhaps, isn't missing.
  Archive archive;
  for (std::size_t i = 0; i < words.size() && Exists(HostPath(path)); ++i) {
    ZorFind find;
    find.AddTail(MemberMask(words[i]).c_str());
    const int deleted = archive.Delete(find, path.c_str());
    if (i > 0 && !deleted && archive.GetError() == ZorErrorEngine800F) continue;
    archive.Require(deleted, name + ": " + words[i]);
  }
}

}  // namespace

const Command kDeleteCommand = {"delete", "delete members from an archive", kHelp, {}, Delete};

}  // namespace kozor::program
