// DirectoryTest.cpp - making and removing directory trees, by call and by the life of an object.
#include <gtest/gtest.h>

#include <tuple>

#include "ZorFileServices.h"
#include "platform/win32/Win32.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

using Names = std::vector<std::string>;

class FilesDirectory : public testing::Test {
 protected:
  FilesDirectory() : before(std::filesystem::current_path()) {
    folder.WriteFile("a/file", "");
    std::filesystem::current_path(folder.Path());
  }
  ~FilesDirectory() override { std::filesystem::current_path(before); }

  int Create(const std::string& name, int hasFileName) {
    first = "old";
    return ZorCreateDirectory(folder.Lib(name).c_str(), hasFileName, &first);
  }
  int Remove(const std::string& name, int contentsOnly = 0) const {
    return ZorRemoveDirectory(folder.Lib(name).c_str(), contentsOnly);
  }
  // Whether only the initial files and directories exist.
  bool IsAsBefore() const { return folder.List() == Names{"a/", "a/file"}; }

  TestFolder folder;
  CString first;  // that Create made
  std::filesystem::path before;
};

TEST_F(FilesDirectory, MakesMissingLevelsAndNamesTheTopmost) {
  // A path, whether it has a file name, the result, and what is made: the topmost directory, below
  // the folder, and all of them, below "a".
  const std::tuple<std::string, int, int, std::string, Names> rows[] = {
      {"a\\b\\c", 0, 1, "a\\b", {"b/", "b/c/"}},
      {"a\\b\\c.txt", 1, 1, "a\\b", {"b/"}},
      {"a\\b\\", 0, 1, "a\\b", {"b/"}},
      {"a\\b\\", 1, 1, "a\\b", {"b/"}},
      {"a\\\\b\\\\c", 0, 1, "a\\\\b", {"b/", "b/c/"}},
      {"a\\", 0, 1, "", {}},
      {"a\\file", 1, 1, "", {}},
      {"a\\file", 0, 0, "", {}},
      {"a\\file\\sub", 1, 0, "", {}},
      {"a\\b\\c*\\d", 0, 0, "a\\b", {"b/"}},
      {"a\\x\\..\\b", 0, 1, "a\\x", {"b/", "x/"}},
      {"a\\x\\..\\x\\..", 0, 1, "a\\x", {"x/"}},
  };
  for (const auto& [path, hasFileName, result, topmost, expected] : rows) {
    SCOPED_TRACE(path);
    EXPECT_EQ(Create(path, hasFileName), result);
    EXPECT_EQ(first, topmost.empty() ? "" : folder.Lib(topmost).c_str());
    Names made = folder.List("a");
    std::erase(made, "file");
    EXPECT_EQ(made, expected);
    for (const std::string& name : expected) Remove("a/" + name);
  }
}

TEST_F(FilesDirectory, MakesNothingWithoutARootedPath) {
  ASSERT_TRUE(DefineDosDeviceA(0, "R:", folder.Path().string().c_str()));
  for (const char* path : {"C:dir", "C:", "dir\\sub", "\\dir\\sub", "", "\\\\srv\\share",
                           "R:\\..\\x", "R:\\a\\..\\..\\x"}) {
    EXPECT_EQ(ZorCreateDirectory(path, 0, &first), 0) << path;
  }
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "R:", nullptr);
  EXPECT_TRUE(IsAsBefore());
  EXPECT_EQ(ZorCreateDirectory("C:\\file.txt", 1, &first), 1);
  EXPECT_STREQ(first, "");
}

TEST_F(FilesDirectory, WorksOnSharesAndOnDoubleByteNames) {
  const CodePageScope japanese(932);
  if (!MapShare("\\\\srv\\share", folder.Path("a"))) GTEST_SKIP() << "no share can be made here";
  EXPECT_EQ(ZorCreateDirectory("\\\\srv\\share\\\x95\x5C\x83\x5C\\\x95\x5C\\f", 1, &first), 1);
  EXPECT_STREQ(first, "\\\\srv\\share\\\x95\x5C\x83\x5C");
  EXPECT_TRUE(folder.Exists("a/\u8868\u30BD/\u8868"));
  EXPECT_EQ(ZorRemoveDirectory(first, 0), 1);
  EXPECT_EQ(ZorRemoveDirectory("\\\\srv\\share\\", 0), 1);
  EXPECT_TRUE(IsAsBefore());
  MapShare("\\\\srv\\share", "");
}

TEST_F(FilesDirectory, RemovesATreeOrWhatIsInIt) {
  MakeTree(folder, "tree", {{"x", 1}, {"s/y", 1}, {"s/t/z", 1}, {"s/t/.hidden", 1}, {"empty/", 0}});
  MakeTree(folder, "other", {{"s/y", 1}});
  ASSERT_TRUE(ZorSetFileAttribute(folder.Lib("tree/s/y").c_str(), 0x06));
  EXPECT_EQ(Remove("tree\\", 1), 1);
  EXPECT_EQ(folder.List("tree"), Names{});
  EXPECT_EQ(Remove("tree\\"), 1);
  EXPECT_EQ(Remove("other"), 1);
  EXPECT_TRUE(IsAsBefore());
}

