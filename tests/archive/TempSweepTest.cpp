// TempSweepTest.cpp - which temporaries of the archiver go at the end of an operation.
#include <sys/stat.h>

#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::Not;

class TempSweep : public RecordedArchiveTest {
 protected:
  TempSweep() {
    folder.WriteFile("a.lzh", "old");
    folder.WriteFile("lhtmp001.lzh", "another's");
    recording.during = [this] {
      for (const char* name :
           {"lhtmp002.lzh", "LHTMP003.LZH", "lhtmp0001.lzh", "lhtmp01.tmp", "sub/lhtmp004.lzh"}) {
        folder.WriteFile(name, "new");
      }
    };
    archive.SetOverwriteMode(1);
  }
  int Run() { return archive.CompressMem(Lib("a.lzh").c_str(), "x", nullptr, 0, 1); }
};

TEST_F(TempSweep, RemovesThoseOfTheRunBesideTheArchiveAndNothingElse) {
  EXPECT_EQ(Run(), 1);
  EXPECT_THAT(folder.List(), ElementsAre("a.lzh", "lhtmp0001.lzh", "lhtmp001.lzh", "lhtmp01.tmp",
                                         "sub/", "sub/lhtmp004.lzh"));
}

TEST_F(TempSweep, WatchesTheWorkDirectoryWhenThereIsOne) {
  folder.WriteFile("sub/a", "");
  archive.SetWorkDirectory(Lib("sub").c_str());
  recording.results = {0x8020};
  EXPECT_EQ(Run(), 0);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
  EXPECT_FALSE(folder.Exists("sub/lhtmp004.lzh"));
}

TEST_F(TempSweep, LeavesAloneWhatCantBeRemoved) {
  recording.during = [this] {
    folder.WriteFile("lhtmp002.lzh", "new");
    folder.WriteFile("lhtmp003.lzh", "new");
    chmod(folder.Path("lhtmp002.lzh").c_str(), 0444);
  };
  EXPECT_EQ(Run(), 1);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
  EXPECT_FALSE(folder.Exists("lhtmp003.lzh"));
}

TEST_F(TempSweep, DoesntActBeforeTheWorkHasBegun) {
  archive.inPhase = [this](int phase) {
    if (phase == 0) folder.WriteFile("lhtmp002.lzh", "new");
  };
  archive.stopInPhase = 0;
  EXPECT_EQ(Run(), 0);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
}

TEST_F(TempSweep, ComesBetweenTheLastReportAndTheEndOfTheCallback) {
  bool atTheReport = false;
  bool atTheEnd = true;
  archive.inPhase = [&](int phase) {
    if (phase == 4) atTheReport = folder.Exists("lhtmp002.lzh");
  };
  recording.whenReleased = [&] { atTheEnd = folder.Exists("lhtmp002.lzh"); };
  EXPECT_EQ(Run(), 1);
  EXPECT_TRUE(atTheReport);
  EXPECT_FALSE(atTheEnd);
}

TEST_F(TempSweep, WatchesNothingForABareArchiveName) {
  EXPECT_EQ(archive.CompressMem("a.lzh", "x", nullptr, 0, 1), 1);
  EXPECT_TRUE(folder.Exists("lhtmp002.lzh"));
}

}  // namespace
}  // namespace kozor::test
