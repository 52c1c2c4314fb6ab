// Contents.h - what an archive holds, and which of it the words of a command line mean.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Mask.h"
#include "WorkFolder.h"

namespace kozor::program {

enum class MemberKind { File, Folder, Link, Nameless };

struct Member {
  MemberKind kind = MemberKind::File;
  std::string name;        // as the library gives it, with backslashes; a folder's ends in one
  std::string linkTarget;  // of a link, as it is stored, with '/'
  std::string method;      // "-lh5-"
  int level = 0;           // of the header
  std::uint64_t size = 0;  // unpacked, in bytes
  std::uint64_t packedBytes = 0;
  std::optional<std::uint16_t> crc;
  std::uint64_t lastWrite = 0;  // 100 ns since 1601, UTC
  std::uint8_t attribute = 0;   // FILE_ATTRIBUTE_* bits
  unsigned int unixMode = 0;    // file type included; 0 when not recorded
  bool superseded = false;      // a later member has the same name
  bool overclaims = false;      // its packed data can't unpack to so many bytes
  bool damaged = false;         // its header or its data is known not to be whole

  std::int64_t Seconds() const;  // last write since 1970
};

// Throws FileFailure for a member whose size shows that it can't be unpacked, before any room is
// made for it.
void RequireUnpackable(const Member& member);

// Reads all headers.  `archive` is a library path, `name` what to call it.  Throws Failure when it
// can't be read, is no archive, or is nothing but damage.
std::vector<Member> ReadMembers(const std::string& archive, const std::string& name);

// An archive to read, as the user names it.
//
// "-" is standard input, of which a copy in the directory for temporaries is read.  Damage in the
// archive is complained of; what is damaged is a member among the others.
class SourceArchive {
 public:
  explicit SourceArchive(std::string givenName);

  const std::string& Path() const { return path; }  // the library's
  const std::string& Name() const { return name; }
  const std::vector<Member>& Members() const { return members; }

 private:
  std::filesystem::path CopyPath();

  const std::string name;
  std::string path;
  std::vector<Member> members;
  std::optional<TemporaryFolder> copy;
};

// The members that a word of the command line means, in the archive's order.
//
//   docs/a.txt   the member of this name, or of one that differs in case alone
//   docs, docs/  everything below this folder, and the folder
//   docs/*.txt   names that match, below the folder docs in all its folders
//
// A name that no member has means those that differ in case alone.
std::vector<const Member*> Meant(const std::vector<Member>& members, const std::string& word);

// The members that any of the words means, without what is superseded or excluded; all of them if
// there are no words.  A name that means none so far means the files that have it in any folder.
// Complains of each word that means none.
std::vector<const Member*> Choose(const std::vector<Member>& members,
                                  const std::vector<std::string>& words, const MaskList& excludes,
                                  const std::string& archiveName);

std::uint64_t TotalBytes(const std::vector<const Member*>& members);

}  // namespace kozor::program
