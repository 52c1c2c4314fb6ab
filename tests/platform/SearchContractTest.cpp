// SearchContractTest.cpp - FindFirstFileA: what it finds, in which order, by which wild-cards.
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

using PlatformSearchContract = ContractTest;

TEST_F(PlatformSearchContract, EntriesComeByNameWithoutRegardToCase) {
  for (const char* name : {"b.txt", "A.TXT", "c", "_x", "B2", "a1", "Z"}) folder.Write(name, "");
  folder.MakeDirectory("aa");
  EXPECT_EQ(Search(folder.Path("*")), Search(folder.Path("*.*")));
  EXPECT_EQ(Search(folder.Path("*")),
            (Names{".", "..", "A.TXT", "a1", "aa", "b.txt", "B2", "c", "Z", "_x"}));
}

// WildCardTest has a table of the rules; these tests show that the real calls follow them.
TEST_F(PlatformSearchContract, WildCardsFollowTheRealRules) {
  if (UnderWine()) GTEST_SKIP() << "Wine 8 takes a question mark for any one character";
  for (const char* name : {"a", "ab", "a.b", "abc.txt", "a.b.txt"}) folder.Write(name, "");
  const std::pair<const char*, Names> rows[] = {{"*.*", {"a", "a.b", "a.b.txt", "ab", "abc.txt"}},
                                                {"*.", {"a", "ab"}},
                                                {"*.TX?", {"a.b.txt", "abc.txt"}},
                                                {"a.*", {"a", "a.b", "a.b.txt"}},
                                                {"??.?", {"a", "a.b", "ab"}},
                                                {"ABC.TXT", {"abc.txt"}}};
  for (const auto& [mask, names] : rows) {
    EXPECT_EQ(SearchWithoutDots(folder.Path(mask)), names) << mask;
  }
}

TEST_F(PlatformSearchContract, FailuresTellWhatIsMissing) {
  folder.MakeDirectory("empty");
  const std::pair<std::string, DWORD> rows[] = {{folder.Path("*.x"), ERROR_FILE_NOT_FOUND},
                                                {folder.Path("none\\*"), ERROR_PATH_NOT_FOUND},
                                                {folder.Path("empty\\"), ERROR_FILE_NOT_FOUND},
                                                {folder.Path("e*\\*"), ERROR_INVALID_NAME},
                                                {"C:\\", ERROR_FILE_NOT_FOUND},
                                                {"", ERROR_PATH_NOT_FOUND}};
  for (const auto& [path, error] : rows) {
    SCOPED_TRACE(path);
    WIN32_FIND_DATAA data;
    EXPECT_FAILS_WITH(error, FindFirstFileA(path.c_str(), &data) == INVALID_HANDLE_VALUE);
  }
}

TEST_F(PlatformSearchContract, DotsNameTheDirectoryItself) {
  folder.MakeDirectory("d");
  EXPECT_EQ(Search(folder.Path("d\\.")), Names{"d"});
  EXPECT_EQ(Search(folder.Path("d\\e\\..")), Names{"d"});
  EXPECT_EQ(Search(folder.Path("d\\*")), (Names{".", ".."}));
}

TEST_F(PlatformSearchContract, FilesMayGoWhileASearchIsUnderWay) {
  for (const char* name : {"xa", "xb", "xc"}) folder.Write(name, "");
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(folder.Path("x?").c_str(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(folder.Delete(data.cFileName));
  EXPECT_TRUE(FindNextFileA(find, &data));
  EXPECT_STREQ(data.cFileName, "xb");
  EXPECT_TRUE(FindClose(find));
}

}  // namespace
}  // namespace kozor::test
