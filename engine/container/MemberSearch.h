// MemberSearch.h - finds the members of an archive that match a search text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/container/ArchiveIndex.h"
#include "platform/text/WildCard.h"

namespace kozor::container {

// Quoted text is a name and finds only the member of that whole name.  Other text is a directory
// part and a mask for file names, even without wild-cards.
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

  // Returns the position of the next member, in the order of the archive.
  std::optional<std::size_t> Next();

 private:
  std::optional<std::size_t> FindWholeName(std::string_view name) const;
  bool IsOfKind(MemberKind kind) const;
  bool Matches(std::size_t position) const;

  const ArchiveIndex& index;
  const Depth depth;
  const Kinds kinds;
  const bool isWholeName;
  std::optional<std::size_t> wholeName;  // until it is returned
  std::u16string directory;              // folded, with a trailing '\', or empty
  text::WildCard mask;
  std::size_t next = 0;
};

}  // namespace kozor::container
