// Mask.h - which names a mask means, for the choices that the library doesn't make by itself:
// --exclude, and the files of a backup set to restore.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::program {

bool HasWildcards(std::string_view text);

// Whether `name`, a relative library path, is meant by `mask`, or lies in a folder that is.
//
//   mask           means
//   *.txt          every file or folder of such a name, wherever it is
//   notes          every file or folder of that name, wherever it is
//   src\*.o        such names below the folder src
//
// '*' stands for any run of characters and '?' for one; "*.*" is "*".  Masks with wild-cards ignore
// the case of ASCII letters, plain names don't.
bool MaskMeans(std::string_view mask, std::string_view name);

// Masks as the user wrote them, with '/'.
class MaskList {
 public:
  explicit MaskList(const std::vector<std::string>& words);
  bool Empty() const { return masks.empty(); }
  bool Means(std::string_view name) const;
  // The words of which no name asked for so far was meant.
  std::vector<std::string> Unused() const;

 private:
  std::vector<std::string> masks;
  mutable std::vector<bool> used;
};

}  // namespace kozor::program
