// Mask.cpp - see Mask.h.
#include "Mask.h"

#include <algorithm>

#include "platform/text/Case.h"

namespace kozor::program {

namespace {

// Splits after the last backslash.  The paths are relative, so a ':' doesn't end a drive.
std::pair<std::string_view, std::string_view> Cut(std::string_view path) {
  const std::size_t cut = path.rfind('\\') + 1;
  return {path.substr(0, cut), path.substr(cut)};
}

// Converts a user's mask to the library's form.
std::string LibraryForm(std::string word) {
  std::replace(word.begin(), word.end(), '/', '\\');
  if (word.starts_with(".\\")) word.erase(0, 2);
  if (word.ends_with('\\')) word.pop_back();
  return word;
}

}  // namespace

bool HasWildcards(std::string_view text) {
  return text::HasWildCards(text);
}

Mask::Mask(std::string given) : word(std::move(given)) {
  const auto [maskFolder, maskName] = Cut(word);
  folder = maskFolder;
  name = maskName;
  if (HasWildcards(name)) wildCard.emplace(text::UpperKey(name));
}

bool Mask::MeansName(std::string_view candidate) const {
  return wildCard ? wildCard->Matches(text::UpperKey(candidate)) : candidate == name;
}

bool Mask::Means(std::string_view path) const {
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = path.find('\\', end + 1);
    if (MeansItself(path.substr(0, end))) return true;
  }
  return false;
}

bool Mask::MeansItself(std::string_view path) const {
  const auto [pathFolder, last] = Cut(path);
  return pathFolder.starts_with(folder) && MeansName(last);
}

MaskList::MaskList(const std::vector<std::string>& words) : used(words.size()) {
  for (const std::string& word : words) masks.emplace_back(LibraryForm(word));
}

bool MaskList::Means(std::string_view name) const {
  bool means = false;
  for (std::size_t i = 0; i < masks.size(); ++i) {
    if (!masks[i].Means(name)) continue;
    used[i] = true;
    means = true;
  }
  return means;
}

std::vector<std::string> MaskList::Unused() const {
  std::vector<std::string> unused;
  for (std::size_t i = 0; i < masks.size(); ++i) {
    if (!used[i]) unused.push_back(masks[i].Word());
  }
  return unused;
}

}  // namespace kozor::program
