// Archive.h - archive objects with the manners of this program: a progress bar, an end when a
// signal comes, and failures in words.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "ZorArchive.h"

namespace kozor::program {

class Archive : public ZorArchive {
 public:
  // Passes on a success.  Otherwise throws Interrupted after a signal, and else Failure with the
  // cause; `name` is the archive as the user gave it.
  void Require(int succeeded, const std::string& name) const;

 protected:
  int OnAbort(const ONABORTPARAM& param) override;

 private:
  std::string currentName;  // the file or member that the run came to last
};

// What the archive says of a member.
struct Member {
  std::string name;  // as the library gives it, with backslashes
  std::uint32_t size;
  std::uint16_t date;  // DOS date and time, local
  std::uint16_t time;
  std::uint8_t attribute;  // FILE_ATTRIBUTE_* bits
};

// Calls `visit` for every member that `mask` selects, in their order in the archive, and returns
// how many there were.  Reads headers only.  `archive` is a library path, `name` what to call it.
std::size_t ForEachMember(const std::string& archive, const std::string& name,
                          const std::string& mask, const std::function<void(const Member&)>& visit);

// A member's name as the library wants it, with '\' in place of '/'.
std::string MemberName(std::string name);
// A mask for members as the library wants it: a name, in which a folder ("docs/") stands for
// everything below it.
std::string MemberMask(std::string word);

// Throws Failure unless `archive`, a library path, is an archive.
void RequireArchive(const std::string& archive, const std::string& name);

}  // namespace kozor::program
