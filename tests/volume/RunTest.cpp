// RunTest.cpp - the course of a run: the calls of OnAbort, and every way in which a run can end.

#include <functional>
#include <optional>
#include <utility>

#include "tests/support/Ability.h"
#include "tests/volume/VolumeTest.h"

namespace kozor::test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

class VolumeRun : public VolumeTest {
 protected:
  // Runs `act` when OnAbort is called with `phase`.
  void At(int phase, const std::function<void()>& act) {
    volumes.abort = [phase, act](const ZorMultiVolume::ONABORTPARAM& p) {
      if (p.phase == phase) act();
      return p.phase == ZorMultiVolume::PhaseVolume && p.volumeResult != 0 ? 1 : 0;
    };
  }
};

// Backup opens the file before it asks for the volume, Restore finds the file on it.  Then both
// report the same until the empty file, for which only Restore copies a slice of 0 bytes.
TEST_F(VolumeRun, BackupAndRestoreReportEveryStep) {
  MakeTwoFiles();
  folder.WriteFile("source/c", "");
  const auto expectReports = [&](std::vector<Report> expected, const std::vector<Report>& end) {
    expected.insert(expected.end(), {{2, 0, 0, 65'536, 65'540, 1, "a"},
                                     {2, 0, 0, 65'540, 65'540, 1, "a"},
                                     {3, 0, 1, 65'540, 65'540, 1, "a"},
                                     {1, 0, 1, 0, 100, 1, "b"},
                                     {2, 0, 1, 60, 100, 1, "b"},
                                     {4, 0, 1, 60, 100, 1, "b"},
                                     {2, 0, 1, 100, 100, 2, "b"},
                                     {3, 0, 2, 100, 100, 2, "b"},
                                     {1, 0, 2, 0, 0, 2, "c"}});
    expected.insert(expected.end(), end.begin(), end.end());
    EXPECT_THAT(volumes.reports, ElementsAreArray(expected));
  };
  ASSERT_EQ(Backup(kTwoVolumes), ZorErrorNone);
  expectReports(
      {{0, 0, 0, 0, 0, 0, "-"}, {1, 0, 0, 0, 65'540, 0, "a"}, {4, 0, 0, 0, 65'540, 0, "a"}},
      {{3, 0, 3, 0, 0, 2, "c"}, {5, 0, 3, 0, 0, 2, "-"}});
  ASSERT_EQ(Restore(), ZorErrorNone);
  expectReports({{0, 0, 0, 0, 0, 0, "-"}, {4, 0, 0, 0, 0, 0, "-"}, {1, 0, 0, 0, 65'540, 1, "a"}},
                {{2, 0, 2, 0, 0, 2, "c"}, {3, 0, 3, 0, 0, 2, "c"}, {5, 0, 3, 0, 0, 2, "-"}});
}

TEST_F(VolumeRun, TheRecordTellsKindTotalAndPaths) {
  MakeTree(folder, "source", {{"a", 1}, {"b", 1}});
  for (const int kind : {0, 1}) {
    volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
      EXPECT_EQ(p.kind, kind);
      EXPECT_EQ(p.filesTotal, kind == 1 && p.volume == 0 ? 0 : 2);
      const bool named = p.phase == ZorMultiVolume::PhaseVolume || p.volume > 0;
      EXPECT_EQ(p.volumePath, named ? folder.Lib("set/1") : "");
      if (p.phase == ZorMultiVolume::PhaseFileEnd) {
        EXPECT_EQ(std::string(p.fileName).find(folder.Lib(kind == 0 ? "source" : "target")), 0U);
      }
      return 0;
    };
    EXPECT_EQ(kind == 0 ? Backup() : Restore(), ZorErrorNone);
  }
}

TEST_F(VolumeRun, NothingSelectedEndsWithoutAnyCall) {
  MakeTree(folder, "source", {{"empty/"}, {"empty/too/"}});
  EXPECT_EQ(Backup(), ZorErrorCanceled);
  EXPECT_THAT(volumes.reports, IsEmpty());
  EXPECT_FALSE(folder.Exists("set"));
}

// Whichever call stops the run, only phase 5 follows it, which sees no error yet, and every file is
// closed.
TEST_F(VolumeRun, CanBeStoppedAtEveryCall) {
  MakeTwoFiles();
  ASSERT_EQ(Backup(kTwoVolumes), ZorErrorNone);
  for (const bool backup : {false, true}) {
    const auto run = [&] { return backup ? Backup(kTwoVolumes) : Restore(); };
    volumes.abort = nullptr;
    ASSERT_EQ(run(), ZorErrorNone);
    const std::vector<Report> whole = volumes.reports;
    for (std::size_t call = 0; call + 1 < whole.size(); ++call) {
      SCOPED_TRACE(std::to_string(call) + (backup ? " backup" : " restore"));
      volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
        EXPECT_EQ(volumes.GetError(), ZorErrorNone);
        if (p.phase == ZorMultiVolume::PhaseEnd) {
          for (const char* name : {"set/1", "set/2", "source/a", "target/b"}) {
            if (folder.Exists(name)) CFile(folder.Lib(name).c_str(), CFile::modeReadWrite);
          }
        }
        return volumes.reports.size() == call + 1 ? 1 : 0;
      };
      EXPECT_EQ(run(), ZorErrorCanceled);
      std::vector<Report> expected(whole.begin(),
                                   whole.begin() + static_cast<std::ptrdiff_t>(call) + 1);
      expected.push_back(whole[call]);
      expected.back().phase = ZorMultiVolume::PhaseEnd;
      expected.back().fileName = "-";
      EXPECT_THAT(volumes.reports, ElementsAreArray(expected));
    }
  }
}

