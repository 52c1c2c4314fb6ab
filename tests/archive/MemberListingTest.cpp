// MemberListingTest.cpp - which members a ZorFind selects, by which calls of the archiver, and how
// Delete uses them.
#include "RecordedArchive.h"
#include "archive/ArchiveSearch.h"

namespace kozor::test {
namespace {

class ArchiveMemberListing : public ArchiveRecorded {
 protected:
  ZorError List(const ZorFind& find, int background = 1) {
    list.RemoveAll();
    return ZorListArchiveMembers(path.c_str(), find, list, background);
  }
  std::vector<std::string> Names() const { return {list.begin(), list.end()}; }

  ZorFileList list;
};

TEST_F(ArchiveMemberListing, SearchesForAMaskWithoutRootAndMark) {
  const char* const rows[][2] = {{"sub\\", "sub\\*.*"},
                                 {"sub\\x.txt", "sub\\x.txt"},
                                 {"C:\\sub\\*.txt", "\\sub\\*.txt"},
                                 {"\\\\srv\\share\\d\\", "\\d\\*.*"},
                                 {"C:", "*.*"},
                                 {"", "*.*"},
                                 {">", "*.*"},
                                 {">>x", ">x"},
                                 {"\x95\x5C", "\x95\x5C"}};
  for (const auto& [mask, text] : rows) {
    EXPECT_EQ(List(Selection("", {mask})), ZorErrorNone);
    EXPECT_THAT(TakeCalls("FindFirst "), ElementsAre(text)) << mask;
  }
}

TEST_F(ArchiveMemberListing, OpensAndClosesTheArchiveForEachMaskInTheModeOfTheFlags) {
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

TEST_F(ArchiveMemberListing, KeepsTheFirstOfEqualNamesAndNoneThatAnExclusionMaskFinds) {
  recording.members = {{.name = "b/x.TXT"}, {.name = "a.txt"}, {.name = "B/X.txt"}};
  List(Selection("", {"*.*"}));
  EXPECT_THAT(Names(), ElementsAre("b\\x.TXT", "a.txt", "B\\X.txt"));
  List(Selection("", {"a.txt", "*.*"}));
  EXPECT_THAT(Names(), ElementsAre("a.txt", "b\\x.TXT"));

  recording.members = {{.name = "a.txt"}, {.name = "b.tmp"}, {.name = "c.txt"}, {.name = "B.TMP"}};
  List(Selection("", {">*.tmp", "*.*"}));
  EXPECT_THAT(Names(), ElementsAre("a.txt", "c.txt"));
}

class ArchiveDelete : public ArchiveRecorded {
 protected:
  ArchiveDelete() {
    recording.members = {{.name = "d/f.txt"}, {.name = "g.txt"}, {.name = "h.tmp"}};
  }
  ZorError Run(std::initializer_list<std::string> masks) {
    return ErrorOf(archive.Delete(Selection("C:\\base", masks), path.c_str()));
  }
};

TEST_F(ArchiveDelete, HandsASingleMaskOverAsItIs) {
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(Run({">*.none"}), ZorErrorNone);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning", "SetCursorMode 0", "SetOwnerWindowEx",
                                       "OnAbort 1 0 0/1 0/0 '#\\a.lzh' -",
                                       "Unlha: d" + kOptions + " -w0 \"#\\a.lzh\" \">*.none\"",
                                       "OnAbort 1 4 0/1 0/0 '#\\a.lzh' -", "KillOwnerWindowEx"));
}

TEST_F(ArchiveDelete, ResolvesSeveralMasksIntoNames) {
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run({"*.*", ">*.tmp"}), ZorErrorNone);
  EXPECT_THAT(recording.calls, testing::Contains("OnAbort 1 0 0/2 0/0 '#\\a.lzh' -"));
  EXPECT_THAT(TakeCalls("Unlha: d" + kOptions),
              ElementsAre(" -jyd -w0 \"#\\a.lzh\" \"d\\f.txt\" \"g.txt\""));
}

TEST_F(ArchiveDelete, DoesntTroubleTheArchiverForNothing) {
  for (const bool noMask : {true, false}) {
    EXPECT_EQ(noMask ? Run({}) : Run({"*.none", "*.not"}), ZorErrorCanceled);
    EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  }
  recording.archivesThatOpen = 0;
  EXPECT_EQ(Run({"*.txt", "*.tmp"}), ZorErrorArchiveOpen);
}

}  // namespace
}  // namespace kozor::test
