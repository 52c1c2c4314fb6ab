// CancelTest.cpp - stopping Compress and Extract at every report that they make.
#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class Cancel : public RealArchiveTest {
 protected:
  Cancel() { MakeTree(folder, "src", {{"a.txt", 100}, {"big", 600'000}, {"sub/c", 1}, {"e", 0}}); }

  // Stops an operation at each of its reports in turn and looks at what that leaves.  The last
  // report can't stop anything.
  static void StopEverywhere(const std::function<int(StoppableArchive&)>& operation,
                             const std::function<void(const StoppableArchive&)>& look) {
    StoppableArchive whole;
    ASSERT_EQ(operation(whole), 1);
    ASSERT_GT(whole.calls, 8);
    for (int stop = 0; stop + 1 < whole.calls; ++stop) {
      SCOPED_TRACE(stop);
      StoppableArchive stopped;
      stopped.stopAt = stop;
      EXPECT_EQ(operation(stopped), 0);
      EXPECT_EQ(stopped.GetError(), ZorErrorCanceled);
      look(stopped);
    }
  }

  // Every file that comes out of the archive is whole, and the old one is among them.
  void ExpectWholeMembers() {
    std::filesystem::remove_all(folder.Path("out"));
    ASSERT_EQ(Extract(), 1);
    EXPECT_TRUE(folder.Exists("out/old.txt"));
    for (const std::string& name : folder.List("out")) {
      if (name.ends_with('/')) continue;
      const std::string source = (name == "old.txt" ? "old/" : "src/") + name;
      EXPECT_EQ(folder.ReadFile("out/" + name), folder.ReadFile(source)) << name;
    }
  }
};

TEST_F(Cancel, LeavesWholeMembersWhereverAddingIsStopped) {
  MakeTree(folder, "old", {{"old.txt", 5000}});
  ASSERT_EQ(archive.Compress(Selection(Lib("old"), {"*.*"}), path.c_str(), 0, 0), 1);
  const Bytes before = folder.ReadFile("a.lzh");
  folder.WriteFile("work/keep", "");
  // File by file, and with a work directory all at once.
  for (const std::string& work : {std::string(), Lib("work")}) {
    SCOPED_TRACE(work);
    const auto add = [&](StoppableArchive& stoppable) {
      folder.WriteFile("a.lzh", before);
      stoppable.SetWorkDirectory(work.c_str());
      return stoppable.Compress(Selection(Lib("src"), {"*.*"}), path.c_str(), 1, 0);
    };
    StopEverywhere(add, [&](const StoppableArchive&) {
      ExpectNoLeftovers();
      ExpectWholeMembers();
    });
  }
}

TEST_F(Cancel, LeavesWholeFilesWhereverExtractingIsStopped) {
  ASSERT_EQ(Compress(), 1);
  const auto extract = [&](StoppableArchive& stoppable) {
    std::filesystem::remove_all(folder.Path("out"));
    return stoppable.Extract(path.c_str(), Lib("out").c_str(), nullptr);
  };
  StopEverywhere(extract, [&](const StoppableArchive& stopped) {
    for (std::string name : stopped.membersDone) {
      std::replace(name.begin(), name.end(), '\\', '/');
      EXPECT_EQ(folder.ReadFile("out/" + name), folder.ReadFile("src/" + name)) << name;
    }
  });
}

}  // namespace
}  // namespace kozor::test
