// CompressTest.cpp - Compress and CompressDir: names, lines, the response file, the old archive.
#include <sys/stat.h>

#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Compress : public RecordedArchiveTest {
 protected:
  Compress() {
    folder.WriteFile("src/a.txt", "a");
    folder.WriteFile("src/sub/b c.txt", "b");
  }

  int Run(const ZorFind& find, int append = 1, int selfExtracting = 0) {
    return archive.Compress(find, Lib("out/a.lzh").c_str(), append, selfExtracting);
  }
  int Run(int append = 1) { return Run(Selection(Lib("src"), {"*.*"}), append); }
  // The archiver's lines without their common beginning.
  std::vector<std::string> TakeLines() { return TakeCalls("Unlha: a" + kOptions); }
};

TEST_F(Compress, GivesEachFileALineOfItsOwnWithoutAWorkDirectory) {
  EXPECT_EQ(Run(Selection(Lib("src") + "\\", {"*.*", (Lib("src") + "\\*.tmp").c_str()})), 1);
  EXPECT_THAT(TakeLines(), ElementsAre(" -w0 \"#\\out\\a.lzh\" \"#\\src\\\" \"a.txt\"",
                                       " -w0 \"#\\out\\a.lzh\" \"#\\src\\\" \"sub\\b c.txt\""));
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run(Selection(Lib("src"), {(Lib("src") + "\\a.txt").c_str()})), 1);
  EXPECT_THAT(TakeLines(), ElementsAre(" -jsb -w0 \"#\\out\\a.lzh\" \"#\\src\\a.txt\""));
}

TEST_F(Compress, GivesAllFilesInOneResponseFileInTheWorkDirectory) {
  folder.WriteFile("tmp/~$ZORARC.RSP", std::string(1000, 'x'));
  const std::string response = "tmp/~$ZORARC.RSP";
  std::string contents;
  recording.during = [&] {
    const Bytes bytes = folder.ReadFile(response);
    contents.assign(bytes.begin(), bytes.end());
  };
  for (const char* work : {"tmp", "tmp\\"}) {
    archive.SetWorkDirectory((Lib("") + "\\" + work).c_str());
    const std::string rooted = Lib("src") + "\\a.txt";
    EXPECT_EQ(Run(Selection(Lib("src"), {rooted.c_str(), "*.*"})), 1);
    EXPECT_EQ(contents, "\"" + rooted + "\"\n\"sub\\b c.txt\"\n");
    EXPECT_FALSE(folder.Exists(response));
    EXPECT_THAT(TakeLines(), ElementsAre(" \"-w#\\tmp\\\" \"#\\out\\a.lzh\" \"#\\src\\\" "
                                         "\"@#\\tmp\\~$ZORARC.RSP\""));
  }
  EXPECT_EQ(Run(Selection("", {(Lib("src") + "\\a.txt").c_str()})), 1);
  EXPECT_THAT(TakeLines(),
              ElementsAre(" \"-w#\\tmp\\\" \"#\\out\\a.lzh\" \"@#\\tmp\\~$ZORARC.RSP\""));
}

TEST_F(Compress, TakesTheResponseFileAwayWhateverTheArchiverSays) {
  folder.WriteFile("tmp/keep", "");
  archive.SetWorkDirectory(Lib("tmp").c_str());
  recording.results = {0x800D};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileOpen);
  EXPECT_THAT(folder.List("tmp"), ElementsAre("keep"));
  // One that resists isn't worth a failure.
  recording.during = [&] { chmod(folder.Path("tmp/~$ZORARC.RSP").c_str(), 0444); };
  EXPECT_EQ(Run(), 1);
  recording.during = nullptr;
  // And now it can't be written.
  TakeCalls();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileOpen);
  EXPECT_THAT(TakeLines(), IsEmpty());
}

TEST_F(Compress, ReportsItsOwnBeginAndEndWithTheNumberOfFiles) {
  recording.reports = {{0, 0, 0, ""}, {6, 0, 1, "x"}};
  EXPECT_EQ(Run(), 1);
  EXPECT_THAT(TakeCalls("OnAbort 0 "),
              ElementsAre("0 0/2 0/0 '#\\out\\a.lzh' -", "3 1/2 1/1 '#\\out\\a.lzh' 'x'",
                          "3 2/2 1/1 '#\\out\\a.lzh' 'x'", "4 2/2 1/1 '#\\out\\a.lzh' 'x'"));
}

TEST_F(Compress, LeavesOutTheFilesBehindAFailingOne) {
  folder.WriteFile("src/z.txt", "z");
  recording.results = {0, 0x8013};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngine8013);
  EXPECT_EQ(TakeLines().size(), 2U);
}

TEST_F(Compress, RemovesAnOldArchiveUnlessItAdds) {
  folder.WriteFile("out/a.lzh", "old");
  EXPECT_EQ(Run(1), 1);
  EXPECT_TRUE(folder.Exists("out/a.lzh"));
  chmod(folder.Path("out/a.lzh").c_str(), 0444);
  EXPECT_EQ(Run(0), 1);  // the one that resists is added to
  EXPECT_TRUE(folder.Exists("out/a.lzh"));
  chmod(folder.Path("out/a.lzh").c_str(), 0644);
  archive.stopInPhase = 0;
  EXPECT_EQ(Run(0), 0);
  EXPECT_FALSE(folder.Exists("out/a.lzh"));
}

