// FileFindTest.cpp - CFileFind: its protocol, and what it tells of entries.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/classlib/ClassLib.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::TestFolder;

class FileFind : public testing::Test {
 protected:
  std::vector<std::string> Names(const char* mask) {
    std::vector<std::string> names;
    for (int more = search.FindFile(folder.Lib(mask).c_str()); more;) {
      more = search.FindNextFileA();
      if (!search.IsDots()) names.emplace_back(search.GetFileName());
    }
    return names;
  }

  TestFolder folder;
  CFileFind search;
};

TEST_F(FileFind, GivesEveryEntryTheLastOneToo) {
  folder.WriteFile("a.txt", "1");
  folder.WriteFile("b.txt", "12");
  folder.WriteFile("dir/x", "");
  EXPECT_EQ(Names("*.*"), (std::vector<std::string>{"a.txt", "b.txt", "dir"}));
  EXPECT_EQ(Names("b.*"), std::vector<std::string>{"b.txt"});
  EXPECT_TRUE(Names("*.none").empty());
}

TEST_F(FileFind, TellsOfTheCurrentEntry) {
  folder.WriteFile("dir/file.bin", "12345");
  ASSERT_TRUE(SetFileAttributesA(folder.Lib("dir/file.bin").c_str(), 0x22));
  ASSERT_TRUE(search.FindFile(folder.Lib("dir/*.bin").c_str()));
  for (int asked = 0; asked < 2; ++asked) {  // behind the last entry, it stays
    EXPECT_FALSE(search.FindNextFileA());
    EXPECT_EQ(search.GetFilePath(), folder.Lib("dir/file.bin").c_str());
    EXPECT_EQ(search.GetLength(), 5u);
    EXPECT_FALSE(search.IsDirectory());
    EXPECT_TRUE(search.MatchesMask(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_FALSE(search.MatchesMask(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM));
  }
}

}  // namespace
