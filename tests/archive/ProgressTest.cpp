// ProgressTest.cpp - which of the archiver's reports reach OnAbort, and as what.
#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The archiver's states.
constexpr unsigned int kStart = 0;
constexpr unsigned int kRun = 1;
constexpr unsigned int kEnd = 6;

class Progress : public RecordedArchiveTest {
 protected:
  Progress() { folder.WriteFile("a.lzh", "old"); }

  // What OnAbort hears between the first and the last report: of an operation that compresses ...
  std::vector<std::string> Compressing(std::vector<ScriptedReport> reports) {
    recording.reports = std::move(reports);
    archive.CompressDir("C:\\src", Lib("a.lzh").c_str(), 1);
    return Between();
  }
  // ... and of one that doesn't.
  std::vector<std::string> Deleting(std::vector<ScriptedReport> reports) {
    recording.reports = std::move(reports);
    archive.Delete(Selection("", {"m.txt"}), Lib("a.lzh").c_str());
    return Between();
  }

 private:
  std::vector<std::string> Between() {
    const std::vector<std::string> lines = TakeCalls("OnAbort ");
    return std::vector<std::string>(lines.begin() + 1, lines.end() - 1);
  }
};

TEST_F(Progress, TellsOfBeginProgressAndEndOfEachFileWhileCompressing) {
  EXPECT_THAT(Compressing({{kStart, 0, 0, ""},
                           {kRun, 0, 9, "d/x.txt"},
                           {kRun, 4, 9, "d/x.txt"},
                           {kRun, 9, 9, "d/x.txt"},
                           {kEnd, 0, 9, "d/x.txt"},
                           {kRun, 5, 9, "d/x.txt"},
                           {kStart, 0, 0, ""},
                           {kRun, 0, 0, "empty"},
                           {kEnd, 0, 0, "empty"}}),
              ElementsAre("0 1 0/0 0/9 '#\\a.lzh' 'd\\x.txt'", "0 2 0/0 4/9 '#\\a.lzh' 'd\\x.txt'",
                          "0 3 1/0 9/9 '#\\a.lzh' 'd\\x.txt'", "0 3 2/0 0/0 '#\\a.lzh' 'empty'"));
  EXPECT_THAT(recording.answers, testing::Each(1));
}

TEST_F(Progress, KeepsThePhaseWhenAFileWasNotAnnounced) {
  EXPECT_THAT(Compressing({{kRun, 0, 9, "x"}}), ElementsAre("0 0 0/0 0/9 '#\\a.lzh' 'x'"));
}

TEST_F(Progress, LetsMessagesWithoutAMeaningPass) {
  EXPECT_THAT(Compressing({{2, 1, 9, "x"}, {5, 1, 9, "x"}, {kRun, 10, 9, "x"}}), IsEmpty());
  EXPECT_THAT(
      Deleting({{kStart, 0, 9, "x"}, {kRun, 0, 9, "x"}, {kRun, 9, 9, "x"}, {kEnd, 9, 9, "x"}}),
      IsEmpty());
  EXPECT_THAT(recording.answers, testing::Each(1));
}

TEST_F(Progress, TellsOfNothingButTheRunWhereTheOperationKeepsTheRest) {
  EXPECT_THAT(Deleting({{kRun, 4, 9, "x"}}), ElementsAre("1 2 0/1 4/9 '#\\a.lzh' -"));
}

TEST_F(Progress, CountsBytesBeyondTwoGigabytes) {
  EXPECT_THAT(Compressing({{kEnd, 0, 0xFFFFFFFF, "x"}}),
              ElementsAre("0 3 1/0 4294967295/4294967295 '#\\a.lzh' 'x'"));
}

}  // namespace
}  // namespace kozor::test
