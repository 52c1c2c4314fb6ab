// TempDirectoryTest.cpp - a directory tied to the life of an object.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZorFileServices.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::TestFolder;
using Names = std::vector<std::string>;

class TempDirectory : public testing::Test {
 protected:
  void SetUp() override { folder.WriteFile("a/file", ""); }

  TestFolder folder;
};

TEST_F(TempDirectory, RemovesAllThatItMadeAndNothingElse) {
  const std::string path = folder.Lib("a/b/c");
  {
    ZorTempDirectory temporary(path.c_str(), 1);
    EXPECT_TRUE(temporary.IsOpen());
    EXPECT_STREQ(temporary, path.c_str());
    folder.WriteFile("a/b/other/file", "x");
    folder.WriteFile("a/b/c/file", "x");
    EXPECT_TRUE(temporary.Open());
  }
  EXPECT_EQ(folder.List(), (Names{"a/", "a/file"}));
}

TEST_F(TempDirectory, LeavesADirectoryThatStoodThereBefore) {
  ZorTempDirectory temporary(folder.Lib("a").c_str());
  EXPECT_TRUE(temporary.Open());
  temporary.Close();
  EXPECT_TRUE(folder.Exists("a/file"));
}

TEST_F(TempDirectory, CanBeOpenedAgainAndMoved) {
  ZorTempDirectory temporary(folder.Lib("x/y").c_str(), 1);
  EXPECT_FALSE(temporary.SetPath(folder.Lib("z").c_str()));
  temporary.Close();
  temporary.Close();
  EXPECT_FALSE(folder.Exists("x"));
  EXPECT_TRUE(temporary.Open());
  temporary.Close();
  EXPECT_TRUE(temporary.SetPath((folder.Lib("z") + "\\").c_str()));
  EXPECT_TRUE(temporary.Open());
  EXPECT_TRUE(folder.Exists("z"));
  EXPECT_FALSE(folder.Exists("x"));
}

TEST_F(TempDirectory, FollowsTheDisk) {
  ZorTempDirectory temporary(folder.Lib("x").c_str(), 1);
  ASSERT_TRUE(ZorRemoveDirectory(folder.Lib("x").c_str(), 0));
  EXPECT_FALSE(temporary.IsOpen());
  EXPECT_FALSE(temporary.Open());  // still its owner: nothing is made again
  EXPECT_FALSE(temporary.SetPath("C:\\elsewhere"));
}

TEST_F(TempDirectory, RefusesPathsWithoutARootedDirectory) {
  for (const char* path : {"dir\\sub", "\\dir", "C:\\", "C:dir", ""}) {
    ZorTempDirectory temporary(path, 1);
    EXPECT_FALSE(temporary.IsOpen()) << path;
    EXPECT_TRUE(temporary.SetPath("C:\\x")) << path;
  }
  EXPECT_STREQ(ZorTempDirectory(), "");
}

TEST_F(TempDirectory, RemovesTheLevelsOfAnOpeningThatFailedHalfway) {
  // The last level can't be made: its name isn't one.
  ZorTempDirectory temporary(folder.Lib("x/y*").c_str(), 1);
  EXPECT_FALSE(temporary.IsOpen());
  EXPECT_TRUE(folder.Exists("x"));
  temporary.Close();
  EXPECT_FALSE(folder.Exists("x"));

  ZorTempDirectory onFile(folder.Lib("a/file").c_str());
  EXPECT_FALSE(onFile.Open());
  EXPECT_FALSE(onFile.SetPath("C:\\x"));
  onFile.Close();
  EXPECT_TRUE(folder.Exists("a/file"));
}

TEST_F(TempDirectory, CopiesShareWhatWasOpened) {
  ZorTempDirectory first(folder.Lib("x/y").c_str(), 1);
  {
    ZorTempDirectory second(first);
    EXPECT_TRUE(second.IsOpen());
  }
  EXPECT_FALSE(folder.Exists("x"));
  EXPECT_FALSE(first.IsOpen());
  ZorTempDirectory third;
  third = first;
  third.Close();
  first.Close();
}

}  // namespace
