// Extract.cpp - kozor extract: unpacks members into files.
#include <algorithm>
#include <span>

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
  Extraction(Delivery& target, ArchiveReader& archive, MemberReader& source,
             const Arguments& arguments)
      : delivery(target),
        headers(archive),
        reader(source),
        permissions(arguments.Has("--keep-setid") ? 07777 : 0777),
        unwraps(arguments.Has("--unwrap")),
        line(target, [](const Item& item) { Mention(item.name); }) {}

  // Extracts the members chosen by position.  Complains about those that can't be extracted.
  void Run(const std::vector<bool>& chosen) {
    try {
      ExtractAll(chosen);
    } catch (...) {
      line.Finish();
      throw;
    }
    line.Finish();
    Finish();
  }

 private:
  void ExtractAll(const std::vector<bool>& chosen) {
    const std::vector<bool> alsoFolders = headers.FilesNamedAsFolders(chosen);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
      if (!chosen[i]) continue;
      StopIfAsked();
      const Member member = headers.At(i);
      try {
        Extract(i, member, alsoFolders[i] ? AnotherName(member.name) : member.name);
      } catch (const FileFailure& failure) {
        Complain(VisibleLibraryName(member.name) + ": " + failure.what());
      }
    }
  }

  // OS/2 programs stored the extended attributes of a folder as a file of its name.
  static std::string AnotherName(const std::string& name) {
    std::string another = name + "~1";
    Remark(VisibleLibraryName(name) + ": extracted as " + VisibleLibraryName(another) +
           ", because the archive has a folder of this name");
    return another;
  }

  // `name` is that of the file, which may differ from the member's.
  void Extract(std::size_t position, const Member& member, const std::string& name) {
    switch (member.kind) {
      case MemberKind::File:
        return ExtractFile(member, name);
      case MemberKind::Folder:
        delivery.MakeFolder(member.name);
        folders.push_back(position);
        return;
      case MemberKind::Link:
        links.push_back(position);
        return;
      case MemberKind::Nameless:
        // Old UNIX programs lost the names of folders.
        if (member.packedBytes != 0) {
          throw FileFailure("not extracted: a member without a usable name");
        }
        return;
    }
  }

  void ExtractFile(const Member& member, const std::string& name) {
    RequireUnpackable(member);
    if (!unwraps) {
      return MakeFile(member, name, member.size,
                      [&](std::span<unsigned char> target) { reader.Unpack(member, target); });
    }
    const std::span<unsigned char> data = scratch.Get(member.size);
    reader.Unpack(member, data);
    const std::span<unsigned char> file = Unwrapped(member, data);
    MakeFile(member, name, file.size(),
             [&](std::span<unsigned char> target) { std::ranges::copy(file, target.begin()); });
  }

  // `fill` writes the contents.
  template <typename Fill>
  void MakeFile(const Member& member, const std::string& name, std::uint64_t bytes, Fill fill) {
    const Item item = {name, bytes, member.Seconds()};
    std::optional<Order> order = delivery.Wants(item);
    if (!order) return;
    const FileFacts facts = {member.unixMode & permissions, member.lastWrite, member.attribute};
    line.Add(item, *std::move(order), facts, fill);
  }

  // Links come last, so that no file of the archive is written through one.  Folders get their
  // times and modes after their contents.
  void Finish() {
    for (const std::size_t position : links) {
      const Member link = headers.At(position);
      try {
        delivery.MakeLink({link.name, 0, link.Seconds()}, link.linkTarget, link.lastWrite);
      } catch (const FileFailure& failure) {
        Complain(VisibleLibraryName(link.name) + ": " + failure.what());
      }
    }
    for (auto position = folders.rbegin(); position != folders.rend(); ++position) {
      const Member folder = headers.At(*position);
      delivery.FinishFolder(folder.name, folder.unixMode & permissions, folder.lastWrite);
    }
  }

  Delivery& delivery;
  ArchiveReader& headers;
  MemberReader& reader;
  const unsigned int permissions;  // the bits of a mode that are extracted
  const bool unwraps;
  ScratchMemory scratch;             // for members to unwrap
  std::vector<std::size_t> folders;  // positions
  std::vector<std::size_t> links;
  DeliveryLine line;
};

void Extract(const Arguments& arguments) {
  DeliveryRules rules = ReadDeliveryRules(arguments);
  rules.hint = " (kozor print shows the contents)";
  ChooseNamePage(arguments);
  SourceArchive archive(arguments.Operand(0, "ARCHIVE"));
  ArchiveReader& headers = archive.Reader();
  const std::vector<bool> chosen =
      headers.Choose(arguments.OperandsFrom(1), MaskList(arguments.Values("--exclude")));
  Delivery delivery(AbsolutePath(arguments.Value("-d", ".")), rules);
  MemberReader reader(archive.Path(), archive.Name(), headers.TotalBytes(chosen));
  Extraction(delivery, headers, reader, arguments).Run(chosen);
}

}  // namespace

const Command kExtractCommand = {
    "extract", "extract members of an archive", kHelp, kOptions, Extract, kDeliveryHelp};

}  // namespace kozor::program
