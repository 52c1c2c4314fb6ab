// NameSet.cpp - a hash of names that agrees with _mbsicmp, and the passes over lists of names that
// use it.
#include "files/NameSet.h"

#include <algorithm>
#include <cstdint>
#include <random>

#include "files/Path.h"

namespace {

// Names come from untrusted archives and disks.  An unpredictable seed keeps an attacker from
// choosing names that all hash to one bucket.
std::size_t Seed() {
  static const std::size_t seed = std::random_device{}();
  return seed;
}

bool IsAnyRooted(const ZorFileList& list) {
  return std::any_of(list.begin(), list.end(),
                     [](const CString& name) { return ZorHasRoot(name); });
}

// Makes names complete that are to be compared with each other.  Names that all lack a root differ
// in the same way with and without a base.
class Completion {
 public:
  Completion(const CString& baseDirectory, bool isAnyRooted)
      : base(baseDirectory), isNeeded(isAnyRooted && !baseDirectory.IsEmpty()) {}
  CString operator()(const CString& name) const {
    return isNeeded && !ZorHasRoot(name) ? base + name : name;
  }

 private:
  const CString& base;
  const bool isNeeded;
};

template <typename Unwanted>
void RemoveIf(ZorFileList& list, Unwanted unwanted) {
  for (POSITION next = list.GetHeadPosition(); next != nullptr;) {
    POSITION position = next;
    if (unwanted(list.GetNext(next))) list.RemoveAt(position);
  }
}

}  // namespace

ZorNameSet::ZorNameSet() : names(0, Hash(Seed())) {}

// Queries the platform once per byte value rather than once per byte of every name.
ZorNameSet::Hash::Hash(std::size_t start) : seed(start) {
  for (unsigned int byte = 0; byte < folded.size(); ++byte) {
    const bool leads = IsDBCSLeadByte(static_cast<BYTE>(byte)) != 0;
    folded[byte] = leads ? kLeadByte : static_cast<std::uint16_t>(_mbctolower(byte));
  }
}

// FNV-1a over the characters in lower case.  A lead byte without its trail byte is skipped:
// _mbsicmp may treat it as the end of the text.
std::size_t ZorNameSet::Hash::operator()(const CString& name) const {
  std::uint64_t hash = 0xCBF29CE484222325u ^ seed;
  for (const char* p = name; *p != '\0';) {
    const auto byte = static_cast<unsigned char>(*p++);
    unsigned int character = folded[byte];
    if (character == kLeadByte) {
      if (*p == '\0') break;
      character = _mbctolower(unsigned{byte} << 8 | static_cast<unsigned char>(*p++));
    }
    hash = (hash ^ character) * 0x100000001B3u;
  }
  return static_cast<std::size_t>(hash ^ hash >> 32);
}

void ZorRemoveDuplicates(ZorFileList& list, const CString& base) {
  const Completion complete(base, IsAnyRooted(list));
  ZorNameSet seen;
  RemoveIf(list, [&](const CString& name) { return !seen.Add(complete(name)); });
}

void ZorRemoveExcluded(ZorFileList& list, const ZorFileList& excluded, const CString& base) {
  if (excluded.IsEmpty()) return;
  const Completion complete(base, IsAnyRooted(list) || IsAnyRooted(excluded));
  ZorNameSet names;
  for (const CString& name : excluded) names.Add(complete(name));
  RemoveIf(list, [&](const CString& name) { return names.Contains(complete(name)); });
}