TEST_F(VolumeRun, WhatAHookThrowsEndsTheRunWithItsError) {
  MakeTree(folder, "source", {{"a", 10}});
  ASSERT_EQ(Backup(), ZorErrorNone);
  const auto fail = [](int cause) -> int { throw new CFileException(cause); };
  for (int phase = 1; phase <= 4; ++phase) {
    At(phase, [&] { fail(CFileException::diskFull); });
    EXPECT_EQ(Backup(), ZorErrorDiskFull);
    EXPECT_EQ(Restore(), ZorErrorDiskFull);
    At(phase, [&] { fail(CFileException::accessDenied); });
    EXPECT_EQ(Backup(), ZorErrorFileFailure);
    At(phase, [] { throw new CArchiveException(CArchiveException::badClass); });
    EXPECT_EQ(Restore(), ZorErrorFileFailure);
    At(phase, [] { throw std::bad_alloc(); });
    EXPECT_EQ(Restore(), ZorErrorFileFailure);
  }
  At(3, [] { throw 7; });  // not the library's: rethrown after phase 5
  EXPECT_THROW(Restore(), int);
  EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
  EXPECT_EQ(volumes.GetError(), ZorErrorCanceled);
  volumes.abort = nullptr;
  ASSERT_EQ(Backup(), ZorErrorNone);
  volumes.checkVolume = [&](auto...) { return fail(0); };
  EXPECT_EQ(Restore(), ZorErrorFileFailure);
  EXPECT_EQ(volumes.Check(folder.Lib("set/1").c_str()), 0);

  for (const int phase : {0, 5}) {
    At(phase, [&] { fail(0); });
    try {
      Backup();
      ADD_FAILURE() << "phase " << phase << " isn't guarded";
    } catch (CException* passed) {
      passed->Delete();
    }
  }
}

