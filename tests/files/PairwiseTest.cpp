// PairwiseTest.cpp - sets of names, duplicates and exclusions compared with a pairwise
// implementation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>

#include "ZorFind.h"
#include "files/NameSet.h"
#include "files/Path.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

using Names = std::vector<std::string>;

// The rules, implemented naively.
bool AreOne(const std::string& a, const std::string& b, const std::string& base) {
  const auto compared = [&](const std::string& name) {
    const char* root;
    ZorSplitPath(name.c_str(), &root, nullptr, nullptr);
    return root != nullptr ? name : base + "\\" + name;
  };
  return CString(compared(a).c_str()).CompareNoCase(compared(b).c_str()) == 0;
}

void DropDuplicates(Names& names, const std::string& base) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t later = names.size(); --later > i;) {
      if (AreOne(names[i], names[later], base)) {
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(later));
      }
    }
  }
}

void Exclude(Names& names, const Names& excluded, const std::string& base) {
  for (const std::string& name : excluded) {
    std::erase_if(names, [&](const std::string& other) { return AreOne(name, other, base); });
  }
}

Names WhatOneMaskFinds(const std::string& base, const std::string& mask, int fullPath) {
  ZorFind find;
  find.SetCurrentDirectoryA(base.c_str());
  find.AddTail(mask.c_str());
  ZorFileList list;
  find.Find(list, fullPath);
  return Names(list.begin(), list.end());
}

// Letters, lead bytes with and without a trail byte, trail bytes that look like letters.
TEST(FilesPairwise, ANameSetHoldsTwoNamesAsOneExactlyWhenMbsicmpDoes) {
  for (const unsigned int page : {932u, 65001u}) {
    const CodePageScope scope(page);
    const unsigned char bytes[] = {'a', 'A', 'z', '[', 0x5C, 0x60, 0x81, 0x82, 0x95, 0xB1, 0xFF};
    std::mt19937 random(page);
    ZorNameSet set;
    std::vector<CString> known;
    for (int i = 0; i < 1500; ++i) {
      CString name;
      for (auto length = random() % 5; length > 0; --length) {
        name += static_cast<char>(bytes[random() % sizeof(bytes)]);
      }
      bool isNew = true;
      for (const CString& other : known) isNew = isNew && other.CompareNoCase(name) != 0;
      EXPECT_EQ(set.Contains(name), !isNew) << name;
      EXPECT_EQ(set.Add(name), isNew) << name;
      if (isNew) known.push_back(name);
    }
    EXPECT_EQ(set.GetCount(), known.size());
    EXPECT_GT(known.size(), 300u);
  }
}

TEST(FilesPairwise, AgreesWithTheRulesAsTheyAreWorded) {
  TestFolder folder;
  const std::string base = folder.Lib();
  Names stock;  // names that the list may hold before
  for (const char* name : {"a", "b", "ab", "sub/a", "sub/b", "sub/ba"}) {
    folder.WriteFile(name, "");
    std::string relative = name;
    std::replace(relative.begin(), relative.end(), '/', '\\');
    std::string upper = relative;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    stock.insert(stock.end(), {relative, upper, folder.Lib(name), base + "\\" + upper, name});
  }
  const Names masks = {"*.*", "a*", "sub\\*.*", base + "\\*b*", "none", "C:x", "B"};

  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    const int fullPath = static_cast<int>(random() % 2);
    ZorFileList list;
    Names expected;
    for (auto count = random() % 30; count > 0; --count) {
      expected.push_back(stock[random() % stock.size()]);
      list.AddTail(expected.back().c_str());
    }
    ZorFind find;
    find.SetCurrentDirectoryA(base.c_str());
    Names excluded;
    for (auto count = random() % 4; count > 0; --count) {
      const std::string mask = masks[random() % masks.size()];
      const bool isExclusion = random() % 3 == 0;
      find.AddTail(((isExclusion ? ">" : "") + mask).c_str());
      const Names found = WhatOneMaskFinds(base, mask, fullPath);
      Names& destination = isExclusion ? excluded : expected;
      destination.insert(destination.end(), found.begin(), found.end());
    }
    if (find.GetCount() > 1) DropDuplicates(expected, base);
    Exclude(expected, excluded, base);
    find.Find(list, fullPath);
    ASSERT_EQ(Names(list.begin(), list.end()), expected) << "round " << round;
  }
}

}  // namespace
}  // namespace kozor::test
