// RunTest.cpp - the course of a run: what OnAbort is told and when, and every way a run can end.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>

#include "platform/win32/PosixAdmin.h"
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
  void MakeTwoFilesForTwoVolumes() {
    MakeTree(folder, "source", {{"a", 65'540}, {"b", 100}});
    twoVolumes = 116 + 14 + 65'540 + 14 + 60;
  }
  unsigned long twoVolumes = 0;
};

TEST_F(VolumeRun, BackupReportsEveryStep) {
  MakeTwoFilesForTwoVolumes();
  ASSERT_EQ(Backup(twoVolumes), 1);
  EXPECT_THAT(volumes.reports, ElementsAreArray<Report>({{0, 0, 0, 0, 0, 0, "-"},
                                                         {1, 0, 0, 0, 65'540, 0, "a"},
                                                         {4, 0, 0, 0, 65'540, 0, "a"},
                                                         {2, 0, 0, 65'536, 65'540, 1, "a"},
                                                         {2, 0, 0, 65'540, 65'540, 1, "a"},
                                                         {3, 0, 1, 65'540, 65'540, 1, "a"},
                                                         {1, 0, 1, 0, 100, 1, "b"},
                                                         {2, 0, 1, 60, 100, 1, "b"},
                                                         {4, 0, 1, 60, 100, 1, "b"},
                                                         {2, 0, 1, 100, 100, 2, "b"},
                                                         {3, 0, 2, 100, 100, 2, "b"},
                                                         {5, 0, 2, 100, 100, 2, "-"}}));
}

TEST_F(VolumeRun, RestoreReportsEveryStep) {
  MakeTwoFilesForTwoVolumes();
  folder.WriteFile("source/c", "");
  ASSERT_EQ(Backup(twoVolumes), 1);
  ASSERT_EQ(Restore(), 1);
  EXPECT_THAT(volumes.reports, ElementsAreArray<Report>({{0, 0, 0, 0, 0, 0, "-"},
                                                         {4, 0, 0, 0, 0, 0, "-"},
                                                         {1, 0, 0, 0, 65'540, 1, "a"},
                                                         {2, 0, 0, 65'536, 65'540, 1, "a"},
                                                         {2, 0, 0, 65'540, 65'540, 1, "a"},
                                                         {3, 0, 1, 65'540, 65'540, 1, "a"},
                                                         {1, 0, 1, 0, 100, 1, "b"},
                                                         {2, 0, 1, 60, 100, 1, "b"},
                                                         {4, 0, 1, 60, 100, 1, "b"},
                                                         {2, 0, 1, 100, 100, 2, "b"},
                                                         {3, 0, 2, 100, 100, 2, "b"},
                                                         {1, 0, 2, 0, 0, 2, "c"},
                                                         {2, 0, 2, 0, 0, 2, "c"},
                                                         {3, 0, 3, 0, 0, 2, "c"},
                                                         {5, 0, 3, 0, 0, 2, "-"}}));
  EXPECT_EQ(Differences(), "");
}

TEST_F(VolumeRun, TheRecordTellsKindTotalAndPaths) {
  MakeTree(folder, "source", {{"a", 1}, {"b", 1}});
  for (const int kind : {0, 1}) {
    volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
      EXPECT_EQ(p.kind, kind);
      EXPECT_EQ(p.filesTotal, kind == 1 && p.volume == 0 ? 0 : 2);
      if (p.phase == ZorMultiVolume::PhaseVolume || p.volume > 0) {
        EXPECT_EQ(p.volumePath, folder.Lib("set/1"));
      } else {
        EXPECT_STREQ(p.volumePath, "");
      }
      if (p.phase == ZorMultiVolume::PhaseFileEnd) {
        EXPECT_EQ(std::string(p.fileName).find(folder.Lib(kind == 0 ? "source" : "target")), 0U);
      }
      return 0;
    };
    EXPECT_EQ(kind == 0 ? Backup() : Restore(), 1);
  }
}

TEST_F(VolumeRun, NothingSelectedEndsWithoutAnyCall) {
  MakeTree(folder, "source", {{"empty/"}, {"empty/too/"}});
  EXPECT_EQ(Backup(), 0);
  EXPECT_EQ(volumes.GetError(), ZorErrorCanceled);
  EXPECT_THAT(volumes.reports, IsEmpty());
  EXPECT_FALSE(folder.Exists("set"));
}

// Whichever call says stop: it is the last but phase 5, which sees no error yet, and every file is
// closed.
TEST_F(VolumeRun, CanBeStoppedAtEveryCall) {
  MakeTwoFilesForTwoVolumes();
  ASSERT_EQ(Backup(twoVolumes), 1);
  const auto run = [&](bool backup) { return backup ? Backup(twoVolumes) : Restore(); };
  for (const bool backup : {false, true}) {
    volumes.abort = nullptr;
    ASSERT_EQ(run(backup), 1);
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
      EXPECT_EQ(run(backup), 0);
      EXPECT_EQ(volumes.GetError(), ZorErrorCanceled);
      ASSERT_EQ(volumes.reports.size(), call + 2);
      Report end = whole[call];
      end.phase = ZorMultiVolume::PhaseEnd;
      end.fileName = "-";
      EXPECT_EQ(volumes.reports.back(), end);
      volumes.reports.pop_back();
      EXPECT_THAT(
          volumes.reports,
          ElementsAreArray(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(call) + 1));
    }
    volumes.abort = nullptr;
    ASSERT_EQ(run(backup), 1);
  }
}

template <typename Exception>
[[noreturn]] void Throw(Exception* exception) {
  throw exception;  // NOLINT(misc-throw-by-value-catch-by-reference): as the class library does
}

TEST_F(VolumeRun, WhatAHookThrowsEndsTheRunWithItsError) {
  MakeTree(folder, "source", {{"a", 10}});
  ASSERT_EQ(Backup(), 1);
  const auto fail = [](int cause) -> int { Throw(new CFileException(cause)); };
  const auto expect = [&](int result, ZorError error) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(volumes.GetError(), error);
    EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
  };
  for (int phase = 1; phase <= 4; ++phase) {
    At(phase, [&] { fail(CFileException::diskFull); });
    expect(Backup(), ZorErrorDiskFull);
    expect(Restore(), ZorErrorDiskFull);
    At(phase, [&] { fail(CFileException::accessDenied); });
    expect(Backup(), ZorErrorFileFailure);
    At(phase, [] { Throw(new CArchiveException(CArchiveException::badClass)); });
    expect(Restore(), ZorErrorFileFailure);
    At(phase, [] { throw std::bad_alloc(); });
    expect(Restore(), ZorErrorFileFailure);
  }
  volumes.abort = nullptr;
  ASSERT_EQ(Backup(), 1);
  volumes.checkVolume = [&](auto...) { return fail(0); };
  expect(Restore(), ZorErrorFileFailure);
  EXPECT_EQ(volumes.Check(folder.Lib("set/1").c_str()), 0);

  for (const int phase : {0, 5}) {
    At(phase, [&] { fail(0); });
    try {
      Backup();
      ADD_FAILURE() << "phase " << phase << " isn't guarded";
    } catch (CException* passed) {  // NOLINT(misc-throw-by-value-catch-by-reference)
      passed->Delete();
    }
  }
}

// What happens to the second of two files, and when.
struct SourceCase {
  const char* what;
  ZorMultiVolume::Phase phase;
  std::function<void(const TestFolder&)> act;
  std::uintmax_t volumeBytes;  // that are on the volume in the end
};

TEST_F(VolumeRun, ASourceThatFailsEndsTheBackup) {
  constexpr std::uintmax_t kFirstFile = 116 + 14 + 10;
  const auto cut = [](std::uintmax_t size) {
    return [size](const TestFolder& f) { f.Truncate("source/b", size); };
  };
  for (const SourceCase& c : {
           SourceCase{"vanished", ZorMultiVolume::PhaseBegin,
                      [](const TestFolder& f) { std::filesystem::remove(f.Path("source/b")); },
                      kFirstFile},
           SourceCase{"4 GiB", ZorMultiVolume::PhaseBegin, cut(1ULL << 32), kFirstFile},
           SourceCase{"emptied", ZorMultiVolume::PhaseFileBegin, cut(0), kFirstFile + 14},
           SourceCase{"shorter", ZorMultiVolume::PhaseFileRunning, cut(100'000),
                      kFirstFile + 14 + 65'536},
       }) {
    SCOPED_TRACE(c.what);
    StartAnew();
    MakeTree(folder, "source", {{"a", 10}, {"b", 200'000}});
    At(c.phase, [&] {
      if (c.phase == ZorMultiVolume::PhaseBegin || volumes.reports.back().filesDone == 1)
        c.act(folder);
    });
    EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(volumes.GetError(), ZorErrorFileFailure);
    EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
    EXPECT_EQ(volumes.reports.back().filesDone, 1);
    EXPECT_EQ(std::filesystem::file_size(folder.Path("set/1")), c.volumeBytes);
  }
}

TEST_F(VolumeRun, ASourceInUseEndsTheBackup) {
  MakeTree(folder, "source", {{"a", 10}});
  const CFile user(folder.Lib("source/a").c_str(), CFile::modeReadWrite | CFile::shareDenyNone);
  EXPECT_EQ(Backup(), 0);
  EXPECT_EQ(volumes.GetError(), ZorErrorFileOpen);
}

TEST_F(VolumeRun, NamesOfUpTo523BytesAreStored) {
  const std::string directories = std::string(200, 'd') + "/" + std::string(200, 'e') + "/";
  const std::string fits(523 - directories.size(), 'f');
  folder.WriteFile("source/" + directories + fits, "x");
  ASSERT_EQ(Backup(), 1);
  EXPECT_EQ(ReadVolumes().at(0).size(), 116U + 12 + 524 + 1);
  ASSERT_EQ(Restore(), 1);
  EXPECT_EQ(Differences(), "");

  folder.WriteFile("source/" + directories + fits + "f", "x");
  EXPECT_EQ(Backup(), 0);
  EXPECT_EQ(volumes.GetError(), ZorErrorFileFailure);
}

TEST_F(VolumeRun, AVolumeThatCannotBeTakenIsAskedForAgainWithTheReason) {
  MakeTree(folder, "source", {{"a", 10}});
  folder.WriteFile("file", "not a directory");
  folder.WriteFile("readonly", "an old volume");
  chmod(folder.Path("readonly").c_str(), 0444);
  const std::vector<std::pair<std::string, int>> cases = {
      {"", ZorMultiVolume::VolumeNoSpace},  // the default OnMakeVolumeName
      {"set.vol", ZorMultiVolume::VolumeNoSpace},
      {"Q:\\set.vol", ZorMultiVolume::VolumeNoSpace},
      {"C:set.vol", ZorMultiVolume::VolumeNoDirectory},
      {folder.Lib("file/new/set.vol"), ZorMultiVolume::VolumeNoDirectory},
      {folder.Lib("source"), ZorMultiVolume::VolumeNoCreate},
      {folder.Lib("readonly"), ZorMultiVolume::VolumeNoCreate},
  };
  ZorFind find;
  find.AddTail(folder.Lib("source/*.*").c_str());
  for (const auto& [path, reason] : cases) {
    SCOPED_TRACE(path);
    volumes.reports.clear();
    volumes.nameVolume = nullptr;
    EXPECT_EQ(volumes.Backup(find, path.empty() ? nullptr : path.c_str()), 0);
    EXPECT_EQ(volumes.GetError(), ZorErrorCanceled);
    ASSERT_EQ(volumes.reports.size(), 5U);
    EXPECT_EQ(volumes.reports[2].volumeResult, ZorMultiVolume::VolumeFirstAsk);
    EXPECT_EQ(volumes.reports[3].volumeResult, reason);
    EXPECT_EQ(volumes.reports[4].volumeResult, reason);
  }
}

TEST_F(VolumeRun, AShareIsNotAskedForItsRoom) {
  MakeTree(folder, "source", {{"a", 10}});
  std::filesystem::create_directories(folder.Path("share"));
  KzMapShare("\\\\server\\disks", folder.Path("share").c_str());
  volumes.nameVolume = [](int) { return CString("\\\\server\\disks\\new\\1"); };
  EXPECT_EQ(Backup(0), 1);
  EXPECT_EQ(Restore(), 1);
  EXPECT_EQ(Differences(), "");
  KzMapShare("\\\\server\\disks", nullptr);
}

}  // namespace
}  // namespace kozor::test
