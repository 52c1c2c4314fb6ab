// RoundTripTest.cpp - packs and extracts trees and single members, in both code pages, and stops
// the operation at every report.
#include "real/RealArchive.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

// A tree of critical sizes and names: empty, one byte, window sizes, blanks, a leading '-' and '@',
// characters with the trail byte 0x5C (U+8868, U+30BD).
class ArchiveRoundTrip : public ArchiveReal, public testing::WithParamInterface<unsigned int> {
 protected:
  ArchiveRoundTrip() {
    MakeTree(folder, "src",
             {{"a.txt", 10},
              {"empty", 0},
              {"sub/one byte.bin", 1},
              {"sub/window", 65'536},
              {"sub/more", 300'001},
              {"-dash", 20},
              {"@at", 30},
              {"deep/er/and/deeper/x.y.z", 99},
              {"\xE8\xA1\xA8/\xE3\x82\xBD.txt", 40},
              {"\xE6\x97\xA5\xE6\x9C\xAC \xE8\xA1\xA8", 50}});
  }
  void ExpectTheTreeBack() {
    EXPECT_EQ(Extract(), 1) << archive.GetError();
    EXPECT_EQ(CompareTrees(folder.Path("src"), folder.Path("out")), "");
    EXPECT_NE(archive.IsArchive(path.c_str()), 0);
    ExpectNoLeftovers();
  }

 private:
  const CodePageScope codePage{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(, ArchiveRoundTrip, testing::Values(932U, 65001U));

TEST_P(ArchiveRoundTrip, GivesTheSameTreeByOneLinePerFile) {
  EXPECT_EQ(Compress(), 1) << archive.GetError();
  ExpectTheTreeBack();
}

TEST_P(ArchiveRoundTrip, GivesTheSameTreeByAResponseFile) {
  folder.WriteFile("work/keep", "");
  archive.SetWorkDirectory(Lib("work").c_str());
  EXPECT_EQ(Compress(), 1) << archive.GetError();
  ExpectTheTreeBack();
  EXPECT_THAT(folder.List("work"), ElementsAre("keep"));
}

TEST_P(ArchiveRoundTrip, GivesTheSameTreeWithDirectoriesByCompressDir) {
  std::filesystem::create_directories(folder.Path("src/empty directory"));
  EXPECT_EQ(archive.CompressDir(Lib("src").c_str(), path.c_str(), 0), 1);
  ExpectTheTreeBack();
  // Adding it again replaces what is there.
  const std::vector<std::string> before = Members();
  EXPECT_EQ(archive.CompressDir(Lib("src").c_str(), path.c_str(), 1), 1);
  EXPECT_THAT(Members(), testing::UnorderedElementsAreArray(before));
}

TEST_F(ArchiveReal, DirectoriesThatDifferInCaseAloneStayApart) {
  MakeTree(folder, "src",
           {{"dir/a.txt", 10}, {"diR/a.txt", 20}, {"diR/Sub/b", 1}, {"diR/sub/b", 2}});
  if (folder.List("src").size() < 8) GTEST_SKIP() << "this file system takes them for one";
  std::filesystem::create_directories(folder.Path("OUT"));  // the destination itself is looked up
  EXPECT_EQ(archive.CompressDir(Lib("src").c_str(), path.c_str(), 0), 1) << archive.GetError();
  EXPECT_EQ(archive.Extract(path.c_str(), Lib("out").c_str(), nullptr), 1) << archive.GetError();
  EXPECT_EQ(CompareTrees(folder.Path("src"), folder.Path("OUT")), "");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("out")));
}

TEST_F(ArchiveReal, MembersAreStoredFoundAndDeletedByOddNames) {
  const char* const names[] = {"-x", "@y", "a b.txt", "dir\\\x83\x5C.txt", "\x95\x5C\\z", "keep"};
  constexpr unsigned long kBytes = 100'000;
  const Bytes text = TextBytes(kBytes);
  for (const char* name : names) {
    ASSERT_EQ(archive.CompressMem(path.c_str(), name, text.data(), kBytes, 1), 1) << name;
  }
  EXPECT_THAT(Members(), testing::ElementsAreArray(names));
  for (const char* name : names) {
    Bytes loaded(kBytes);
    unsigned long size = 0;
    EXPECT_EQ(archive.GetFileInfo(path.c_str(), name, &size, nullptr, nullptr), 1) << name;
    EXPECT_EQ(size, kBytes);
    EXPECT_EQ(archive.ExtractMem(path.c_str(), name, loaded.data(), size), 1) << name;
    EXPECT_TRUE(loaded == text);
    EXPECT_EQ(archive.ExtractMem(path.c_str(), name, loaded.data(), size - 1), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorOutOfMemory);
  }
  EXPECT_EQ(archive.Delete(Selection("", {"-x", "@y"}), path.c_str()), 1) << archive.GetError();
  EXPECT_EQ(archive.Delete(Selection("", {"a b.txt"}), path.c_str()), 1) << archive.GetError();
  EXPECT_EQ(archive.Delete(Selection("", {"dir\\\x83\x5C.txt", "\x95\x5C\\"}), path.c_str()), 1)
      << archive.GetError();
  EXPECT_THAT(Members(), ElementsAre("keep"));
  ExpectNoLeftovers();
}

// An archive in the base directory receives everything but itself.
TEST_F(ArchiveReal, AnArchiveInItsBaseDirectoryTakesEveryOtherFile) {
  MakeTree(folder, "base", {{"a.txt", 10}, {"m", 70'000}, {"sub/z", 30}});
  folder.WriteFile("work/keep", "");
  archive.SetOverwriteMode(1);
  const std::string inside = Lib("base/m.lzh");
  for (const std::string& work : {std::string(), Lib("work")}) {
    archive.SetWorkDirectory(work.c_str());
    for (const int append : {0, 1, 1, 0}) {
      SCOPED_TRACE(work + " " + std::to_string(append));
      EXPECT_EQ(archive.Compress(Selection(Lib("base"), {"*.*"}), inside.c_str(), append, 0), 1)
          << archive.GetError();
      std::filesystem::remove_all(folder.Path("out"));
      EXPECT_EQ(archive.Extract(inside.c_str(), Lib("out").c_str(), nullptr), 1);
      EXPECT_EQ(folder.List("out"), (std::vector<std::string>{"a.txt", "m", "sub/", "sub/z"}));
    }
    std::filesystem::remove(folder.Path("base/m.lzh"));
  }
}

TEST_F(ArchiveReal, ExtractingLeavesWholeFilesWhereverItIsStopped) {
  MakeTree(folder, "src", {{"a.txt", 100}, {"big", 600'000}, {"sub/c", 1}, {"e", 0}});
  ASSERT_EQ(Compress(), 1);
  int result = 0;
  for (int stop = 0; result == 0; ++stop) {
    SCOPED_TRACE(stop);
    std::filesystem::remove_all(folder.Path("out"));
    StoppableArchive stopped;
    stopped.stopAt = stop;
    result = stopped.Extract(path.c_str(), Lib("out").c_str(), nullptr);
    EXPECT_EQ(stopped.GetError(), result == 0 ? ZorErrorCanceled : ZorErrorNone);
    EXPECT_EQ(stopped.calls, stop + (result == 0 ? 2 : 1)) << "the last report can't stop anything";
    for (std::string name : stopped.membersDone) {
      std::replace(name.begin(), name.end(), '\\', '/');
      EXPECT_EQ(folder.ReadFile("out/" + name), folder.ReadFile("src/" + name)) << name;
    }
  }
}

}  // namespace
}  // namespace kozor::test
