// MaskTest.cpp - which names a mask of --exclude or of kozor restore means.
#include "kozor/Mask.h"

#include <gtest/gtest.h>

namespace kozor::program {
namespace {

TEST(KozorMask, MeansNamesAndWhatLiesBelowThem) {
  struct Row {
    const char* mask;
    std::vector<const char*> meant;
    std::vector<const char*> others;
  };
  const Row rows[] = {
      {"*.*", {"a"}, {}},
      {"*.txt", {"a.TXT", "deep\\er\\a.txt", "folder.txt\\a"}, {"a.txt.gz"}},
      {"a?c", {"abc", "a\343\201\202c"}, {"ac"}},
      {"name", {"name\\x", "x\\name"}, {"Name", "names"}},
      {"sub\\*.o", {"sub\\a.o", "sub\\x\\a.o"}, {"x\\sub\\a.o", "a.o"}},
      {"sub\\x", {"sub\\x\\y\\z"}, {}},
      {"", {}, {"a"}},
  };
  for (const Row& row : rows) {
    for (const char* name : row.meant) EXPECT_TRUE(Mask(row.mask).Means(name)) << name;
    for (const char* name : row.others) EXPECT_FALSE(Mask(row.mask).Means(name)) << name;
  }
}

TEST(KozorMaskList, TellsWhichWordsWereOfNoUse) {
  const MaskList masks({"./a/", "*.b", "c"});
  EXPECT_TRUE(masks.Means("a\\x"));
  EXPECT_FALSE(masks.Means("x"));
  EXPECT_TRUE(masks.Means("x.b"));
  EXPECT_EQ(masks.Unused(), std::vector<std::string>{"c"});
}

}  // namespace
}  // namespace kozor::program
