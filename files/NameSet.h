// NameSet.h - a set of names in which case doesn't count.
//
// Two names are one when _mbsicmp finds them equal.  Adding and looking up cost the length of a
// name, however many names are in the set, so it takes the place of comparing each with each.
#pragma once

#include <cstddef>
#include <unordered_set>

#include "platform/classlib/CString.h"

class ZorNameSet {
 public:
  ZorNameSet();

  // Returns false if the name was in the set already.
  bool Add(const CString& name) { return names.insert(name).second; }
  bool Contains(const CString& name) const { return names.contains(name); }
  std::size_t GetCount() const { return names.size(); }

 private:
  struct Hash {
    std::size_t operator()(const CString& name) const;
    std::size_t seed;
  };
  struct Equal {
    bool operator()(const CString& left, const CString& right) const {
      return left.CompareNoCase(right) == 0;
    }
  };

  std::unordered_set<CString, Hash, Equal> names;
};
