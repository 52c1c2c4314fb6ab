// Mask.h - which names a mask means, for the choices that the library doesn't make by itself:
// --exclude, and the files of a backup set to restore.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/WildCard.h"

namespace kozor::program {

bool HasWildcards(std::string_view text);

// One mask of relative library paths in UTF-8: a folder, and a name by the rules of
// platform/text/WildCard.h.
//
//   mask           means
//   *.txt          every file or folder of such a name, wherever it is
//   notes          every file or folder of that name, wherever it is
//   src\*.o        such names below the folder src
//
// Names with wild-cards ignore case; plain names and folders don't.
class Mask {
 public:
  explicit Mask(std::string given);
  const std::string& Word() const { return word; }
  // Whether a path, or a folder on the way to it, is one of these.
  bool Means(std::string_view path) const;
  // The same for the path alone.
  bool MeansItself(std::string_view path) const;

 private:
  bool MeansName(std::string_view candidate) const;

  std::string word;
  std::string folder;  // with a backslash at its end, or empty
  std::string name;
  std::optional<text::WildCard> wildCard;
};

// Masks as the user wrote them, with '/'.
class MaskList {
 public:
  explicit MaskList(const std::vector<std::string>& words);
  bool Empty() const { return masks.empty(); }
  bool Means(std::string_view name) const;
  // The words of which no name asked for so far was meant.
  std::vector<std::string> Unused() const;

 private:
  std::vector<Mask> masks;
  mutable std::vector<bool> used;
};

}  // namespace kozor::program
