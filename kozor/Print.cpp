// Print.cpp - kozor print and kozor test: unpack members to standard output, or only verify them.
#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "WorkFolder.h"

namespace kozor::program {

namespace {

constexpr std::string_view kPrintHelp =
    R"(Usage: kozor print [OPTION]... ARCHIVE MEMBER...

Writes members of an LZH archive to standard output, in the order of the
archive.  A MEMBER is a name, a directory or a mask, as in "kozor extract".
Nothing of a damaged member is written.
)";

constexpr std::string_view kTestHelp =
    R"(Usage: kozor test [OPTION]... ARCHIVE [MASK]...

Unpacks members of an LZH archive in memory and compares their checksums.  Names
those that are damaged, and tells if the end mark is missing: the archive may
have been cut between two members.  The exit status is 1 in both cases.  A MASK
selects members as in "kozor extract"; without one, all are tested.
)";

constexpr std::array<Option, 2> kOptions = {{
    kExcludeOption,
    kNamePageOption,
}};

SourceArchive OpenArchive(const Arguments& arguments) {
  ChooseNamePage(arguments);
  return SourceArchive(arguments.Operand(0, "ARCHIVE"));
}

// Unpacks the chosen members one by one and passes each to `whole` after its checksum has been
// verified.
template <typename Whole>
std::size_t UnpackEach(SourceArchive& archive, const Arguments& arguments, Whole whole) {
  ArchiveReader& headers = archive.Reader();
  const std::vector<bool> chosen =
      headers.Choose(arguments.OperandsFrom(1), MaskList(arguments.Values("--exclude")));
  MemberReader reader(archive.Path(), archive.Name(), headers.TotalBytes(chosen));
  ScratchMemory scratch;
  std::size_t good = 0;
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (!chosen[i]) continue;
    StopIfAsked();
    const Member member = headers.At(i);
    if (member.kind != MemberKind::File) continue;
    try {
      RequireUnpackable(member);
      const std::span<unsigned char> contents = scratch.Get(member.size);
      reader.Unpack(member, contents);
      whole(member, contents);
      ++good;
    } catch (const FileFailure& failure) {
      Complain(Visible(archive.Name()) + ": " + VisibleLibraryName(member.name) + ": " +
               failure.what());
    }
  }
  return good;
}

void Print(const Arguments& arguments) {
  arguments.Operand(1, "MEMBER");
  SourceArchive archive = OpenArchive(arguments);
  UnpackEach(archive, arguments, [](const Member&, std::span<unsigned char> contents) {
    HideProgress();
    WriteStandardOutput(contents.data(), contents.size());
  });
}

void Test(const Arguments& arguments) {
  SourceArchive archive = OpenArchive(arguments);
  const std::size_t good = UnpackEach(
      archive, arguments,
      [](const Member& member, std::span<unsigned char>) { Mention(member.name, ": OK"); });
  const int bad = Complaints();
  HideProgress();
  PrintLine(std::to_string(good) + (good == 1 ? " file" : " files") + " OK" +
            (bad > 0 ? ", " + std::to_string(bad) + " not" : ""));
  if (!archive.Reader().HasEndMark()) {
    Complain(Visible(archive.Name()) +
             ": no end mark; the archive may have been cut, and further members lost");
  }
}

}  // namespace

const Command kPrintCommand = {"print", "write members to standard output", kPrintHelp, kOptions,
                               Print};
const Command kTestCommand = {"test", "check the members of an archive", kTestHelp, kOptions, Test};

}  // namespace kozor::program
