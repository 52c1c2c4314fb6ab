// MemberSearch.h - the members of an archive that a search text means.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/container/ArchiveIndex.h"
#include "platform/text/WildCard.h"

namespace kozor::container {

// A text in quotes is a name: the member of that whole name is found, and it alone.  Other text is
// a directory part and a mask for file names, also when it holds no wild-card.
class MemberSearch {
 public:
  enum class Depth {
    ThisDirectory,  // members of the directory part itself
    AndBelow,       // and of all directories below it
  };
  enum class Kinds { Files, FilesAndDirectories };

  // The index must outlive the search.
  MemberSearch(const ArchiveIndex& searched, std::string_view text, Depth searchDepth,
               Kinds searchKinds = Kinds::Files);

  // The position of the next member, in the order of the archive.
  std::optional<std::size_t> Next();

 private:
  std::optional<std::size_t> FindWholeName(std::string_view name) const;
  bool IsOfKind(const Member& member) const;
  bool Matches(const Member& member) const;

  const ArchiveIndex& index;
  const Depth depth;
  const Kinds kinds;
  const bool isWholeName;
  std::optional<std::size_t> wholeName;  // not handed out yet
  std::u16string directory;              // folded, with a '\' at its end, or empty
  text::WildCard mask;
  std::size_t next = 0;
};

}  // namespace kozor::container