TEST_F(VolumeRun, ASourceThatFailsEndsTheBackup) {
  constexpr std::uintmax_t kFirstFile = kHeader + kHead + 10;
  // A fault of the second of two files, and its phase.
  const struct {
    const char* what;
    ZorMultiVolume::Phase phase;
    std::optional<std::uintmax_t> size;
    std::uintmax_t volumeBytes;  // that are on the volume in the end
  } cases[] = {
      {"vanished", ZorMultiVolume::PhaseBegin, {}, kFirstFile},
      {"4 GiB", ZorMultiVolume::PhaseBegin, std::uint64_t{1} << 32, kFirstFile},
      {"emptied", ZorMultiVolume::PhaseFileBegin, 0, kFirstFile + kHead},
      {"shorter", ZorMultiVolume::PhaseFileRunning, 100'000, kFirstFile + kHead + 65'536},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    if (c.phase != ZorMultiVolume::PhaseBegin && !Can(Ability::ChangingOpenFiles)) continue;
    StartAnew();
    MakeTree(folder, "source", {{"a", 10}, {"b", 200'000}});
    At(c.phase, [&] {
      const bool atOnce = c.phase == ZorMultiVolume::PhaseBegin;
      if (!atOnce && volumes.reports.back().filesDone == 0) return;
      if (c.size) {
        folder.Truncate("source/b", *c.size);
      } else {
        std::filesystem::remove(folder.Path("source/b"));
      }
    });
    EXPECT_EQ(Backup(), ZorErrorFileFailure);
    EXPECT_EQ(volumes.reports.back().filesDone, 1);
    EXPECT_EQ(VolumeBytes(), c.volumeBytes);
  }
}

TEST_F(VolumeRun, ASourceInUseEndsTheBackup) {
  MakeTree(folder, "source", {{"a", 10}});
  const CFile user(folder.Lib("source/a").c_str(), CFile::modeReadWrite | CFile::shareDenyNone);
  EXPECT_EQ(Backup(), ZorErrorFileOpen);
}

TEST_F(VolumeRun, AVolumeThatCannotBeTakenIsAskedForAgainWithTheReason) {
  MakeTree(folder, "source", {{"a", 10}});
  folder.WriteFile("file", "not a directory");
  folder.WriteFile("readonly", "an old volume");
  SetReadOnly(folder.Path("readonly"));
  const std::pair<std::string, int> cases[] = {
      {"", ZorMultiVolume::VolumeNoSpace},  // the default OnMakeVolumeName
      {"set.vol", ZorMultiVolume::VolumeNoSpace},
      {"Q:\\set.vol", ZorMultiVolume::VolumeNoSpace},
      {"C:set.vol", ZorMultiVolume::VolumeNoDirectory},
      {folder.Lib("file/new/set.vol"), ZorMultiVolume::VolumeNoDirectory},
      {folder.Lib("source"), ZorMultiVolume::VolumeNoCreate},
      {folder.Lib("readonly"), ZorMultiVolume::VolumeNoCreate},
  };
  for (const auto& [path, reason] : cases) {
    SCOPED_TRACE(path);
    volumes.nameVolume = nullptr;
    if (!path.empty()) volumes.nameVolume = [path = path](int) { return CString(path.c_str()); };
    EXPECT_EQ(BackupToMedia(), ZorErrorCanceled);
    ASSERT_EQ(volumes.reports.size(), 5U);
    EXPECT_EQ(volumes.reports[2].volumeResult, ZorMultiVolume::VolumeFirstAsk);
    EXPECT_EQ(volumes.reports[3].volumeResult, reason);
    EXPECT_EQ(volumes.reports[4].volumeResult, reason);
  }
}

TEST_F(VolumeRun, AShareIsNotAskedForItsRoom) {
  MakeTree(folder, "source", {{"a", 10}});
  std::filesystem::create_directories(folder.Path("share"));
  if (!MapShare("\\\\server\\disks", folder.Path("share"))) {
    GTEST_SKIP() << "no share can be made here";
  }
  volumes.nameVolume = [](int) { return CString("\\\\server\\disks\\new\\1"); };
  EXPECT_EQ(Backup(0), ZorErrorNone);
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");
  MapShare("\\\\server\\disks", "");
}

}  // namespace
}  // namespace kozor::test
