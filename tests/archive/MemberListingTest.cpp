// MemberListingTest.cpp - which members a ZorFind selects, and what the archiver is asked for it.
#include "archive/MemberListing.h"

#include <ctime>

#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MemberListing : public RecordedArchiveTest {
 protected:
  MemberListing() { folder.WriteFile("a.lzh", "archive"); }

  ZorError List(const ZorFind& find, int background = 1) {
    return ZorListArchiveMembers(Lib("a.lzh").c_str(), find, list, background);
  }
  std::vector<std::string> Names() const { return {list.begin(), list.end()}; }

  ZorFileList list;
};

TEST_F(MemberListing, SearchesForAMaskWithoutRootAndMark) {
  const struct {
    const char* mask;
    const char* text;
  } rows[] = {{"*.txt", "*.txt"},
              {"sub\\", "sub\\*.*"},
              {"sub\\x.txt", "sub\\x.txt"},
              {"C:\\sub\\*.txt", "\\sub\\*.txt"},
              {"\\\\srv\\share\\d\\", "\\d\\*.*"},
              {"C:", "*.*"},
              {"", "*.*"},
              {">", "*.*"},
              {">>x", ">x"},
              {"\x95\x5C", "\x95\x5C"}};
  for (const auto& row : rows) {
    EXPECT_EQ(List(Selection("", {row.mask})), ZorErrorNone);
    EXPECT_THAT(TakeCalls("FindFirst "), ElementsAre(row.text)) << row.mask;
  }
}

TEST_F(MemberListing, OpensAndClosesTheArchiveForEachMaskInTheModeOfTheFlags) {
  ZorFind find = Selection("C:\\base", {"a", "b"});
  List(find);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("OpenArchive #\\a.lzh 0x801202", "FindFirst a", "CloseArchive",
                          "OpenArchive #\\a.lzh 0x801202", "FindFirst b", "CloseArchive"));
  find.SetSubDirectory(0);
  List(find, 0);
  EXPECT_EQ(TakeCalls("OpenArchive ").front(), "#\\a.lzh 0x801106");
  List(ZorFind());
  EXPECT_THAT(TakeCalls(), IsEmpty());
}

TEST_F(MemberListing, KeepsTheFirstOfEqualNamesWhenThereAreSeveralMasks) {
  recording.members = {{.name = "b/x.TXT"}, {.name = "a.txt"}, {.name = "B/X.txt"}};
  List(Selection("", {"*.*"}));
  EXPECT_THAT(Names(), ElementsAre("b\\x.TXT", "a.txt", "B\\X.txt"));
  list.RemoveAll();
  List(Selection("", {"a.txt", "*.*"}));
  EXPECT_THAT(Names(), ElementsAre("a.txt", "b\\x.TXT"));
}

TEST_F(MemberListing, TakesOutWhatAnExclusionMaskFindsWhereverItStands) {
  recording.members = {{.name = "a.txt"}, {.name = "b.tmp"}, {.name = "c.txt"}, {.name = "B.TMP"}};
  List(Selection("", {">*.tmp", "*.*"}));
  EXPECT_THAT(Names(), ElementsAre("a.txt", "c.txt"));
}

TEST_F(MemberListing, NamesWhatStoppedItAndKeepsWhatWasFound) {
  recording.members = {{.name = "x"}, {.name = "x"}};
  recording.archivesThatOpen = 1;
  EXPECT_EQ(List(Selection("", {"*.*", "*.*"})), ZorErrorArchiveOpen);
  EXPECT_THAT(Names(), ElementsAre("x", "x"));
  EXPECT_EQ(ZorListArchiveMembers(Lib("none.lzh").c_str(), ZorFind(), list, 1),
            ZorErrorArchiveNotFound);
}

// Comparing each name with each would take minutes.
TEST_F(MemberListing, CostsNoMoreThanTheNumberOfNames) {
  for (int i = 0; i < 100'000; ++i) {
    recording.members.push_back({.name = "directory/name" + std::to_string(i) + ".txt"});
  }
  const std::clock_t start = std::clock();
  EXPECT_EQ(List(Selection("", {"*.*", "*.txt", ">*7.txt"})), ZorErrorNone);
  EXPECT_EQ(list.GetCount(), 90'000);
  EXPECT_LT((std::clock() - start) / CLOCKS_PER_SEC, 20);  // of the processor's time
}

}  // namespace
}  // namespace kozor::test
