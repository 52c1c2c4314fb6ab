// SearchContractTest.cpp - FindFirstFileA: what it finds, in which order, by which wild-cards.
#include <algorithm>

#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

class SearchContract : public ::testing::Test {
 protected:
  // What a mask finds in the folder, without "." and "..".
  std::vector<std::string> Find(const std::string& mask) const {
    std::vector<std::string> names = Search(folder.Path(mask));
    std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
    return names;
  }

  WinFolder folder;
};

TEST_F(SearchContract, EntriesComeByNameWithoutRegardToCase) {
  for (const char* name : {"b.txt", "A.TXT", "c", "_x", "B2", "a1", "Z"}) folder.Write(name, "");
  folder.MakeDirectory("aa");
  EXPECT_EQ(Search(folder.Path("*")), Search(folder.Path("*.*")));
  EXPECT_EQ(Search(folder.Path("*")), (std::vector<std::string>{".", "..", "A.TXT", "a1", "aa",
                                                                "b.txt", "B2", "c", "Z", "_x"}));
}

TEST_F(SearchContract, WildCardsFollowTheRealRules) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes a question mark for any one character";
  for (const char* name :
       {"a", "ab", "abc", "a.b", "a.bc", "abc.txt", "abc.text", "a.b.txt", "x.c"}) {
    folder.Write(name, "");
  }
  using Names = std::vector<std::string>;
  const Names all = {"a", "a.b", "a.b.txt", "a.bc", "ab", "abc", "abc.text", "abc.txt", "x.c"};
  struct Row {
    const char* mask;
    Names names;
  };
  const Row rows[] = {
      {"*", all},
      {"*.*", all},
      {"*.*.*", all},
      {"*.", {"a", "ab", "abc"}},
      {"a*.", {"a", "ab", "abc"}},
      {"*.txt", {"a.b.txt", "abc.txt"}},
      {"*.TX?", {"a.b.txt", "abc.txt"}},
      {"abc.*", {"abc", "abc.text", "abc.txt"}},
      {"a*.*", {"a", "a.b", "a.b.txt", "a.bc", "ab", "abc", "abc.text", "abc.txt"}},
      {"?", {"a"}},
      {"??", {"a", "ab"}},
      {"???", {"a", "ab", "abc"}},
      {"?.?", {"a", "a.b", "x.c"}},
      {"a??.txt", {"abc.txt"}},
      {"a????.txt", {"abc.txt"}},
      {"*.?", {"a", "a.b", "ab", "abc", "x.c"}},
      {"?b*", {"ab", "abc", "abc.text", "abc.txt"}},
      {"*b*c*", {"a.bc", "abc", "abc.text", "abc.txt"}},
      {"abc.txt", {"abc.txt"}},
      {"ABC.TXT", {"abc.txt"}},
      {"*z*", {}},
      {"a*a*a*a*a*b", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(Find(row.mask), row.names) << row.mask;
}

TEST_F(SearchContract, FailuresTellWhatIsMissing) {
  folder.Write("f", "");
  folder.MakeDirectory("empty");
  struct Row {
    std::string path;
    DWORD error;
  };
  const Row rows[] = {
      {folder.Path("none"), ERROR_FILE_NOT_FOUND},
      {folder.Path("*.x"), ERROR_FILE_NOT_FOUND},
      {folder.Path("none\\*"), ERROR_PATH_NOT_FOUND},
      {folder.Path("none\\x"), ERROR_PATH_NOT_FOUND},
      {folder.Path("f\\*"), UnderWine() ? ERROR_INVALID_NAME : ERROR_DIRECTORY},
      {folder.Path("empty\\"), ERROR_FILE_NOT_FOUND},
      {folder.Path("e*\\*"), ERROR_INVALID_NAME},
      {"", ERROR_PATH_NOT_FOUND},
      {folder.Path().substr(0, 3), ERROR_FILE_NOT_FOUND},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    WIN32_FIND_DATAA data;
    EXPECT_FAILS_WITH(row.error, FindFirstFileA(row.path.c_str(), &data) == INVALID_HANDLE_VALUE);
  }
}

TEST_F(SearchContract, EntriesCarryTheFactsOfTheFile) {
  folder.Write("File.txt", "12345");
  ASSERT_TRUE(SetFileAttributesA(folder.Path("file.txt").c_str(), FILE_ATTRIBUTE_HIDDEN));
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(folder.Path("FILE.TXT").c_str(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_STREQ(data.cFileName, "File.txt");
  EXPECT_EQ(data.dwFileAttributes & ~FILE_ATTRIBUTE_ARCHIVE, DWORD{FILE_ATTRIBUTE_HIDDEN});
  EXPECT_EQ(data.nFileSizeLow, 5U);
  EXPECT_EQ(data.nFileSizeHigh, 0U);
  EXPECT_FAILS_WITH(ERROR_NO_MORE_FILES, !FindNextFileA(find, &data));
  EXPECT_TRUE(FindClose(find));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !FindNextFileA(find, &data));
}

TEST_F(SearchContract, DotsNameTheDirectoryItself) {
  folder.MakeDirectory("d");
  EXPECT_EQ(Search(folder.Path("d\\.")), std::vector<std::string>{"d"});
  EXPECT_EQ(Search(folder.Path("d\\e\\..")), std::vector<std::string>{"d"});
  EXPECT_EQ(Search(folder.Path("d\\*")), (std::vector<std::string>{".", ".."}));
}

TEST_F(SearchContract, FilesMayGoWhileASearchIsUnderWay) {
  for (const char* name : {"xa", "xb", "xc"}) folder.Write(name, "");
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(folder.Path("x?").c_str(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_STREQ(data.cFileName, "xa");
  EXPECT_TRUE(DeleteFileA(folder.Path("xa").c_str()));
  EXPECT_TRUE(FindNextFileA(find, &data));
  EXPECT_STREQ(data.cFileName, "xb");
  EXPECT_TRUE(FindClose(find));
}

}  // namespace
}  // namespace kozor::test
