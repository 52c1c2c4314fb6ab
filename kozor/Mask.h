// Mask.h - matches names against masks where the library doesn't: for --exclude, and for the files
// of a backup set to restore.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/WildCard.h"

namespace kozor::program {

bool HasWildcards(std::string_view text);

// A mask for relative library paths in UTF-8: a folder, and a name by the rules of
// platform/text/WildCard.h.
//
//   mask           means
//   *.txt          every file or folder with such a name, in any folder
//   notes          every file or folder with that name, in any folder
//   src\*.o        such names below the folder src
//
// Names with wild-cards ignore case; plain names and folders are case-sensitive.
class Mask {
 public:
  explicit Mask(std::string given);
  const std::string& Word() const { return word; }
  // Whether a path, or a folder above it, matches.
  bool Means(std::string_view path) const;
  // The same for the path alone.
  bool MeansItself(std::string_view path) const;

 private:
  bool MeansName(std::string_view candidate) const;

  std::string word;
  std::string folder;  // with a trailing backslash, or empty
  std::string name;
  std::optional<text::WildCard> wildCard;
};

// Masks as the user wrote them, with '/'.
class MaskList {
 public:
  explicit MaskList(const std::vector<std::string>& words);
  bool Empty() const { return masks.empty(); }
  bool Means(std::string_view name) const;
  // The words that have matched no name so far.
  std::vector<std::string> Unused() const;

 private:
  std::vector<Mask> masks;
  mutable std::vector<bool> used;
};

}  // namespace kozor::program
