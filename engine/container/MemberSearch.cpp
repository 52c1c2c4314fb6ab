// MemberSearch.cpp - see MemberSearch.h.
#include "engine/container/MemberSearch.h"

#include <algorithm>
#include <utility>

#include "engine/container/MemberName.h"
#include "platform/text/Path.h"

namespace kozor::container {
namespace {

std::string WithoutQuotes(std::string_view text) {
  std::string plain(text);
  std::erase(plain, '"');  // 0x22 is never a trail byte
  return plain;
}

using KeyPath = text::BasicPath<char16_t>;

// A text in quotes is a name.
bool IsName(std::string_view text) {
  return text.find('"') != std::string_view::npos;
}

std::string_view MaskText(std::string_view text) {
  return IsName(text) ? std::string_view() : text;
}

std::u16string SearchKey(std::string_view text, unsigned int workingPage) {
  return KeyOf(NormalizeName(text, workingPage), workingPage);
}

}  // namespace

MemberSearch::MemberSearch(const ArchiveIndex& searched, std::string_view text, Depth searchDepth,
                           Kinds searchKinds)
    : index(searched),
      depth(searchDepth),
      kinds(searchKinds),
      isWholeName(IsName(text)),
      wholeName(isWholeName ? FindWholeName(WithoutQuotes(text)) : std::nullopt),
      directory(KeyPath(SearchKey(MaskText(text), searched.WorkingPage())).Folder()),
      mask(KeyPath(SearchKey(MaskText(text), searched.WorkingPage())).FileName()) {}

std::optional<std::size_t> MemberSearch::FindWholeName(std::string_view name) const {
  const auto found = index.Find(name);
  return found && IsOfKind(index.Members().KindAt(*found)) ? found : std::nullopt;
}

bool MemberSearch::IsOfKind(MemberKind kind) const {
  return kind == MemberKind::File ||
         (kind == MemberKind::Directory && kinds == Kinds::FilesAndDirectories);
}

std::optional<std::size_t> MemberSearch::Next() {
  if (isWholeName) return std::exchange(wholeName, std::nullopt);
  while (next < index.Members().size()) {
    const std::size_t position = next++;
    if (Matches(position)) return position;
  }
  return std::nullopt;
}

bool MemberSearch::Matches(std::size_t position) const {
  const MemberKind kind = index.Members().KindAt(position);
  if (!IsOfKind(kind)) return false;
  const std::u16string whole = KeyOf(index.Members().NameAt(position), index.WorkingPage());
  std::u16string_view key = whole;
  if (kind == MemberKind::Directory) key.remove_suffix(1);
  const KeyPath path(key);
  const bool isThere =
      depth == Depth::AndBelow ? path.Folder().starts_with(directory) : path.Folder() == directory;
  return isThere && mask.Matches(path.FileName());
}

}  // namespace kozor::container
