// SearchContractTest.cpp - FindFirstFileA: what it finds, in which order, by which wild-cards.
#include <algorithm>

#include "tests/platform/Contract.h"
#include "tests/platform/WildCardRows.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using PlatformSearchContract = ContractTest;

TEST_F(PlatformSearchContract, EntriesComeByNameWithoutRegardToCase) {
  for (const char* name : {"b.txt", "A.TXT", "c", "_x", "B2", "a1", "Z"}) folder.Write(name, "");
  folder.MakeDirectory("aa");
  EXPECT_EQ(Search(folder.Path("*")), Search(folder.Path("*.*")));
  EXPECT_EQ(Search(folder.Path("*")),
            (Names{".", "..", "A.TXT", "a1", "aa", "b.txt", "B2", "c", "Z", "_x"}));
}

bool IsAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c > 0; });
}

TEST_F(PlatformSearchContract, WildCardsFollowTheRealRules) {
  for (const WildCardRow& row : kWildCardRows) {
    for (const auto names : {row.matches, row.others}) {
      for (const auto name : Words(names)) {
        if (IsAscii(name) && !name.ends_with('.')) folder.Write(std::string(name), "");
      }
    }
  }
  int compared = 0;
  for (const WildCardRow& row : kWildCardRows) {
    if (row.mask.empty() || row.mask.starts_with('\\') || !IsAscii(row.mask)) continue;
    // A name with a trailing dot is another file on POSIX.
    if (row.mask.starts_with("a.") && row.mask.ends_with('.')) continue;
    // Wine 8 takes a question mark for any one character, and ignores a dot at the end.
    const bool isSpecial = row.mask.ends_with('.') || std::ranges::count(row.mask, '?') != 0;
    if (isSpecial && UnderWine()) continue;
    const Names found = Search(folder.Path(std::string(row.mask)));
    const auto expect = [&](std::string_view names, bool match) {
      for (const auto word : Words(names)) {
        const std::string name(word);
        if (!folder.Exists(name) || name.ends_with('.')) continue;
        // Windows also finds a name by its short form, with an extension of three characters.
        if (!match && fs::path(name).extension().string().size() > 4) continue;
        const auto isIt = [&](const std::string& other) {
          return _mbsicmp(Mbs(other), Mbs(name)) == 0;
        };
        EXPECT_EQ(std::ranges::any_of(found, isIt), match) << row.mask << ' ' << name;
        ++compared;
      }
    };
    expect(row.matches, true);
    expect(row.others, false);
  }
  EXPECT_GT(compared, 100);
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
