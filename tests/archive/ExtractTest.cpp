// ExtractTest.cpp - Extract against the recording archiver: targets, reports, failures; and the
// mapped file by itself.
#include <sys/stat.h>

#include "RecordedArchive.h"
#include "ZorFileServices.h"
#include "archive/MappedFile.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kStamp = 1'000'000'000;

class Extract : public RecordedArchiveTest {
 protected:
  Extract() {
    folder.WriteFile("a.lzh", "archive");
    recording.members = {{.name = "d/f.txt", .contents = "hello"},
                         {.name = "g.txt", .contents = "", .attribute = 0x21}};
  }
  ~Extract() override { chmod(folder.Path("out/g.txt").c_str(), 0644); }

  int Run(const char* mask = nullptr) {
    return archive.Extract(Lib("a.lzh").c_str(), Lib("out").c_str(), mask);
  }
  std::string Text(const std::string& name) const {
    const Bytes bytes = folder.ReadFile(name);
    return {bytes.begin(), bytes.end()};
  }
};

TEST_F(Extract, TreatsOneMemberAfterTheOther) {
  recording.reports = {{1, 2, 5, ""}};
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run(), 1);
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

TEST_F(Extract, MakesFilesWithContentsTimesAndAttributes) {
  EXPECT_EQ(Run(), 1);
  EXPECT_EQ(Text("out/d/f.txt"), "hello");
  EXPECT_EQ(Text("out/g.txt"), "");
  EXPECT_EQ(folder.GetTime("out/d/f.txt"), kStamp);
  unsigned int attribute = 0;
  EXPECT_NE(ZorGetFileAttribute(Lib("out\\g.txt").c_str(), attribute), 0);
  EXPECT_EQ(attribute, 0x21U);
}

TEST_F(Extract, LeavesAttributesAloneIfToldTo) {
  archive.SetExtractFileAttibuteMode(0);
  EXPECT_EQ(Run("g.txt"), 1);
  unsigned int attribute = 0;
  EXPECT_NE(ZorGetFileAttribute(Lib("out\\g.txt").c_str(), attribute), 0);
  EXPECT_EQ(attribute & 1U, 0U);
  EXPECT_EQ(folder.GetTime("out/g.txt"), kStamp);
}

