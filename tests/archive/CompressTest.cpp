// CompressTest.cpp - Compress and CompressDir: names, lines, the response file, the old archive.

#include "RecordedArchive.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class ArchiveCompress : public ArchiveRecorded {
 protected:
  ArchiveCompress() {
    folder.WriteFile("src/a.txt", "a");
    folder.WriteFile("src/sub/b c.txt", "b");
  }

  ZorError Run(const ZorFind& find, int append = 1, int selfExtracting = 0) {
    return ErrorOf(archive.Compress(find, path.c_str(), append, selfExtracting));
  }
  ZorError Run(int append = 1) { return Run(Selection(Lib("src"), {"*.*"}), append); }
  // The archiver's command lines without their common prefix.
  std::vector<std::string> TakeLines() { return TakeCalls("Unlha: a" + kOptions); }

  const std::string rooted = Lib("src/a.txt");
};

TEST_F(ArchiveCompress, GivesEachFileALineOfItsOwnWithoutAWorkDirectory) {
  archive.SetWorkDirectory(nullptr);
  EXPECT_EQ(Run(Selection(Lib("src") + "\\", {"*.*", Lib("src/*.tmp")})), ZorErrorNone);
  EXPECT_THAT(TakeLines(), ElementsAre(" -w0 \"#\\a.lzh\" \"#\\src\\\" \"a.txt\"",
                                       " -w0 \"#\\a.lzh\" \"#\\src\\\" \"sub\\b c.txt\""));
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run(Selection(Lib("src"), {rooted})), ZorErrorNone);
  EXPECT_THAT(TakeLines(), ElementsAre(" -jsb -w0 \"#\\a.lzh\" \"#\\src\\a.txt\""));
}

TEST_F(ArchiveCompress, GivesAllFilesInOneResponseFileInTheWorkDirectory) {
  folder.WriteFile("tmp/~$ZORARC.RSP", std::string(1000, 'x'));
  std::string contents;
  recording.during = [&] { contents = folder.ReadText("tmp/~$ZORARC.RSP"); };
  for (const char* work : {"tmp", "tmp\\"}) {
    archive.SetWorkDirectory(Lib(work).c_str());
    EXPECT_EQ(Run(Selection(Lib("src"), {rooted, "*.*"})), ZorErrorNone);
    EXPECT_EQ(contents, "\"" + rooted + "\"" + kTextLineEnd + "\"sub\\b c.txt\"" + kTextLineEnd);
    EXPECT_THAT(folder.List("tmp"), IsEmpty());
    EXPECT_THAT(TakeLines(),
                ElementsAre(" \"-w#\\tmp\\\" \"#\\a.lzh\" \"#\\src\\\" \"@#\\tmp\\~$ZORARC.RSP\""));
  }
  EXPECT_EQ(Run(Selection("", {rooted})), ZorErrorNone);
  EXPECT_THAT(TakeLines(), ElementsAre(" \"-w#\\tmp\\\" \"#\\a.lzh\" \"@#\\tmp\\~$ZORARC.RSP\""));
}

TEST_F(ArchiveCompress, TakesTheResponseFileAwayWhateverTheArchiverSays) {
  folder.WriteFile("tmp/keep", "");
  archive.SetWorkDirectory(Lib("tmp").c_str());
  recording.results = {0x800D};
  EXPECT_EQ(Run(), ZorErrorFileOpen);
  EXPECT_THAT(folder.List("tmp"), ElementsAre("keep"));
  // A file that can't be removed isn't an error.
  recording.during = [&] { SetReadOnly(folder.Path("tmp/~$ZORARC.RSP")); };
  EXPECT_EQ(Run(), ZorErrorNone);
  recording.during = nullptr;
  // And now it can't be written.
  TakeCalls();
  EXPECT_EQ(Run(), ZorErrorFileOpen);
  EXPECT_THAT(TakeLines(), IsEmpty());
}

TEST_F(ArchiveCompress, ReportsItsOwnBeginAndEndWithTheNumberOfFiles) {
  recording.reports = {{0, 0, 0, ""}, {6, 0, 1, "x"}};
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_THAT(TakeCalls("OnAbort 0 "),
              ElementsAre("0 0/2 0/0 '#\\a.lzh' -", "3 1/2 1/1 '#\\a.lzh' 'x'",
                          "3 2/2 1/1 '#\\a.lzh' 'x'", "4 2/2 1/1 '#\\a.lzh' 'x'"));
}

TEST_F(ArchiveCompress, LeavesOutTheFilesBehindAFailingOne) {
  folder.WriteFile("src/z.txt", "z");
  recording.results = {0, 0x8013};
  EXPECT_EQ(Run(), ZorErrorEngine8013);
  EXPECT_EQ(TakeLines().size(), 2U);
}