TEST_F(Compress, RefusesNamesInTheArchiveUnlessItMayOverwrite) {
  folder.WriteFile("out/a.lzh", "old");
  recording.members = {{.name = "SUB/B C.TXT"}};
  EXPECT_EQ(Run(1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorSameName);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning", "SetOwnerWindowEx", "SetCursorMode 0",
                                       "OpenArchive #\\out\\a.lzh 0x801202", "FindFirst *.*",
                                       "CloseArchive", "KillOwnerWindowEx"));
  // A file with a root meets the member of its name behind the root.
  const std::string rooted = Lib("src") + "\\a.txt";
  recording.members = {{.name = rooted.substr(2)}};
  EXPECT_EQ(Run(Selection("", {rooted.c_str()})), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorSameName);

  recording.archivesThatOpen = 0;
  EXPECT_EQ(Run(1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
  archive.SetOverwriteMode(1);
  TakeCalls();
  EXPECT_EQ(Run(1), 1);
  EXPECT_EQ(TakeLines().size(), 2U);
}

TEST_F(Compress, RefusesFilesThatWouldMeetAtOneStoredName) {
  folder.WriteFile("d/src/a.txt", "a");
  ASSERT_NE(DefineDosDeviceA(0, "D:", folder.Path("d").c_str()), 0);
  ASSERT_NE(DefineDosDeviceA(0, "E:", folder.Path().c_str()), 0);
  EXPECT_EQ(Run(Selection("", {"D:\\src\\*.*", "E:\\SRC\\A.TXT"})), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorSameName);
  EXPECT_EQ(Run(Selection("", {"D:\\src\\*.*", "E:\\src\\sub\\*.*"})), 1);
  // Names under the base directory aren't compared with those of other roots.
  EXPECT_EQ(Run(Selection("E:\\", {"D:\\src\\a.txt", "src\\a.txt"})), 1);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "D:", nullptr);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "E:", nullptr);
}

TEST_F(Compress, CountsAnEmptySelectionAsCancelled) {
  folder.WriteFile("out/a.lzh", "old");
  EXPECT_EQ(Run(Selection(Lib("src"), {"*.none"}), 0), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
  EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  EXPECT_FALSE(folder.Exists("out/a.lzh"));
}

TEST_F(Compress, DoesntStoreDirectoriesNorChangeTheCallersSelection) {
  ZorFind find = Selection(Lib("src"), {"*.*"});
  EXPECT_EQ(Run(find), 1);
  EXPECT_EQ(find.GetAttribute(), 0x37U);
  EXPECT_EQ(TakeLines().size(), 2U);
}

TEST_F(Compress, ConvertsSilentlyIntoTheArchivesFolder) {
  recording.reports = {{6, 0, 1, "x"}};
  EXPECT_EQ(Run(Selection(Lib("src"), {"a.txt"}), 1, 1), 1);
  EXPECT_EQ(recording.calls[recording.calls.size() - 3],
            "Unlha: s -gw4 \"#\\out\\a.lzh\" \"#\\out\\\"");
  EXPECT_EQ(TakeCalls("OnAbort").size(), 3U);
  EXPECT_EQ(archive.Compress(Selection(Lib("src"), {"a.txt"}), "a\x95\x5C.lzh", 1, 1), 1);
  EXPECT_THAT(TakeCalls("Unlha: s -gw4 "), ElementsAre("\"a\x95\x5C.lzh\" \"a\x95\x5C.lzh\""));
  recording.results = {0, 0x801C};
  EXPECT_EQ(Run(Selection(Lib("src"), {"a.txt"}), 1, 1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngine801C);
}

// A quote would end its name on the line, and the rest would name something else.
TEST_F(Compress, RefusesAQuoteInAName) {
  EXPECT_EQ(archive.CompressDir("C:\\a\" \"b", Lib("out/a.lzh").c_str(), 1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileOpen);
  EXPECT_THAT(TakeCalls("Unlha"), IsEmpty());
}

TEST_F(Compress, HandsADirectoryOverWithoutLookingAtIt) {
  folder.WriteFile("out/a.lzh", "old");
  for (const char* directory : {"C:\\none", "C:\\none\\"}) {
    EXPECT_EQ(archive.CompressDir(directory, Lib("out/a.lzh").c_str(), 0), 1);
    EXPECT_THAT(TakeLines(), ElementsAre(" -w0 -d1 \"#\\out\\a.lzh\" \"C:\\none\\\""));
    EXPECT_FALSE(folder.Exists("out/a.lzh"));
  }
  archive.SetBackgroundMode(0);
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(archive.CompressDir("", Lib("out/a.lzh").c_str(), 1), 1);
  EXPECT_THAT(recording.calls,
              testing::Contains("Unlha: a" + kOptions +
                                " -jsb \"-wC:\\tmp\\\" -d1 \"#\\out\\a.lzh\" \"\""));
  EXPECT_THAT(TakeCalls("OnAbort "),
              ElementsAre("0 0 0/0 0/0 '#\\out\\a.lzh' -", "0 4 0/0 0/0 '#\\out\\a.lzh' -"));
}

}  // namespace
}  // namespace kozor::test
