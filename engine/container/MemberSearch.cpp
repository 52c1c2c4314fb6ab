// MemberSearch.cpp - see MemberSearch.h.
#include "engine/container/MemberSearch.h"

#include <algorithm>
#include <utility>

#include "engine/container/MemberName.h"

namespace kozor::container {
namespace {

std::string WithoutQuotes(std::string_view text) {
  std::string plain(text);
  std::erase(plain, '"');  // 0x22 is no trail byte in any code page
  return plain;
}

// Splits behind the last separator.
std::pair<std::u16string_view, std::u16string_view> SplitPath(std::u16string_view path) {
  const std::size_t end = path.rfind(u'\\') + 1;  // 0 when there is none
  return {path.substr(0, end), path.substr(end)};
}

std::u16string SearchKey(std::string_view text, unsigned int workingPage) {
  return KeyOf(NormalizeName(WithoutQuotes(text), workingPage), workingPage);
}

}  // namespace

MemberSearch::MemberSearch(const ArchiveIndex& searched, std::string_view text, Depth searchDepth,
                           Kinds searchKinds)
    : index(searched),
      depth(searchDepth),
      kinds(searchKinds),
      isWholeName(text.find('"') != std::string_view::npos),
      wholeName(isWholeName ? FindWholeName(WithoutQuotes(text)) : std::nullopt),
      directory(SplitPath(SearchKey(text, searched.WorkingPage())).first),
      mask(SplitPath(SearchKey(text, searched.WorkingPage())).second) {}

std::optional<std::size_t> MemberSearch::FindWholeName(std::string_view name) const {
  const auto found = index.Find(name);
  return found && IsOfKind(index.Members()[*found]) ? found : std::nullopt;
}

bool MemberSearch::IsOfKind(const Member& member) const {
  return member.kind == MemberKind::File ||
         (member.kind == MemberKind::Directory && kinds == Kinds::FilesAndDirectories);
}

std::optional<std::size_t> MemberSearch::Next() {
  if (isWholeName) return std::exchange(wholeName, std::nullopt);
  while (next < index.Members().size()) {
    const std::size_t position = next++;
    if (Matches(index.Members()[position])) return position;
  }
  return std::nullopt;
}

bool MemberSearch::Matches(const Member& member) const {
  if (!IsOfKind(member)) return false;
  std::u16string_view key = member.key;
  if (member.kind == MemberKind::Directory) key.remove_suffix(1);
  const auto [memberDirectory, fileName] = SplitPath(key);
  const bool isThere = depth == Depth::AndBelow ? memberDirectory.starts_with(directory)
                                                : memberDirectory == directory;
  return isThere && mask.Matches(fileName);
}

}  // namespace kozor::container
