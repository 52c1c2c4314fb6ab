// Mask.cpp - see Mask.h.
#include "Mask.h"

#include <algorithm>

namespace kozor::program {

namespace {

char Folded(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

// Bytes of the UTF-8 character at the start of `text`, which isn't empty.
std::size_t CharacterLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80) {
    ++length;
  }
  return length;
}

// Goes along both texts once.  After a mismatch the last '*' takes one character more, which is the
// only place worth going back to.
bool WildcardMatch(std::string_view mask, std::string_view text) {
  std::size_t m = 0;
  std::size_t t = 0;
  std::size_t star = std::string_view::npos;
  std::size_t starText = 0;
  while (t < text.size()) {
    if (m < mask.size() && mask[m] == '*') {
      star = m++;
      starText = t;
    } else if (m < mask.size() && mask[m] == '?') {
      ++m;
      t += CharacterLength(text.substr(t));
    } else if (m < mask.size() && Folded(mask[m]) == Folded(text[t])) {
      ++m;
      ++t;
    } else if (star != std::string_view::npos) {
      m = star + 1;
      t = ++starText;
    } else {
      return false;
    }
  }
  return mask.find_first_not_of('*', m) == std::string_view::npos;
}

bool NameMatches(std::string_view mask, std::string_view text) {
  if (!HasWildcards(mask)) return mask == text;
  return mask == "*.*" || WildcardMatch(mask, text);
}

// Cuts behind the last backslash: folder with its backslash, and name.
std::pair<std::string_view, std::string_view> Cut(std::string_view path) {
  const std::size_t cut = path.rfind('\\') + 1;
  return {path.substr(0, cut), path.substr(cut)};
}

}  // namespace

bool HasWildcards(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

bool MaskMeans(std::string_view mask, std::string_view name) {
  const auto [maskFolder, maskName] = Cut(mask);
  for (std::size_t end = 0; end != std::string_view::npos;) {
    end = name.find('\\', end + 1);
    const auto [folder, last] = Cut(name.substr(0, end));
    if (folder.starts_with(maskFolder) && NameMatches(maskName, last)) return true;
  }
  return false;
}

MaskList::MaskList(const std::vector<std::string>& words) : masks(words), used(words.size()) {
  for (std::string& mask : masks) {
    std::replace(mask.begin(), mask.end(), '/', '\\');
    if (mask.starts_with(".\\")) mask.erase(0, 2);
    if (mask.ends_with('\\')) mask.pop_back();
  }
}

bool MaskList::Means(std::string_view name) const {
  bool means = false;
  for (std::size_t i = 0; i < masks.size(); ++i) {
    if (!MaskMeans(masks[i], name)) continue;
    used[i] = true;
    means = true;
  }
  return means;
}

std::vector<std::string> MaskList::Unused() const {
  std::vector<std::string> unused;
  for (std::size_t i = 0; i < masks.size(); ++i) {
    if (!used[i]) unused.push_back(masks[i]);
  }
  return unused;
}

}  // namespace kozor::program
