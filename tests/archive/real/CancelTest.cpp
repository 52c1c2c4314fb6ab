// CancelTest.cpp - stopping Compress and Extract at every report that they make.
#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class Cancel : public RealArchiveTest {
 protected:
  Cancel() {
    MakeTree(folder, "src", {{"a.txt", 100}, {"big", 600'000}, {"sub/c.txt", 1}, {"empty", 0}});
    MakeTree(folder, "old", {{"old.txt", 5000}});
    folder.WriteFile("work/keep", "");
    ZorFind find;
    find.SetCurrentDirectoryA(Lib("old").c_str());
    find.AddTail("*.*");
    EXPECT_EQ(archive.Compress(find, ArchivePath().c_str(), 0, 0), 1);
    before = folder.ReadFile("a.lzh");
  }

  // Every file that came out of the archive is whole, and the old one is among them.
  void ExpectWholeMembers() {
    std::filesystem::remove_all(folder.Path("out"));
    StoppableArchive reader;
    ASSERT_EQ(reader.Extract(ArchivePath().c_str(), Lib("out").c_str(), nullptr), 1);
    EXPECT_TRUE(folder.Exists("out/old.txt"));
    for (const std::string& name : folder.List("out")) {
      if (name.ends_with('/')) continue;
      const std::string source = (name == "old.txt" ? "old/" : "src/") + name;
      EXPECT_EQ(folder.ReadFile("out/" + name), folder.ReadFile(source)) << name;
    }
  }

  // Stops adding at each report in turn; the last run goes through.
  void StopAddingEverywhere() {
    for (int stop = 0;; ++stop) {
      SCOPED_TRACE(stop);
      folder.WriteFile("a.lzh", before);
      StoppableArchive stoppable;
      stoppable.SetWorkDirectory(archive.GetWorkDirectory());
      stoppable.stopAt = stop;
      ZorFind find;
      find.SetCurrentDirectoryA(Lib("src").c_str());
      find.AddTail("*.*");
      const int result = stoppable.Compress(find, ArchivePath().c_str(), 1, 0);
      ExpectNoLeftovers();
      ExpectWholeMembers();
      if (stoppable.calls <= stop + 1) {  // the last report can't stop anything
        EXPECT_EQ(result, 1);
        EXPECT_GT(stop, 8);
        return;
      }
      EXPECT_EQ(result, 0);
      EXPECT_EQ(stoppable.GetError(), ZorErrorCanceled);
    }
  }

  Bytes before;
};

TEST_F(Cancel, LeavesWholeMembersWhereverAddingFileByFileIsStopped) {
  StopAddingEverywhere();
}

TEST_F(Cancel, LeavesTheOldArchiveWhereverAddingAllAtOnceIsStopped) {
  archive.SetWorkDirectory(Lib("work").c_str());
  StopAddingEverywhere();
}

TEST_F(Cancel, LeavesWholeFilesWhereverExtractingIsStopped) {
  ASSERT_EQ(Compress(), 1);
  for (int stop = 0;; ++stop) {
    SCOPED_TRACE(stop);
    std::filesystem::remove_all(folder.Path("out"));
    StoppableArchive stoppable;
    stoppable.stopAt = stop;
    const int result = stoppable.Extract(ArchivePath().c_str(), Lib("out").c_str(), nullptr);
    for (std::string name : stoppable.membersDone) {
      std::replace(name.begin(), name.end(), '\\', '/');
      EXPECT_EQ(folder.ReadFile("out/" + name), folder.ReadFile("src/" + name)) << name;
    }
    if (stoppable.calls <= stop + 1) {
      EXPECT_EQ(result, 1);
      EXPECT_GT(stop, 8);
      break;
    }
    EXPECT_EQ(stoppable.GetError(), ZorErrorCanceled);
  }
}

}  // namespace
}  // namespace kozor::test
