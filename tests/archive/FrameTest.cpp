// FrameTest.cpp - what all operations do alike: opening and closing steps, failures, cancelling,
// hooks that throw.
#include <stdexcept>

#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;

// An operation as the tests of the frame see it.
struct Operation {
  const char* name;
  bool compresses;
  int (*run)(ZorArchive& archive, const TestFolder& folder);
};

const Operation kOperations[] = {
    {"Compress", true,
     [](ZorArchive& archive, const TestFolder& folder) {
       return archive.Compress(Selection(folder.Lib("src"), {"*.*"}), folder.Lib("a.lzh").c_str(),
                               1, 0);
     }},
    {"CompressMem", true,
     [](ZorArchive& archive, const TestFolder& folder) {
       return archive.CompressMem(folder.Lib("a.lzh").c_str(), "new.txt", nullptr, 0, 1);
     }},
    {"CompressDir", true,
     [](ZorArchive& archive, const TestFolder& folder) {
       return archive.CompressDir(folder.Lib("src").c_str(), folder.Lib("a.lzh").c_str(), 1);
     }},
    {"Extract", false,
     [](ZorArchive& archive, const TestFolder& folder) {
       return archive.Extract(folder.Lib("a.lzh").c_str(), folder.Lib("out").c_str(), nullptr);
     }},
    {"ExtractMem", false,
     [](ZorArchive& archive, const TestFolder& folder) {
       unsigned char buffer[16];
       return archive.ExtractMem(folder.Lib("a.lzh").c_str(), "m.txt", buffer, sizeof buffer);
     }},
    {"Delete", false,
     [](ZorArchive& archive, const TestFolder& folder) {
       return archive.Delete(Selection("", {"m.txt"}), folder.Lib("a.lzh").c_str());
     }},
};

// Every test runs once with each operation, on an archive of one member and a source of one file.
class Frame : public RecordedArchiveTest, public testing::WithParamInterface<Operation> {
 protected:
  Frame() {
    folder.WriteFile("a.lzh", "old");
    folder.WriteFile("src/x.txt", "x");
    recording.members = {{.name = "m.txt", .contents = "hello"}};
    recording.reports = {{1, 3, 5, "reported/name"}};
    archive.SetOverwriteMode(1);
  }
  int Run() { return GetParam().run(archive, folder); }
  // The reports of the phases, without what they say.
  std::vector<char> TakePhases() {
    std::vector<char> phases;
    for (const std::string& line : TakeCalls("OnAbort ")) phases.push_back(line[2]);
    return phases;
  }
};

INSTANTIATE_TEST_SUITE_P(Operations, Frame, testing::ValuesIn(kOperations),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(Frame, OpensAndClosesInTheOrderOfItsFamily) {
  EXPECT_EQ(Run(), 1);
  const std::vector<std::string> calls = TakeCalls();
  const std::vector<std::string> opening =
      GetParam().compresses
          ? std::vector<std::string>{"GetRunning", "SetOwnerWindowEx", "SetCursorMode 0"}
          : std::vector<std::string>{"GetRunning", "SetCursorMode 0", "SetOwnerWindowEx"};
  EXPECT_THAT(std::vector(calls.begin(), calls.begin() + 3), ElementsAreArray(opening));
  EXPECT_EQ(calls.back(), "KillOwnerWindowEx");
  EXPECT_EQ(calls[calls.size() - 2].substr(0, 11),
            GetParam().compresses ? "OnAbort 0 4" : "OnAbort 1 4");
}

TEST_P(Frame, EndsWithBusyAndWithoutAnyReportWhenTheArchiverIsAtWork) {
  recording.busy = true;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngineBusy);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning"));
}

TEST_P(Frame, EndsWithBusyWhenTheCallbackIsRefusedAndTakesNoneBack) {
  recording.refusesCallback = true;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngineBusy);
  const std::vector<std::string> calls = TakeCalls();
  EXPECT_EQ(calls.back(), "SetOwnerWindowEx");
  EXPECT_EQ(calls.size(), GetParam().compresses ? 2U : 3U);
}

TEST_P(Frame, NeedsAnExistingArchiveUnlessItMakesOne) {
  std::filesystem::remove(folder.Path("a.lzh"));
  EXPECT_EQ(Run(), GetParam().compresses ? 1 : 0);
  if (GetParam().compresses) return;
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveNotFound);
  // The one report comes on a record in which nothing has been set yet.
  EXPECT_THAT(TakeCalls(), ElementsAre("OnAbort 0 4 0/0 0/0 - -"));
}

TEST_P(Frame, StopsBeforeAnyWorkWhenTheFirstReportIsAnsweredSo) {
  archive.stopInPhase = 0;
  bool worked = false;
  recording.during = [&] { worked = true; };
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
  EXPECT_FALSE(worked);
  EXPECT_THAT(recording.calls, Contains("KillOwnerWindowEx"));
  EXPECT_THAT(TakePhases(), ElementsAre('0', '4'));
}

TEST_P(Frame, StopsTheArchiverFromACallback) {
  archive.stopInPhase = 2;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
  EXPECT_THAT(recording.answers, ElementsAre(0));
  EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
}

TEST_P(Frame, IgnoresTheAnswerToTheLastReport) {
  archive.stopInPhase = 4;
  EXPECT_EQ(Run(), 1);
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
}

TEST_P(Frame, PassesTheArchiversCodeOn) {
  recording.results = {0x800C};
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngine800C);
  EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
}

TEST_P(Frame, WithoutAnObjectForTheCallbacksStillMakesItsOwnReports) {
  { const ZorArchive copy(archive); }  // its end takes the callbacks' object away
  archive.stopInPhase = 2;
  EXPECT_EQ(Run(), 1);
  EXPECT_THAT(recording.answers, ElementsAre(1));
  const std::vector<char> phases = TakePhases();
  EXPECT_EQ(phases.front(), '0');
  EXPECT_EQ(phases.back(), '4');
}

// A hook may throw in its operation, below the archiver, and at the very end; each time the closing
// steps come to their end and the object serves again.
TEST_P(Frame, TurnsAClassLibraryExceptionOfAHookIntoAnError) {
  for (const int throwing : {0, 2, 4}) {
    SCOPED_TRACE(throwing);
    archive.inPhase = [&](int phase) {
      if (phase == throwing) throw new CFileException(CFileException::diskFull);
    };
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorDiskFull);
    EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
    archive.inPhase = nullptr;
    EXPECT_EQ(Run(), 1);
  }
}

TEST_P(Frame, ThrowsAnyOtherExceptionOfAHookOnAfterItsClosingSteps) {
  for (const int throwing : {0, 2, 4}) {
    SCOPED_TRACE(throwing);
    archive.inPhase = [&](int phase) {
      if (phase == throwing) throw std::runtime_error("from a hook");
    };
    EXPECT_THROW(Run(), std::runtime_error);
    EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
    archive.inPhase = nullptr;
    EXPECT_EQ(Run(), 1);
  }
}

TEST_P(Frame, DoesntAskAHookAgainThatHasThrown) {
  recording.heedsAnswers = false;
  recording.reports.push_back({1, 4, 5, "reported/name"});
  int asked = 0;
  archive.inPhase = [&](int phase) {
    if (phase == 2 && ++asked > 0) throw std::runtime_error("from a hook");
  };
  EXPECT_THROW(Run(), std::runtime_error);
  EXPECT_EQ(asked, 1);
  EXPECT_THAT(recording.answers, ElementsAre(0, 0));
}

}  // namespace
}  // namespace kozor::test
