// DirectoryTest.cpp - making and removing directory trees.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ZorFileServices.h"
#include "platform/win32/PosixAdmin.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::CodePageScope;
using kozor::test::MakeTree;
using kozor::test::TestFolder;
using Names = std::vector<std::string>;

class Directory : public testing::Test {
 protected:
  void SetUp() override { folder.WriteFile("a/file", ""); }
  std::string In(const std::string& name) const { return folder.Lib() + "\\" + name; }

  TestFolder folder;
};

TEST_F(Directory, MakesMissingLevelsAndNamesTheTopmost) {
  const struct {
    std::string path;
    int hasFileName;
    int result;
    std::string first;  // below the folder
    Names made;
  } rows[] = {
      {"a\\b\\c", 0, 1, "a\\b", {"b/", "b/c/"}},
      {"a\\b\\c.txt", 1, 1, "a\\b", {"b/"}},
      {"a\\b\\", 0, 1, "a\\b", {"b/"}},
      {"a\\b\\", 1, 1, "a\\b", {"b/"}},
      {"a\\\\b\\\\c", 0, 1, "a\\\\b", {"b/", "b/c/"}},
      {"a\\", 0, 1, "", {}},
      {"a\\file", 1, 1, "", {}},
      {"a\\file", 0, 0, "", {}},
      {"a\\file\\sub", 0, 0, "", {}},
      {"a\\file\\sub", 1, 0, "", {}},
      {"a\\b\\c*\\d", 0, 0, "a\\b", {"b/"}},
      {"a\\x\\..\\b", 0, 1, "a\\x\\..\\b", {"b/"}},
  };
  for (const auto& row : rows) {
    CString first = "old";
    EXPECT_EQ(ZorCreateDirectory(In(row.path).c_str(), row.hasFileName, &first), row.result)
        << row.path;
    EXPECT_EQ(first, row.first.empty() ? "" : In(row.first).c_str()) << row.path;
    Names made = folder.List("a");
    std::erase(made, "file");
    EXPECT_EQ(made, row.made) << row.path;
    EXPECT_EQ(ZorRemoveDirectory(In("a\\b").c_str(), 0), row.made.empty() ? 0 : 1) << row.path;
  }
  EXPECT_EQ(ZorCreateDirectory(In("new\\a").c_str(), 0, nullptr), 1);
}

TEST_F(Directory, MakesNothingWithoutARootedPath) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  for (const char* path : {"C:dir", "C:", "dir\\sub", "\\dir\\sub", "", "\\\\srv\\share"}) {
    CString first = "old";
    EXPECT_EQ(ZorCreateDirectory(path, 0, &first), 0) << path;
    EXPECT_STREQ(first, "old");
  }
  std::filesystem::current_path(before);
  EXPECT_EQ(folder.List(), (Names{"a/", "a/file"}));
  for (const char* path : {"C:\\", "C:\\file.txt"}) {
    CString first = "old";
    EXPECT_EQ(ZorCreateDirectory(path, 1, &first), 1) << path;
    EXPECT_STREQ(first, "");
  }
}

TEST_F(Directory, WorksOnShares) {
  ASSERT_TRUE(KzMapShare("\\\\srv\\share", folder.Path("a").c_str()));
  CString first;
  EXPECT_EQ(ZorCreateDirectory("\\\\srv\\share\\b\\c", 0, &first), 1);
  EXPECT_STREQ(first, "\\\\srv\\share\\b");
  EXPECT_TRUE(folder.Exists("a/b/c"));
  EXPECT_EQ(ZorRemoveDirectory(first, 0), 1);
  EXPECT_EQ(ZorRemoveDirectory("\\\\srv\\share\\", 0), 1);
  EXPECT_EQ(folder.List("a"), Names{"file"});
  KzMapShare("\\\\srv\\share", nullptr);
}

TEST_F(Directory, KeepsDoubleByteNamesWhole) {
  const CodePageScope japanese(932);
  CString first;
  EXPECT_EQ(ZorCreateDirectory(In("\x95\x5C\x83\x5C\\\x95\x5C\\f").c_str(), 1, &first), 1);
  EXPECT_EQ(first, In("\x95\x5C\x83\x5C").c_str());
  EXPECT_TRUE(folder.Exists("\u8868\u30BD/\u8868"));
  EXPECT_EQ(ZorRemoveDirectory(first, 0), 1);
  EXPECT_EQ(folder.List(), (Names{"a/", "a/file"}));
}

TEST_F(Directory, RemovesATreeOrWhatIsInIt) {
  MakeTree(folder, "tree", {{"x", 1}, {"s/y", 1}, {"s/t/z", 1}, {"s/t/.hidden", 1}, {"empty/", 0}});
  MakeTree(folder, "other", {{"s/y", 1}});
  ASSERT_TRUE(ZorSetFileAttribute(In("tree\\s\\y").c_str(), 0x06));
  EXPECT_EQ(ZorRemoveDirectory(In("tree\\").c_str(), 1), 1);
  EXPECT_EQ(folder.List("tree"), Names{});
  EXPECT_EQ(ZorRemoveDirectory(In("tree\\").c_str(), 0), 1);
  EXPECT_EQ(ZorRemoveDirectory(In("other").c_str(), 0), 1);
  EXPECT_EQ(folder.List(), (Names{"a/", "a/file"}));
}

TEST_F(Directory, StopsAtAReadOnlyFile) {
  MakeTree(folder, "tree", {{"1", 1}, {"2/x", 1}, {"3", 1}, {"4/", 0}, {"5", 1}});
  ASSERT_TRUE(ZorSetFileAttribute(In("tree\\3").c_str(), 0x01));
  EXPECT_EQ(ZorRemoveDirectory(In("tree").c_str(), 0), 0);
  EXPECT_EQ(folder.List("tree"), (Names{"2/", "3", "4/", "5"}));
}

TEST_F(Directory, TellsWhenThereIsNothingToRemove) {
  EXPECT_EQ(ZorRemoveDirectory(In("none").c_str(), 0), 0);
  EXPECT_EQ(ZorRemoveDirectory(In("none").c_str(), 1), 1);
  EXPECT_EQ(ZorRemoveDirectory(In("a\\file").c_str(), 0), 0);
  EXPECT_TRUE(folder.Exists("a/file"));
}

// On a drive of its own: should a guard fail, nothing but the test's folder is lost.
TEST_F(Directory, NeverRemovesARootOrWithoutOne) {
  ASSERT_TRUE(DefineDosDeviceA(0, "R:", folder.Path().c_str()));
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  for (const char* path : {"R:\\", "R:", "R:a", "a", "a\\", "\\a", "", "R:\\\\", "R:\\.",
                           "R:\\a\\..", "R:\\..\\..", "R:\\a\\..\\.\\", "R:\\/", "R:\\a/.."}) {
    EXPECT_EQ(ZorRemoveDirectory(path, 0), 1) << path;
    EXPECT_EQ(ZorRemoveDirectory(path, 1), 1) << path;
    ASSERT_EQ(folder.List(), (Names{"a/", "a/file"})) << path;
  }
  std::filesystem::current_path(before);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "R:", nullptr);
}

}  // namespace
