// FrameTest.cpp - the common frame of all operations: opening and closing steps, reports,
// temporaries, failures, cancelling, hooks that throw.

#include <stdexcept>
#include <utility>

#include "RecordedArchive.h"
#include "archive/Engine.h"

namespace kozor::test {
namespace {

// An archive of one member, a source of one file, and the operations on them by name.
class OperationTest : public ArchiveRecorded {
 protected:
  OperationTest() {
    folder.WriteFile("src/x.txt", "x");
    recording.members = {{.name = "m.txt", .contents = "hello"}};
    archive.SetOverwriteMode(1);
  }

  ZorError Run(const std::string& operation) { return ErrorOf(Call(operation, path.c_str())); }

 private:
  int Call(const std::string& operation, const char* file) {
    unsigned char buffer[16] = {};
    const ZorFind find = Selection(Lib("src"), {"*.*"});
    if (operation == "Compress") return archive.Compress(find, file, 1, 0);
    if (operation == "CompressMem") return archive.CompressMem(file, "new.txt", nullptr, 0, 1);
    if (operation == "CompressDir") return archive.CompressDir(Lib("src").c_str(), file, 1);
    if (operation == "Extract") return archive.Extract(file, Lib("out").c_str(), nullptr);
    if (operation == "ExtractMem") return archive.ExtractMem(file, "m.txt", buffer, sizeof buffer);
    return archive.Delete(Selection("", {"m.txt"}), file);
  }
};

// Every test runs once with each operation.
class ArchiveFrame : public OperationTest, public testing::WithParamInterface<const char*> {
 protected:
  ArchiveFrame() { recording.reports = {{1, 3, 5, "reported/name"}}; }

