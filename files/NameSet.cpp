// NameSet.cpp - a set of names in which case doesn't count: the hash that goes with _mbsicmp.
#include "files/NameSet.h"

#include <cstdint>
#include <random>

namespace {

// Names come from archives and disks of strangers.  A start that nobody can foretell keeps them
// from choosing names that all meet in one place.
std::size_t Seed() {
  static const std::size_t seed = std::random_device{}();
  return seed;
}

}  // namespace

ZorNameSet::ZorNameSet() : names(0, Hash{Seed()}) {}

// FNV-1a over the characters in lower case.  A lead byte without its trail byte is left out: to
// _mbsicmp it may be the end of the text.
std::size_t ZorNameSet::Hash::operator()(const CString& name) const {
  std::uint64_t hash = 0xCBF29CE484222325u ^ seed;
  for (const char* p = name; *p != '\0';) {
    unsigned int character = static_cast<unsigned char>(*p++);
    if (IsDBCSLeadByte(static_cast<BYTE>(character))) {
      if (*p == '\0') break;
      character = character << 8 | static_cast<unsigned char>(*p++);
    }
    hash = (hash ^ _mbctolower(character)) * 0x100000001B3u;
  }
  return static_cast<std::size_t>(hash ^ hash >> 32);
}
