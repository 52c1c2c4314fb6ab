// NameSet.h - a case-insensitive set of names.
//
// Two names are the same if _mbsicmp finds them equal.  Adding and looking up take time
// proportional to the length of the name, independent of their number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_set>

#include "ZorFind.h"
#include "platform/classlib/CString.h"

class ZorNameSet {
 public:
  ZorNameSet();

  // Returns false if the name was in the set already.
  bool Add(const CString& name) { return names.insert(name).second; }
  bool Contains(const CString& name) const { return names.contains(name); }
  std::size_t GetCount() const { return names.size(); }

 private:
  class Hash {
   public:
    explicit Hash(std::size_t start);
    std::size_t operator()(const CString& name) const;

   private:
    static constexpr std::uint16_t kLeadByte = 0xFFFF;
    std::size_t seed;
    std::array<std::uint16_t, 256> folded;  // single bytes in lower case, or kLeadByte
  };
  struct Equal {
    bool operator()(const CString& left, const CString& right) const {
      return left.CompareNoCase(right) == 0;
    }
  };

  std::unordered_set<CString, Hash, Equal> names;
};

// Both passes compare complete names: `base`, which ends in a backslash or is empty, is put before
// a name without a root.
//
// Keeps the first of equal names and removes the others.
void ZorRemoveDuplicates(ZorFileList& list, const CString& base);
// Removes every name that equals one of `excluded`.
void ZorRemoveExcluded(ZorFileList& list, const ZorFileList& excluded, const CString& base);