TEST_F(FilesDirectory, TellsWhenItCannotRemove) {
  EXPECT_EQ(Remove("none"), 0);
  EXPECT_EQ(Remove("none", 1), 1);
  EXPECT_EQ(Remove("a\\file"), 0);
  EXPECT_TRUE(IsAsBefore());
  MakeTree(folder, "tree", {{"1", 1}, {"2/x", 1}, {"3", 1}, {"4/", 0}, {"5", 1}});
  ASSERT_TRUE(ZorSetFileAttribute(folder.Lib("tree/3").c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Remove("tree"), 0);
  EXPECT_EQ(folder.List("tree"), (Names{"2/", "3", "4/", "5"})) << "it stops at what stays";
}

// On a separate drive: if a guard fails, only the test's folder is lost.
TEST_F(FilesDirectory, NeverRemovesARootOrWithoutOne) {
  ASSERT_TRUE(DefineDosDeviceA(0, "R:", folder.Path().string().c_str()));
  for (const char* path : {"R:\\", "R:", "R:a", "a", "a\\", "\\a", "", "R:\\\\", "R:\\.",
                           "R:\\a\\..", "R:\\..\\..", "R:\\a\\..\\.\\", "R:\\/", "R:\\a/.."}) {
    EXPECT_EQ(ZorRemoveDirectory(path, 0), 1) << path;
    EXPECT_EQ(ZorRemoveDirectory(path, 1), 1) << path;
    ASSERT_TRUE(IsAsBefore()) << path;
  }
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "R:", nullptr);
}

using FilesTempDirectory = FilesDirectory;

TEST_F(FilesTempDirectory, RemovesAllThatItMadeAndNothingElse) {
  {
    ZorTempDirectory temporary(folder.Lib("a/b/c").c_str(), 1);
    EXPECT_TRUE(temporary.IsOpen());
    EXPECT_STREQ(temporary, folder.Lib("a/b/c").c_str());
    folder.WriteFile("a/b/other/file", "x");
    folder.WriteFile("a/b/c/file", "x");
    EXPECT_TRUE(temporary.Open());
    ZorTempDirectory stoodThereBefore(folder.Lib("a").c_str(), 1);
    EXPECT_TRUE(stoodThereBefore.IsOpen());
  }
  EXPECT_TRUE(IsAsBefore());
}

TEST_F(FilesTempDirectory, CanBeOpenedAgainMovedWhileClosedAndFollowsTheDisk) {
  ZorTempDirectory temporary(folder.Lib("x/y").c_str(), 1);
  EXPECT_FALSE(temporary.SetPath(folder.Lib("z").c_str()));
  temporary.Close();
  temporary.Close();
  EXPECT_TRUE(IsAsBefore());
  EXPECT_TRUE(temporary.Open());
  temporary.Close();
  EXPECT_TRUE(temporary.SetPath((folder.Lib("z") + "\\").c_str()));
  EXPECT_TRUE(temporary.Open());
  EXPECT_EQ(folder.List(), (Names{"a/", "a/file", "z/"}));
  ASSERT_EQ(Remove("z"), 1);
  EXPECT_FALSE(temporary.IsOpen());
  EXPECT_FALSE(temporary.Open());  // still opened: nothing is made again
}

TEST_F(FilesTempDirectory, RefusesPathsWithoutARootedDirectory) {
  for (const char* path : {"dir\\sub", "\\dir", "C:\\", "C:dir", ""}) {
    ZorTempDirectory temporary(path, 1);
    EXPECT_FALSE(temporary.IsOpen()) << path;
    EXPECT_TRUE(temporary.SetPath("C:\\x")) << path;
  }
}

TEST_F(FilesTempDirectory, RemovesTheLevelsOfAnOpeningThatFailedHalfway) {
  // The last level can't be made: its name is invalid.
  ZorTempDirectory temporary(folder.Lib("x/y*").c_str(), 1);
  EXPECT_FALSE(temporary.IsOpen());
  EXPECT_TRUE(folder.Exists("x"));
  temporary.Close();
  EXPECT_TRUE(IsAsBefore());
  {
    ZorTempDirectory onFile(folder.Lib("a/file").c_str(), 1);
    EXPECT_FALSE(onFile.IsOpen());
    EXPECT_FALSE(onFile.SetPath("C:\\x"));
  }
  EXPECT_TRUE(IsAsBefore());
}

TEST_F(FilesTempDirectory, CopiesShareWhatWasOpened) {
  ZorTempDirectory original(folder.Lib("x/y").c_str(), 1);
  {
    const ZorTempDirectory copy(original);
    EXPECT_TRUE(copy.IsOpen());
  }
  EXPECT_TRUE(IsAsBefore());
  EXPECT_FALSE(original.IsOpen());
}

}  // namespace
}  // namespace kozor::test
