// MaskTest.cpp - which names a mask of --exclude or of kozor restore means.
#include "examples/kozor/Mask.h"

#include <gtest/gtest.h>

namespace kozor {
namespace {

struct Case {
  const char* mask;
  const char* name;
  bool means;
};

class MaskMeaning : public testing::TestWithParam<Case> {};

TEST_P(MaskMeaning, IsAsListed) {
  const auto& [mask, name, means] = GetParam();
  EXPECT_EQ(MaskMeans(mask, name), means) << mask << " and " << name;
}

INSTANTIATE_TEST_SUITE_P(
    , MaskMeaning,
    testing::Values(Case{"*", "a", true}, Case{"*.*", "a", true}, Case{"*.txt", "a.TXT", true},
                    Case{"*.txt", "a.txt.gz", false}, Case{"*.txt", "deep\\er\\a.txt", true},
                    Case{"*.txt", "folder.txt\\a", true}, Case{"a?c", "abc", true},
                    Case{"a?c", "ac", false},
                    Case{"a?c",
                         "a\xE3\x81\x82"
                         "c",
                         true},
                    Case{"*a*b*c", "xaybzc", true}, Case{"*a*b*c", "xaybz", false},
                    Case{"*ab", "aab", true}, Case{"name", "Name", false},
                    Case{"name", "name\\x", true}, Case{"name", "x\\name", true},
                    Case{"name", "names", false}, Case{"sub\\*.o", "sub\\a.o", true},
                    Case{"sub\\*.o", "sub\\x\\a.o", true}, Case{"sub\\*.o", "x\\sub\\a.o", false},
                    Case{"sub\\*.o", "a.o", false}, Case{"sub\\x", "sub\\x\\y\\z", true},
                    Case{"", "a", false}));

TEST(MaskList, TellsWhichWordsWereOfNoUse) {
  const MaskList masks({"./a/", "*.b", "c"});
  EXPECT_TRUE(masks.Means("a\\x"));
  EXPECT_FALSE(masks.Means("x"));
  EXPECT_TRUE(masks.Means("x.b"));
  EXPECT_EQ(masks.Unused(), std::vector<std::string>{"c"});
}

}  // namespace
}  // namespace kozor
