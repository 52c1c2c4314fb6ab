// Extract.cpp - kozor extract: unpacks members into files.
#include <algorithm>
#include <span>
#include <unordered_set>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Delivery.h"
#include "DeliveryLine.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor extract [OPTION]... ARCHIVE [-d DIRECTORY] [MASK]...

Extracts members of an LZH archive; without a MASK, all of them.  A MASK is the
name of a member; a directory; or a name with * and ? in its last component,
which is matched in its directory and all below.  "-" as ARCHIVE is standard
input.
)";

constexpr std::array<Option, 3> kOwnOptions = {{
    {"--unwrap", "",
     "extract only the data fork of files in MacBinary, and\nonly the part of the data that the "
     "header marks as the\nfile, if it does"},
    {"--keep-setid", "",
     "restore set-uid, set-gid and sticky bits; the first\ntwo let others act with your rights"},
    kNamePageOption,
}};
constexpr auto kOptions = Join(kDeliveryOptions, kOwnOptions);

class Extraction {
 public:
  Extraction(Delivery& target, MemberReader& source, const Arguments& arguments)
      : delivery(target),
        reader(source),
        permissions(arguments.Has("--keep-setid") ? 07777 : 0777),
        unwraps(arguments.Has("--unwrap")),
        line(target, [](const Item& item) { Mention(VisibleLibraryName(item.name)); }) {}

  // Complains about members that can't be extracted.
  void Run(const std::vector<const Member*>& members) {
    try {
      ExtractAll(members);
    } catch (...) {
      line.Finish();
      throw;
    }
    line.Finish();
    Finish();
  }

 private:
  void ExtractAll(const std::vector<const Member*>& members) {
    CollectFolderNames(members);
    for (const Member* member : members) {
      StopIfAsked();
      try {
        Extract(*member);
      } catch (const FileFailure& failure) {
        Complain(VisibleLibraryName(member->name) + ": " + failure.what());
      }
    }
  }

  // The folders that the names of members lead through.
  void CollectFolderNames(const std::vector<const Member*>& members) {
    for (const Member* member : members) {
      std::string_view name = member->name;
      for (std::size_t end = name.rfind('\\'); end != name.npos && end != 0;
           end = name.rfind('\\', end - 1)) {
        if (!folderNames.insert(name.substr(0, end)).second) break;
      }
    }
  }

  void Extract(const Member& member) {
    switch (member.kind) {
      case MemberKind::File:
        return ExtractFile(member);
      case MemberKind::Folder:
        delivery.MakeFolder(member.name);
        folders.push_back(&member);
        return;
      case MemberKind::Link:
        links.push_back(&member);
        return;
      case MemberKind::Nameless:
        // Old UNIX programs lost the names of folders.
        if (member.packedBytes != 0) {
          throw FileFailure("not extracted: a member without a usable name");
        }
        return;
    }
  }

  void ExtractFile(const Member& member) {
    RequireUnpackable(member);
    // OS/2 programs stored a folder's extended attributes as a file of its name.
    if (folderNames.contains(member.name)) {
      throw FileFailure("not extracted: the archive has a folder of this name");
    }
    if (!unwraps) {
      return MakeFile(member, member.size,
                      [&](std::span<unsigned char> target) { reader.Unpack(member, target); });
    }
    const std::span<unsigned char> data = scratch.Get(member.size);
    reader.Unpack(member, data);
    const std::span<unsigned char> file = Unwrapped(member, data);
    MakeFile(member, file.size(),
             [&](std::span<unsigned char> target) { std::ranges::copy(file, target.begin()); });
  }

  // `fill` writes the contents.
  template <typename Fill>
  void MakeFile(const Member& member, std::uint64_t bytes, Fill fill) {
    const Item item = {member.name, bytes, member.Seconds()};
    std::optional<Order> order = delivery.Wants(item);
    if (!order) return;
    const FileFacts facts = {member.unixMode & permissions, member.lastWrite, member.attribute};
    line.Add(item, *std::move(order), facts, fill);
  }

  // Links come last, so that no file of the archive is written through one.  Folders get their
  // times and modes after their contents.
  void Finish() {
    for (const Member* link : links) {
      try {
        delivery.MakeLink({link->name, 0, link->Seconds()}, link->linkTarget, link->lastWrite);
      } catch (const FileFailure& failure) {
        Complain(VisibleLibraryName(link->name) + ": " + failure.what());
      }
    }
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
      delivery.FinishFolder((*folder)->name, (*folder)->unixMode & permissions,
                            (*folder)->lastWrite);
    }
  }

  Delivery& delivery;
  MemberReader& reader;
  const unsigned int permissions;  // the bits of a mode that are extracted
  const bool unwraps;
  ScratchMemory scratch;  // for members to unwrap
  std::unordered_set<std::string_view> folderNames;
  std::vector<const Member*> folders;
  std::vector<const Member*> links;
  DeliveryLine line;
};

void Extract(const Arguments& arguments) {
  const DeliveryRules rules = ReadDeliveryRules(arguments);
  ChooseNamePage(arguments);
  SourceArchive archive(arguments.Operand(0, "ARCHIVE"));
  const std::vector<Member> all = archive.TakeMembers();
  const std::vector<const Member*> members = Choose(
      all, arguments.OperandsFrom(1), MaskList(arguments.Values("--exclude")), archive.Name());
  Delivery delivery(AbsolutePath(arguments.Value("-d", ".")), rules);
  MemberReader reader(archive.Path(), archive.Name(), TotalBytes(members));
  Extraction(delivery, reader, arguments).Run(members);
}

}  // namespace

const Command kExtractCommand = {
    "extract", "extract members of an archive", kHelp, kOptions, Extract, kDeliveryHelp};

}  // namespace kozor::program