TEST_F(ArchiveCompress, RemovesAnOldArchiveUnlessItAdds) {
  EXPECT_EQ(Run(1), ZorErrorNone);
  EXPECT_TRUE(folder.Exists("a.lzh"));
  SetReadOnly(folder.Path("a.lzh"));
  EXPECT_EQ(Run(0), ZorErrorNone);  // members are added to an archive that can't be removed
  EXPECT_TRUE(folder.Exists("a.lzh"));
  SetReadOnly(folder.Path("a.lzh"), false);
  TakeCalls();
  EXPECT_EQ(Run(Selection(Lib("src"), {"*.none"}), 0), ZorErrorCanceled);
  EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(ArchiveCompress, RefusesNamesInTheArchiveUnlessItMayOverwrite) {
  recording.members = {{.name = "SUB/B C.TXT"}};
  EXPECT_EQ(Run(1), ZorErrorSameName);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning", "SetOwnerWindowEx", "SetCursorMode 0",
                                       "OpenArchive #\\a.lzh 0x801202", "FindFirst *.*",
                                       "CloseArchive", "KillOwnerWindowEx"));
  // A file with a root conflicts with the member named like its path after the root.
  recording.members = {{.name = rooted.substr(2)}};
  EXPECT_EQ(Run(Selection("", {rooted})), ZorErrorSameName);

  recording.archivesThatOpen = 0;
  EXPECT_EQ(Run(1), ZorErrorArchiveOpen);
  archive.SetOverwriteMode(1);
  EXPECT_EQ(Run(1), ZorErrorNone);
}

TEST_F(ArchiveCompress, RefusesFilesThatWouldMeetAtOneStoredName) {
  if (!Can(Ability::MappingDrives)) GTEST_SKIP() << "Wine finds nothing on drives made of folders";
  folder.WriteFile("d/src/a.txt", "a");
  ASSERT_NE(DefineDosDeviceA(0, "D:", folder.Path("d").string().c_str()), 0);
  ASSERT_NE(DefineDosDeviceA(0, "E:", folder.Path().string().c_str()), 0);
  EXPECT_EQ(Run(Selection("", {"D:\\src\\*.*", "E:\\SRC\\A.TXT"})), ZorErrorSameName);
  EXPECT_EQ(Run(Selection("", {"D:\\src\\*.*", "E:\\src\\sub\\*.*"})), ZorErrorNone);
  // Names below the base directory aren't compared with those of other roots.
  EXPECT_EQ(Run(Selection("E:\\", {"D:\\src\\a.txt", "src\\a.txt"})), ZorErrorNone);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "D:", nullptr);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "E:", nullptr);
}

TEST_F(ArchiveCompress, ConvertsSilentlyIntoTheArchivesFolder) {
  const ZorFind find = Selection(Lib("src"), {"a.txt"});
  recording.reports = {{6, 0, 1, "x"}};
  EXPECT_EQ(Run(find, 1, 1), ZorErrorNone);
  EXPECT_EQ(recording.calls[recording.calls.size() - 3], "Unlha: s -gw4 \"#\\a.lzh\" \"#\\\"");
  EXPECT_EQ(TakeCalls("OnAbort").size(), 3U);
  EXPECT_EQ(ErrorOf(archive.Compress(find, "a\x95\x5C.lzh", 1, 1)), ZorErrorNone);
  EXPECT_THAT(TakeCalls("Unlha: s -gw4 "), ElementsAre("\"a\x95\x5C.lzh\" \"a\x95\x5C.lzh\""));
  recording.results = {0, 0x801C};
  EXPECT_EQ(Run(find, 1, 1), ZorErrorEngine801C);
}

TEST_F(ArchiveCompress, HandsADirectoryOverWithoutLookingAtIt) {
  for (const char* directory : {"C:\\none", "C:\\none\\"}) {
    EXPECT_EQ(ErrorOf(archive.CompressDir(directory, path.c_str(), 0)), ZorErrorNone);
    EXPECT_THAT(TakeCalls(),
                ElementsAre("GetRunning", "SetOwnerWindowEx", "SetCursorMode 0",
                            "OnAbort 0 0 0/0 0/0 '#\\a.lzh' -",
                            "Unlha: a" + kOptions + " -w0 -d1 \"#\\a.lzh\" \"C:\\none\\\"",
                            "OnAbort 0 4 0/0 0/0 '#\\a.lzh' -", "KillOwnerWindowEx"));
    EXPECT_FALSE(folder.Exists("a.lzh"));
  }
  archive.SetBackgroundMode(0);
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(ErrorOf(archive.CompressDir("", path.c_str(), 1)), ZorErrorNone);
  EXPECT_THAT(TakeLines(), ElementsAre(" -jsb \"-wC:\\tmp\\\" -d1 \"#\\a.lzh\" \"\""));
}

}  // namespace
}  // namespace kozor::test