  bool Compresses() const { return std::string(GetParam()).starts_with("Compress"); }
  ZorError Run() { return OperationTest::Run(GetParam()); }
  // Runs it; it must fail with this error and still run the closing steps.
  void ExpectFailure(ZorError error) {
    EXPECT_EQ(Run(), error);
    EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
  }
  // The phases reported, without their data.
  std::string TakePhases() {
    std::string phases;
    for (const std::string& line : TakeCalls("OnAbort ")) phases += line[2];
    return phases;
  }
};

INSTANTIATE_TEST_SUITE_P(, ArchiveFrame,
                         testing::Values("Compress", "CompressMem", "CompressDir", "Extract",
                                         "ExtractMem", "Delete"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_P(ArchiveFrame, EndsWithBusyAndWithoutAnyReportWhenTheArchiverIsAtWork) {
  recording.busy = true;
  EXPECT_EQ(Run(), ZorErrorEngineBusy);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning"));

  recording.busy = false;
  recording.refusesCallback = true;  // so none is removed
  EXPECT_EQ(Run(), ZorErrorEngineBusy);
  EXPECT_EQ(recording.calls.back(), "SetOwnerWindowEx");
  EXPECT_EQ(recording.calls.size(), Compresses() ? 2U : 3U);
}

TEST_P(ArchiveFrame, NeedsAnExistingArchiveUnlessItMakesOne) {
  std::filesystem::remove(folder.Path("a.lzh"));
  EXPECT_EQ(Run(), Compresses() ? ZorErrorNone : ZorErrorArchiveNotFound);
  if (Compresses()) return;
  // The one report comes on a record in which nothing has been set yet.
  EXPECT_THAT(TakeCalls(), ElementsAre("OnAbort 0 4 0/0 0/0 - -"));
}

// Whichever report stops the operation, only the end is reported after it.  The end can't be
// stopped.
TEST_P(ArchiveFrame, StopsAtEveryReport) {
  EXPECT_EQ(Run(), ZorErrorNone);
  const std::string whole = TakePhases();
  bool worked = false;
  recording.during = [&] { worked = true; };
  for (std::size_t stop = 0; stop + 1 < whole.size(); ++stop) {
    SCOPED_TRACE(stop);
    worked = false;
    archive.stopAt = static_cast<int>(stop);
    ExpectFailure(ZorErrorCanceled);
    EXPECT_EQ(worked, whole[stop] >= '2');
    EXPECT_EQ(recording.answers.back(), whole[stop] == '2' ? 0 : 1);
    EXPECT_EQ(TakePhases(), whole.substr(0, stop + 1) + '4');
  }
  archive.stopAt = static_cast<int>(whole.size()) - 1;
  EXPECT_EQ(Run(), ZorErrorNone);
}

TEST(ArchiveFrameErrors, CodesOfTheArchiversListKeepTheirPlaceAndAllOthersAreUnknown) {
  const std::pair<int, int> rows[] = {{0, 0},       {0x8005, 5}, {0x8020, 32},
                                      {0x802C, 44}, {0x8004, 4}, {0x802D, 4},
                                      {1, 4},       {-1, 4},     {0x18005, 4}};
  for (const auto& [code, error] : rows) EXPECT_EQ(ZorErrorFromEngine(code), error) << code;
}

TEST_P(ArchiveFrame, WithoutAnObjectForTheCallbacksStillMakesItsOwnReports) {
  { const ZorArchive copy(archive); }  // destroying it detaches the callbacks
  EXPECT_EQ(Run(), ZorErrorNone);
  EXPECT_THAT(recording.answers, ElementsAre(1));
  EXPECT_THAT(TakePhases(), testing::AnyOf("04", "0134"));
}

// A hook may throw in the operation, inside the archiver's callback, and at the very end.  Each
// time all closing steps run and the object can be used again.
TEST_P(ArchiveFrame, ClosesAndServesAgainWhenAHookHasThrown) {
  for (const int throwing : {0, 2, 4}) {
    SCOPED_TRACE(throwing);
    archive.inPhase = [&](int phase) {
      if (phase == throwing) throw new CFileException(CFileException::diskFull);
    };
    ExpectFailure(ZorErrorDiskFull);
    archive.inPhase = [&](int phase) {
      if (phase == throwing) throw std::bad_alloc();
    };
    ExpectFailure(ZorErrorFileFailure);
    archive.inPhase = [&](int phase) {
      if (phase == throwing) throw std::runtime_error("no exception of the class library");
    };
    TakeCalls();
    EXPECT_THROW(Run(), std::runtime_error);
    EXPECT_EQ(recording.calls.back(), "KillOwnerWindowEx");
    archive.inPhase = nullptr;
    EXPECT_EQ(Run(), ZorErrorNone);
  }
}

TEST_P(ArchiveFrame, DoesntAskAHookAgainThatHasThrown) {
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

// A quote would end its name on the command line, and the rest would be read as other names.  So a
// hostile archive could make an operation touch members that weren't selected.
TEST_F(ArchiveRecorded, EveryOperationRefusesANameWithAQuote) {
  const char* const name = "x\" \"y.txt";
  folder.WriteFile("src/z.txt", "z");
  recording.members = {{.name = name}};
  recording.during = [] { ADD_FAILURE() << "the archiver was given a quote"; };
  archive.SetOverwriteMode(1);
  const auto expectRefused = [&](int result) { EXPECT_EQ(ErrorOf(result), ZorErrorFileOpen); };
  unsigned char buffer[8] = {};
  expectRefused(archive.Compress(Selection(Lib("src"), {"*.*"}), name, 0, 0));
  expectRefused(archive.CompressMem(path.c_str(), name, buffer, 1, 0));
  expectRefused(archive.CompressDir(name, path.c_str(), 0));
  EXPECT_TRUE(folder.Exists("a.lzh")) << "nothing is removed for a line that can't be given";
  expectRefused(archive.Extract(path.c_str(), Lib("out").c_str(), nullptr));
  expectRefused(archive.ExtractMem(path.c_str(), name, buffer, sizeof buffer));
  expectRefused(archive.Delete(Selection("", {"*.txt", "*.*"}), path.c_str()));
}

TEST_F(ArchiveRecorded, EveryOperationReadsNullAsTheEmptyText) {
  const auto expect = [&](int result, ZorError error) { EXPECT_EQ(ErrorOf(result), error); };
  const ZorFind find = Selection(Lib("."), {"a.lzh"});
  unsigned char buffer[8] = {};
  recording.checkResult = 0;
  EXPECT_EQ(archive.IsArchive(nullptr), 0);
  archive.SetOverwriteMode(1);
  expect(archive.Compress(find, nullptr, 1, 1), ZorErrorNone);
  expect(archive.CompressMem(nullptr, nullptr, nullptr, 0, 1), ZorErrorNone);
  expect(archive.CompressDir(nullptr, nullptr, 1), ZorErrorNone);
  EXPECT_EQ(TakeCalls("Unlha: a" + kOptions).back(), " -w0 -d1 \"\" \"\"");
  expect(archive.Extract(nullptr, Lib("out").c_str(), nullptr), ZorErrorArchiveNotFound);
  expect(archive.ExtractMem(path.c_str(), nullptr, buffer, sizeof buffer), ZorErrorArchiveOpen);
  expect(archive.GetFileInfo(path.c_str(), nullptr, nullptr, nullptr, nullptr),
         ZorErrorArchiveOpen);
  expect(archive.Delete(find, nullptr), ZorErrorArchiveNotFound);
}

// The archiver's states.
constexpr unsigned int kStart = 0;
constexpr unsigned int kRun = 1;
constexpr unsigned int kEnd = 6;

class ArchiveProgress : public OperationTest {
 protected:
  // The calls of OnAbort between the first and the last one, for these reports of the archiver.
  std::vector<std::string> Hear(const char* operation, std::vector<ScriptedReport> reports) {
    recording.reports = std::move(reports);
    EXPECT_EQ(Run(operation), ZorErrorNone);
    EXPECT_THAT(recording.answers, testing::Each(1));
    const std::vector<std::string> lines = TakeCalls("OnAbort ");
    return std::vector<std::string>(lines.begin() + 1, lines.end() - 1);
  }
};

TEST_F(ArchiveProgress, TellsOfBeginProgressAndEndOfEachFileWhileCompressing) {
  EXPECT_THAT(Hear("CompressDir", {{kStart, 0, 0, ""},
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
  // A file that wasn't announced, messages without a meaning, and more than two gigabytes.
  EXPECT_THAT(Hear("CompressDir", {{kRun, 0, 9, "x"}}), ElementsAre("0 0 0/0 0/9 '#\\a.lzh' 'x'"));
  EXPECT_THAT(Hear("CompressDir", {{2, 1, 9, "x"}, {5, 1, 9, "x"}, {kRun, 10, 9, "x"}}),
              ElementsAre());
  EXPECT_THAT(Hear("CompressDir", {{kEnd, 0, 0xFFFFFFFF, "x"}}),
              ElementsAre("0 3 1/0 4294967295/4294967295 '#\\a.lzh' 'x'"));
}

TEST_F(ArchiveProgress, TellsOfNothingButTheRunWhereTheOperationKeepsTheRest) {
  EXPECT_THAT(Hear("Delete", {{kStart, 0, 9, "x"},
                              {kRun, 0, 9, "x"},
                              {kRun, 4, 9, "x"},
                              {kRun, 9, 9, "x"},
                              {kEnd, 9, 9, "x"}}),
              ElementsAre("1 2 0/1 4/9 '#\\a.lzh' -"));
}

class ArchiveTempSweep : public OperationTest {
 protected:
  ArchiveTempSweep() {
    folder.WriteFile("lhtmp001.lzh", "another's");
    recording.during = [this] {
      for (const char* name : {"LHTMP005.LZH", "lhtmp002.lzh", "lhtmp003.lzh", "lhtmp0001.lzh",
                               "lhtmp01.tmp", "sub/lhtmp004.lzh"}) {
        folder.WriteFile(name, "new");
      }
    };
  }
};

// Temporaries are removed between the last report and the removal of the callback.  One that can't
// be removed stays; the others are removed.
TEST_F(ArchiveTempSweep, RemovesThoseOfTheRunBesideTheArchiveAndNothingElse) {
  archive.inPhase = [this](int phase) {
    if (phase != 4) return;
    EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
    SetReadOnly(folder.Path("lhtmp003.lzh"));
  };
  recording.whenReleased = [this] { EXPECT_FALSE(folder.Exists("lhtmp002.lzh")); };
  EXPECT_EQ(Run("CompressMem"), ZorErrorNone);
  EXPECT_THAT(folder.List(),
              ElementsAre("a.lzh", "lhtmp0001.lzh", "lhtmp001.lzh", "lhtmp003.lzh", "lhtmp01.tmp",
                          "src/", "src/x.txt", "sub/", "sub/lhtmp004.lzh"));
}

TEST_F(ArchiveTempSweep, WatchesTheWorkDirectoryInsteadAndNothingForABareArchiveName) {
  EXPECT_EQ(ErrorOf(archive.CompressMem("a.lzh", "x", nullptr, 0, 1)), ZorErrorNone);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
  std::filesystem::remove_all(folder.Path("sub"));
  folder.WriteFile("sub/a", "");
  archive.SetWorkDirectory(Lib("sub").c_str());
  recording.results = {0x800C};
  EXPECT_EQ(Run("CompressMem"), ZorErrorEngine800C);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
  EXPECT_FALSE(folder.Exists("sub/lhtmp004.lzh"));
}

TEST_F(ArchiveTempSweep, DoesntActBeforeTheWorkHasBegun) {
  archive.inPhase = [this](int phase) {
    if (phase == 0) folder.WriteFile("lhtmp002.lzh", "new");
  };
  archive.stopAt = 0;
  EXPECT_EQ(Run("CompressMem"), ZorErrorCanceled);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
}

}  // namespace
}  // namespace kozor::test
