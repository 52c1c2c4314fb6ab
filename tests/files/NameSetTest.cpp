// NameSetTest.cpp - the set of names against comparing each with each.
#include "files/NameSet.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/CodePageScope.h"

namespace {

using kozor::test::CodePageScope;

class NameSet : public testing::TestWithParam<unsigned int> {};

INSTANTIATE_TEST_SUITE_P(CodePages, NameSet, testing::Values(932u, 65001u));

// Letters, lead bytes with and without a trail byte, trail bytes that look like letters.
TEST_P(NameSet, HoldsTwoNamesAsOneExactlyWhenMbsicmpDoes) {
  const CodePageScope scope(GetParam());
  const unsigned char bytes[] = {'a', 'A', 'z', '[', 0x5C, 0x60, 0x81, 0x82, 0x95, 0xB1, 0xFF};
  std::mt19937 random(GetParam());
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

}  // namespace