TEST_F(Extract, NeedsADestinationBeforeAnythingElse) {
  EXPECT_EQ(archive.Extract("C:\\none", nullptr, nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorNoDirectory);
  EXPECT_THAT(TakeCalls(), ElementsAre("OnAbort 0 4 0/0 0/0 - -"));
  EXPECT_EQ(archive.Extract(Selection(Lib("out"), {"*.*"}), Lib("a.lzh").c_str(), ""), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorNoDirectory);
  EXPECT_EQ(archive.Extract(Selection(Lib("out"), {"*.*"}), Lib("a.lzh").c_str(), nullptr), 1);
  EXPECT_TRUE(folder.Exists("out/d/f.txt"));
}

TEST_F(Extract, CountsAnEmptySelectionAsCancelled) {
  EXPECT_EQ(Run("*.none"), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
  EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
}

TEST_F(Extract, SkipsAMemberWithoutATarget) {
  archive.makeName = [this](const char* name) {
    return name[0] == 'd' ? CString() : CString((Lib("else\\") + name).c_str());
  };
  EXPECT_EQ(Run(), 1);
  EXPECT_THAT(folder.List(), ElementsAre("a.lzh", "else/", "else/g.txt"));
  EXPECT_THAT(TakeCalls("OnAbort 1 3 "),
              ElementsAre("1/2 5/5 '#\\a.lzh' '' 'd\\f.txt' 5 2e45 6000 20",
                          "2/2 0/0 '#\\a.lzh' '#\\else\\g.txt' 'g.txt' 0 2e45 6000 21"));
}

TEST_F(Extract, PlacesNamesWithARootBelowTheRootOfTheDestination) {
  recording.members = {{.name = "\\d\\f.txt"}, {.name = "E:\\d\\g.txt"}, {.name = "E:h.txt"}};
  archive.makeName = [](const char*) { return CString(); };
  EXPECT_EQ(Run(), 1);
  EXPECT_THAT(TakeCalls("OnMakeFileName '#\\out\\' "),
              ElementsAre("'\\d\\f.txt'", "'\\d\\g.txt'", "'E:h.txt'"));
}

struct NameMaker : ZorArchive {
  using ZorArchive::OnMakeFileName;
};

TEST(ExtractNames, AreJoinedByTheDefaultRule) {
  const struct {
    const char* directory;
    const char* name;
    const char* target;
  } rows[] = {{"D:\\out\\", "f.txt", "D:\\out\\f.txt"},
              {"D:\\out\\", "d\\f.txt", "D:\\out\\d\\f.txt"},
              {"D:\\out\\", "\\d\\f.txt", "D:\\d\\f.txt"},
              {"\\\\srv\\share\\out\\", "\\d\\f.txt", "\\\\srv\\share\\d\\f.txt"},
              {"out\\", "\\d\\f.txt", "\\d\\f.txt"},
              {"D:\\out\\", "\x95\x5C\\f", "D:\\out\\\x95\x5C\\f"},
              {"D:out", "\\f", "D:\\f"},
              {"D:", "\\f", "D:\\f"}};
  NameMaker maker;
  for (const auto& row : rows) {
    EXPECT_STREQ(maker.OnMakeFileName(row.directory, row.name), row.target) << row.directory;
  }
}

TEST_F(Extract, NeedsATargetWithARoot) {
  EXPECT_EQ(archive.Extract(Lib("a.lzh").c_str(), "out", nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorMakeDirectory);
}

TEST_F(Extract, ReplacesExistingFilesButNotReadOnlyOnes) {
  folder.WriteFile("out/d/f.txt", "longer than before");
  folder.WriteFile("out/g.txt", "kept");
  chmod(folder.Path("out/g.txt").c_str(), 0444);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileFailure);
  EXPECT_EQ(Text("out/d/f.txt"), "hello");
  EXPECT_EQ(Text("out/g.txt"), "kept");
}

TEST_F(Extract, LeavesThePartOfAFailedMemberTrimmedAndUnstamped) {
  recording.results = {0x800C};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngine800C);
  EXPECT_EQ(Text("out/d/f.txt"), "hello");
  EXPECT_NE(folder.GetTime("out/d/f.txt"), kStamp);
  EXPECT_FALSE(folder.Exists("out/g.txt"));
}

TEST_F(Extract, StopsInEachPhaseOfAMember) {
  for (const int phase : {1, 3}) {
    archive.stopInPhase = phase;
    EXPECT_EQ(Run("g.txt"), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
    EXPECT_EQ(folder.Exists("out/g.txt"), phase == 3);
  }
}

// The last report repeats what stood in the record, and the texts must still be there.
TEST_F(Extract, KeepsTheTextsOfTheRecordUntilTheLastReport) {
  recording.archivesThatOpen = 2;  // for the list and the first member
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
  EXPECT_THAT(TakeCalls("OnAbort 1 4 "),
              ElementsAre("1/2 5/5 '#\\a.lzh' '#\\out\\d\\f.txt' 'd\\f.txt' 5 2e45 6000 20"));
}

TEST_F(Extract, TakesASelectionInPlaceOfAMask) {
  ZorFind find = Selection(Lib("out"), {"*.txt", ">g.txt"});
  find.SetSubDirectory(0);
  EXPECT_EQ(archive.Extract(find, Lib("a.lzh").c_str(), Lib("else").c_str()), 1);
  EXPECT_THAT(folder.List("else"), ElementsAre("d/", "d/f.txt"));
}

class MappedFile : public testing::Test {
 protected:
  TestFolder folder;
};

TEST_F(MappedFile, HasItsSizeWhateverWasWritten) {
  for (const std::uint32_t size : {0U, 1U, 4096U}) {
    {
      ZorMappedFile file(folder.Lib("f").c_str(), size);
      unsigned char* view = file.Map();
      ASSERT_NE(view, nullptr);
      EXPECT_EQ(file.Capacity(), size + 1024);
      std::fill_n(view, file.Capacity(), static_cast<unsigned char>('x'));
      EXPECT_EQ(std::filesystem::file_size(folder.Path("f")), size + 1024);
    }
    EXPECT_EQ(folder.ReadFile("f"), Bytes(size, 'x'));
  }
}

TEST_F(MappedFile, NamesWhatStopsIt) {
  ZorMappedFile inNoDirectory(folder.Lib("none/f").c_str(), 1);
  EXPECT_EQ(inNoDirectory.Map(), nullptr);
  EXPECT_EQ(inNoDirectory.SystemError(), static_cast<std::uint32_t>(ERROR_PATH_NOT_FOUND));
  // With the slack this size can't be counted; nothing is touched.
  folder.WriteFile("f", "old");
  ZorMappedFile tooLarge(folder.Lib("f").c_str(), 0xFFFFFFFF);
  EXPECT_EQ(tooLarge.Map(), nullptr);
  EXPECT_EQ(tooLarge.SystemError(), static_cast<std::uint32_t>(ERROR_NOT_ENOUGH_MEMORY));
  EXPECT_EQ(folder.ReadFile("f"), (Bytes{'o', 'l', 'd'}));
}

}  // namespace
}  // namespace kozor::test
