// ExtractTest.cpp - Extract against the recording archiver: targets, reports, failures.

#include "RecordedArchive.h"
#include "ZorFileServices.h"
#include "archive/MappedFile.h"

namespace kozor::test {
namespace {

constexpr std::int64_t kStamp = 1'000'000'000;

class ArchiveExtract : public ArchiveRecorded {
 protected:
  ArchiveExtract() {
    recording.members = {{.name = "d/f.txt", .contents = "hello"},
                         {.name = "g.txt", .contents = "", .attribute = 0x21}};
  }

  ZorError Run(const char* mask = nullptr) {
    return ErrorOf(archive.Extract(path.c_str(), Lib("out").c_str(), mask));
  }
  unsigned int Attribute(const std::string& name) const {
    unsigned int attribute = 0;
    EXPECT_NE(ZorGetFileAttribute(Lib(name).c_str(), attribute), 0);
    return attribute;
  }
};

TEST_F(ArchiveExtract, TreatsOneMemberAfterTheOther) {
  recording.reports = {{1, 2, 5, ""}};
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run(), ZorErrorNone);
  const std::string first = " '#\\out\\d\\f.txt' 'd\\f.txt' 5 2e45 6000 20";
  const std::string second = " '#\\out\\g.txt' 'g.txt' 0 2e45 6000 21";
  EXPECT_THAT(
      TakeCalls(),
      ElementsAre(
          "GetRunning", "SetCursorMode 0", "SetOwnerWindowEx", "OpenArchive #\\a.lzh 0x801206",
          "FindFirst *.*", "CloseArchive", "OnAbort 1 0 0/2 0/0 '#\\a.lzh' -",
          //
          "OnMakeFileName '#\\out\\' 'd\\f.txt'", "OpenArchive #\\a.lzh 0x801006",
          "FindFirst \"d\\f.txt\"", "GetAttribute", "CloseArchive",
          "OnAbort 1 1 0/2 0/5 '#\\a.lzh'" + first,
          "ExtractMem 1029 time attribute:" + kOptions + " -jsb \"#\\a.lzh\" \"d\\f.txt\"",
          "OnAbort 1 2 0/2 2/5 '#\\a.lzh'" + first, "OnAbort 1 3 1/2 5/5 '#\\a.lzh'" + first,
          //
          "OnMakeFileName '#\\out\\' 'g.txt'", "OpenArchive #\\a.lzh 0x801006",
          "FindFirst \"g.txt\"", "GetAttribute", "CloseArchive",
          "OnAbort 1 1 1/2 0/0 '#\\a.lzh'" + second,
          "ExtractMem 1024 time attribute:" + kOptions + " -jsb \"#\\a.lzh\" \"g.txt\"",
          "OnAbort 1 2 1/2 2/5 '#\\a.lzh'" + second, "OnAbort 1 3 2/2 0/0 '#\\a.lzh'" + second,
          "OnAbort 1 4 2/2 0/0 '#\\a.lzh'" + second, "KillOwnerWindowEx"));
}

TEST_F(ArchiveExtract, MakesFilesWithContentsTimesAndAttributesUnlessToldNotTo) {
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_EQ(folder.ReadText("out/d/f.txt"), "hello");
  EXPECT_EQ(folder.ReadText("out/g.txt"), "");
  EXPECT_EQ(folder.GetTime("out/d/f.txt"), kStamp);
  EXPECT_EQ(Attribute("out/g.txt"), 0x21U);

  SetReadOnly(folder.Path("out/g.txt"), false);
  std::filesystem::remove_all(folder.Path("out"));
  archive.SetExtractFileAttibuteMode(0);
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_EQ(folder.GetTime("out/g.txt"), kStamp);
  EXPECT_EQ(Attribute("out/g.txt") & 1U, 0U);
}

TEST_F(ArchiveExtract, NeedsADestinationWithARootBeforeAnythingElse) {
  EXPECT_EQ(ErrorOf(archive.Extract("C:\\none", nullptr, nullptr)), ZorErrorNoDirectory);
  EXPECT_THAT(TakeCalls(), ElementsAre("OnAbort 0 4 0/0 0/0 - -"));
  const ZorFind find = Selection(Lib("out"), {"*.*"});
  EXPECT_EQ(ErrorOf(archive.Extract(find, path.c_str(), "")), ZorErrorNoDirectory);
  EXPECT_EQ(ErrorOf(archive.Extract(path.c_str(), "out", nullptr)), ZorErrorMakeDirectory);
  EXPECT_EQ(ErrorOf(archive.Extract(find, path.c_str(), nullptr)), ZorErrorNone);
  EXPECT_TRUE(folder.Exists("out/d/f.txt"));
}

TEST_F(ArchiveExtract, TakesASelectionAndCountsAnEmptyOneAsCancelled) {
  ZorFind find = Selection(Lib("out"), {"*.txt", ">g.txt"});
  find.SetSubDirectory(0);
  EXPECT_EQ(ErrorOf(archive.Extract(find, path.c_str(), Lib("else").c_str())), ZorErrorNone);
  EXPECT_THAT(folder.List("else"), ElementsAre("d/", "d/f.txt"));
  TakeCalls();
  EXPECT_EQ(Run("*.none"), ZorErrorCanceled);
  EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
}

TEST_F(ArchiveExtract, SkipsAMemberWithoutATarget) {
  archive.makeName = [this](const char* name) {
    return name[0] == 'd' ? CString() : CString((Lib("else\\") + name).c_str());
  };
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_THAT(folder.List(), ElementsAre("a.lzh", "else/", "else/g.txt"));
  EXPECT_THAT(TakeCalls("OnAbort 1 3 "),
              ElementsAre("1/2 5/5 '#\\a.lzh' '' 'd\\f.txt' 5 2e45 6000 20",
                          "2/2 0/0 '#\\a.lzh' '#\\else\\g.txt' 'g.txt' 0 2e45 6000 21"));
}

TEST_F(ArchiveExtract, OffersNamesWithoutTheirRoot) {
  recording.members = {{.name = "\\d\\f.txt"}, {.name = "E:\\d\\g.txt"}, {.name = "E:h.txt"}};
  archive.makeName = [](const char*) { return CString(); };
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_THAT(TakeCalls("OnMakeFileName '#\\out\\' "),
              ElementsAre("'\\d\\f.txt'", "'\\d\\g.txt'", "'E:h.txt'"));
}

TEST(ArchiveExtractNames, AreJoinedByTheDefaultRule) {
  struct NameMaker : ZorArchive {
    using ZorArchive::OnMakeFileName;
  };
  const char* const rows[][3] = {
      {"D:\\out\\", "d\\f.txt", "D:\\out\\d\\f.txt"},
      {"D:\\out\\", "\\d\\f.txt", "D:\\d\\f.txt"},
      {"\\\\srv\\share\\out\\", "\\d\\f.txt", "\\\\srv\\share\\d\\f.txt"},
      {"out\\", "\\d\\f.txt", "\\d\\f.txt"},
      {"D:\\out\\", "\x95\x5C\\f", "D:\\out\\\x95\x5C\\f"},
      {"D:out", "\\f", "D:\\f"},
      {"D:", "\\f", "D:\\f"}};
  NameMaker maker;
  for (const auto& [directory, name, target] : rows) {
    EXPECT_STREQ(maker.OnMakeFileName(directory, name), target) << directory;
  }
}

// The directory of two consecutive members disappears before the second one.
TEST_F(ArchiveExtract, MakesADirectoryAgainThatWasRemovedMeanwhile) {
  recording.members = {{.name = "d/1"}, {.name = "d/2"}};
  archive.inPhase = [this](int phase) {
    if (phase == ZorArchive::PhaseFileEnd) std::filesystem::remove_all(folder.Path("out/d"));
  };
  EXPECT_EQ(Run(), ZorErrorNone);
  archive.inPhase = nullptr;
  recording.members = {{.name = "d/1"}, {.name = "e/2"}, {.name = "d/3"}};
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_THAT(folder.List("out"), ElementsAre("d/", "d/1", "d/3", "e/", "e/2"));
}

TEST_F(ArchiveExtract, ReplacesExistingFilesButNotReadOnlyOnes) {
  folder.WriteFile("out/d/f.txt", "longer than before");
  folder.WriteFile("out/g.txt", "kept");
  SetReadOnly(folder.Path("out/g.txt"));
  EXPECT_EQ(Run(), ZorErrorFileFailure);
  EXPECT_EQ(folder.ReadText("out/d/f.txt"), "hello");
  EXPECT_EQ(folder.ReadText("out/g.txt"), "kept");
}

TEST_F(ArchiveExtract, LeavesThePartOfAFailedMemberTrimmedAndUnstamped) {
  recording.results = {0x800C};
  EXPECT_EQ(Run(), ZorErrorEngine800C);
  EXPECT_EQ(folder.ReadText("out/d/f.txt"), "hello");
  EXPECT_NE(folder.GetTime("out/d/f.txt"), kStamp);
  EXPECT_FALSE(folder.Exists("out/g.txt"));
}

// The last report repeats the contents of the record, whose texts must still be valid.
TEST_F(ArchiveExtract, KeepsTheTextsOfTheRecordUntilTheLastReport) {
  recording.archivesThatOpen = 2;  // for the list and the first member
  EXPECT_EQ(Run(), ZorErrorArchiveOpen);
  EXPECT_THAT(TakeCalls("OnAbort 1 4 "),
              ElementsAre("1/2 5/5 '#\\a.lzh' '#\\out\\d\\f.txt' 'd\\f.txt' 5 2e45 6000 20"));
}

// A size that overflows with the slack is refused before any file is touched.
TEST_F(ArchiveExtract, MapsNoFileOfNearlyFourGigabytes) {
  ZorMappedFile file(path.c_str(), 0xFFFFFFFF - 1023);
  EXPECT_EQ(file.Map(), nullptr);
  EXPECT_EQ(file.SystemError(), static_cast<std::uint32_t>(ERROR_NOT_ENOUGH_MEMORY));
  EXPECT_EQ(folder.ReadText("a.lzh"), "old");
}

}  // namespace
}  // namespace kozor::test
