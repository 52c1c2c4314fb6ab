// Path.h - splits a library path; only its text is examined.
//
//   path                  root         directory  file name  folder
//   C:\dir\sub\file.txt   C:           \dir\sub\  file.txt   C:\dir\sub\    .
//   C:dir\file.txt        C:           dir\       file.txt   C:dir\         .
//   C:file.txt            C:                      file.txt   C:             .
//   \\srv\share\d\*.*     \\srv\share  \d\        *.*        \\srv\share\d\ .
//   \\srv                              \\         srv        \\             .
//   dir\                               dir\                  dir\           .
//
// Wild-cards are ordinary characters.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace kozor::text {

struct PathRules {
  bool slashSeparates = false;  // the backslash always does
  // Whether a byte begins a two-byte character, whose second byte may be 0x5C.  Null for UTF-8 and
  // UTF-16, which have none.
  bool (*isLeadByte)(unsigned char byte) = nullptr;

  template <typename Char>
  bool IsSeparator(Char c) const {
    return c == Char{'\\'} || (slashSeparates && c == Char{'/'});
  }
};

// The position of the first separator at or after `from`, or the length of the text.  `from` must
// be the beginning of a character.
template <typename Char>
std::size_t FindSeparator(std::basic_string_view<Char> text, std::size_t from, PathRules rules) {
  while (from < text.size() && !rules.IsSeparator(text[from])) {
    const bool isPair =
        rules.isLeadByte != nullptr && rules.isLeadByte(static_cast<unsigned char>(text[from]));
    from += isPair ? 2 : 1;
  }
  return std::min(from, text.size());
}

// Removes the first component and the separators after it from a path; returns the component.
template <typename Char>
std::basic_string_view<Char> TakeComponent(std::basic_string_view<Char>& path, PathRules rules) {
  const auto component = path.substr(0, FindSeparator(path, 0, rules));
  path.remove_prefix(component.size());
  while (!path.empty() && rules.IsSeparator(path.front())) path.remove_prefix(1);
  return component;
}

// The pieces are views of the text, which must outlive the object.
template <typename Char>
class BasicPath {
 public:
  using View = std::basic_string_view<Char>;

  explicit BasicPath(View text, PathRules textRules = {}) : whole(text), rules(textRules) {
    for (std::size_t i = 0; (i = FindSeparator(whole, i, rules)) < whole.size();) folderEnd = ++i;
    rootEnd = FindRootEnd();
    nameBegin = std::max(folderEnd, rootEnd);
    if (HasDrive()) folderEnd = std::max(folderEnd, rootEnd);
  }

  View Root() const { return whole.substr(0, rootEnd); }
  View Directory() const { return whole.substr(rootEnd, nameBegin - rootEnd); }
  View FileName() const { return whole.substr(nameBegin); }

  // Everything up to the last separator, or up to the colon of a drive if none follows: a file name
  // can be appended.
  View Folder() const { return whole.substr(0, folderEnd); }
  // Whether the whole path is such a folder.
  bool IsFolder() const { return !whole.empty() && folderEnd == whole.size(); }
  bool EndsInSeparator() const { return IsFolder() && !(HasDrive() && folderEnd == rootEnd); }
  // The path as a folder: a backslash is added unless it is one already or empty.
  std::basic_string<Char> AsFolder() const {
    std::basic_string<Char> folder(whole);
    if (!folder.empty() && !IsFolder()) folder += Char{'\\'};
    return folder;
  }

  // Whether it begins with a drive or a separator, so it can't be appended to a folder.
  bool IsRooted() const {
    return HasDrive() || (!whole.empty() && rules.IsSeparator(whole.front()));
  }

 private:
  bool HasDrive() const { return whole.size() >= 2 && whole[1] == Char{':'}; }

  // The end of "C:" or "\\server\share"; a server alone isn't a root.
  std::size_t FindRootEnd() const {
    if (HasDrive()) return 2;
    if (whole.size() < 2 || !rules.IsSeparator(whole[0]) || !rules.IsSeparator(whole[1])) return 0;
    const std::size_t share = FindSeparator(whole, 2, rules);
    return share == whole.size() ? 0 : FindSeparator(whole, share + 1, rules);
  }

  View whole;
  PathRules rules;
  std::size_t rootEnd = 0;
  std::size_t nameBegin = 0;
  std::size_t folderEnd = 0;
};

using Path = BasicPath<char>;

}  // namespace kozor::text
