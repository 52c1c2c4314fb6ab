// DeleteTest.cpp - Delete: one mask or resolved names, on one line.
#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Delete : public RecordedArchiveTest {
 protected:
  Delete() {
    folder.WriteFile("a.lzh", "old");
    recording.members = {{.name = "d/f.txt"}, {.name = "g.txt"}, {.name = "h.tmp"}};
  }
  int Run(std::initializer_list<const char*> masks) {
    return archive.Delete(Selection("C:\\base", masks), Lib("a.lzh").c_str());
  }
};

TEST_F(Delete, HandsASingleMaskOverAsItIs) {
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(Run({">*.none"}), 1);
  EXPECT_THAT(TakeCalls(), ElementsAre("GetRunning", "SetCursorMode 0", "SetOwnerWindowEx",
                                       "OnAbort 1 0 0/1 0/0 '#\\a.lzh' -",
                                       "Unlha: d" + kOptions + " -w0 \"#\\a.lzh\" \">*.none\"",
                                       "OnAbort 1 4 0/1 0/0 '#\\a.lzh' -", "KillOwnerWindowEx"));
}

TEST_F(Delete, ResolvesSeveralMasksIntoNames) {
  archive.SetBackgroundMode(0);
  EXPECT_EQ(Run({"*.*", ">*.tmp"}), 1);
  EXPECT_THAT(TakeCalls("Unlha: d" + kOptions),
              ElementsAre(" -jyd -w0 \"#\\a.lzh\" \"d\\f.txt\" \"g.txt\""));
  EXPECT_EQ(Run({"*.txt", "*.txt"}), 1);
  EXPECT_THAT(TakeCalls("OnAbort 1 0 "), ElementsAre("0/2 0/0 '#\\a.lzh' -"));
}

TEST_F(Delete, DoesntTroubleTheArchiverForNothing) {
  for (const auto& masks : {std::initializer_list<const char*>{}, {"*.none", "*.not"}}) {
    EXPECT_EQ(Run(masks), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
    EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  }
  recording.archivesThatOpen = 0;
  EXPECT_EQ(Run({"*.txt", "*.tmp"}), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
}

// A hostile archive must not make the line name a member that wasn't selected.
TEST_F(Delete, RefusesAMemberNameWithAQuote) {
  recording.members.push_back({.name = "x.tmp\" \"g.txt"});
  recording.members.push_back({.name = "x\" \"g.txt.tmp"});
  EXPECT_EQ(Run({"*.tmp", "*.tmp"}), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileOpen);
  EXPECT_THAT(TakeCalls("Unlha"), IsEmpty());
}

// The line grows by each name, and not by copies of itself.
TEST_F(Delete, PutsAnyNumberOfNamesOnTheLine) {
  recording.members.clear();
  for (int i = 0; i < 100'000; ++i) {
    recording.members.push_back({.name = "directory/name" + std::to_string(i) + ".txt"});
  }
  recording.hide.clear();
  EXPECT_EQ(Run({"*.*", "*.txt"}), 1);
  EXPECT_GT(TakeCalls("Unlha: d").front().size(), 2'000'000U);
}

}  // namespace
}  // namespace kozor::test
