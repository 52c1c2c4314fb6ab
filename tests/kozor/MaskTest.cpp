// MaskTest.cpp - which names a mask of --exclude or of kozor restore means.
#include <tuple>

#include "kozor/Mask.h"

#include <gtest/gtest.h>

namespace kozor::program {
namespace {

TEST(KozorMask, MeansNamesAndWhatLiesBelowThem) {
  const std::tuple<const char*, std::vector<const char*>, std::vector<const char*>> rows[] = {
      {"*.*", {"a"}, {}},
      {"*.txt", {"a.TXT", "deep\\er\\a.txt", "folder.txt\\a"}, {"a.txt.gz"}},
      {"a?c", {"abc", "a\343\201\202c"}, {"ac"}},
      {"name", {"name\\x", "x\\name"}, {"Name", "names"}},
      {"sub\\*.o", {"sub\\a.o", "sub\\x\\a.o"}, {"x\\sub\\a.o", "a.o"}},
      {"sub\\x", {"sub\\x\\y\\z"}, {}},
      {"", {}, {"a"}},
  };
  for (const auto& [mask, meant, others] : rows) {
    for (const char* name : meant) EXPECT_TRUE(Mask(mask).Means(name)) << name;
    for (const char* name : others) EXPECT_FALSE(Mask(mask).Means(name)) << name;
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
