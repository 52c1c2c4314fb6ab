// Contents.h - the members of an archive, and their selection by the words of a command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Mask.h"
#include "WorkFolder.h"

namespace kozor::container {
class File;
}

namespace kozor::program {

enum class MemberKind { File, Folder, Link, Nameless };

struct Member {
  MemberKind kind = MemberKind::File;
  std::string name;        // in the library's form, with backslashes; a folder's ends in one
  std::string linkTarget;  // of a link, as stored, with '/'
  std::string comment;     // UTF-8; mostly empty
  std::string method;      // "-lh5-"
  int level = 0;           // of the header
  std::uint64_t size = 0;  // unpacked, in bytes
  std::uint64_t packedBytes = 0;
  std::optional<std::uint16_t> crc;
  std::uint64_t lastWrite = 0;      // 100 ns since 1601, UTC
  std::uint8_t attribute = 0;       // FILE_ATTRIBUTE_* bits
  unsigned int unixMode = 0;        // including the file type; 0 if not recorded
  std::uint32_t capsuleOffset = 0;  // of the file itself in the unpacked data, and its size, if the
  std::uint32_t capsuleBytes = 0;   // header tells them; else 0
  bool overclaims = false;          // its packed data can't unpack to this size
  bool damaged = false;             // its header or data is known to be damaged

  std::int64_t Seconds() const;  // last write since 1970
};

// Throws FileFailure for a member whose size shows that it can't be unpacked.  Call it before
// reserving space.
void RequireUnpackable(const Member& member);

// The file itself in a member's unpacked data: without the wrapper of a Macintosh program, and
// without what its header says stands round the file.  All of the data if there is neither.
std::span<unsigned char> Unwrapped(const Member& member, std::span<unsigned char> data);

// The members of an archive, one at a time.  The archive stays open, and only its index is in
// memory.  Throws Failure if it can't be read, isn't an archive, or is entirely damaged.
class ArchiveReader {
 public:
  // `archive` is a library path, `shownName` its name for messages.
  ArchiveReader(const std::string& archive, const std::string& shownName);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  std::size_t Count() const;
  // In the archive's order.  Reads the header, which is cheapest from the first to the last.
  Member At(std::size_t position);
  std::string NameAt(std::size_t position) const;
  // The last member or link of a name, which is a library path.
  std::optional<std::size_t> FindExactly(const std::string& member) const;
  // The one that a new member of this name would replace.
  std::optional<std::size_t> FindReplacedBy(const std::string& member) const;
  // By position, the members that a word of the command line selects:
  //
  //   docs/a.txt   the member of this name, or of one that differs only in case
  //   docs, docs/  everything below this folder, and the folder
  //   docs/*.txt   matching names in the folder docs and all folders below it
  //
  // A name that no member has exactly selects those that differ only in case.
  std::vector<bool> Meant(const std::string& word) const;
  // The members that any of the words selects, or all if there are no words, without superseded and
  // excluded ones.  A name that selects nothing else selects files of that name in any folder.
  // Complains about each word that selects nothing.
  std::vector<bool> Choose(const std::vector<std::string>& words, const MaskList& excludes) const;
  // The files whose names are also those of folders above chosen members.
  std::vector<bool> FilesNamedAsFolders(const std::vector<bool>& chosen) const;
  // The unpacked size of the chosen members in bytes.
  std::uint64_t TotalBytes(const std::vector<bool>& chosen) const;
  // Without one, members may have been cut off.
  bool HasEndMark() const;
  // How many members are damaged.
  std::size_t Damaged() const;

 private:
  struct Opened;

  const std::string path;
  const std::string name;
  std::unique_ptr<container::File> file;
  std::unique_ptr<Opened> opened;
};

// An archive to read, as the user names it.
//
// "-" is standard input, which is first copied to the directory for temporaries.  Complains about
// damage; damaged parts are listed as members.
class SourceArchive {
 public:
  explicit SourceArchive(std::string givenName);

  const std::string& Path() const { return path; }  // the library's
  const std::string& Name() const { return name; }
  ArchiveReader& Reader() { return *reader; }

 private:
  std::filesystem::path CopyPath();

  const std::string name;
  std::string path;
  std::optional<ArchiveReader> reader;
  std::optional<TemporaryFolder> copy;
};

// An option of every command that reads the names in an archive.
inline constexpr Option kNamePageOption = {
    "--name-page", "PAGE",
    "code page of names whose archive doesn't record it:\n932, 65001 (UTF-8), 51932 (EUC), 437, "
    "850, 866, 1252\n"
    "and others (default: guessed)"};
// Call it before reading the archive.  Throws UsageError for an unknown page.
void ChooseNamePage(const Arguments& arguments);

}  // namespace kozor::program
