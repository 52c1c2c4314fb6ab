// DeleteTest.cpp - the command `d`, and the members that stay.
#include <utility>

#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class EngineDelete : public EngineTest {
 protected:
  // Members of several levels, with extensions unknown to the archiver.
  const RawMember first{.level = 0, .name = "first.txt", .contents = "one"};
  const RawMember second{.level = 1,
                         .name = "second.doc",
                         .contents = "two two",
                         .extensions = {{0x02, "sub\xFF"}, {0x77, "unknown"}}};
  const RawMember third{.level = 2, .name = "third.txt", .extensions = {{0xC9, ""}}};
  const RawMember fourth{.level = 3, .name = "fourth.doc", .contents = "four"};

  void WriteAll() { folder.WriteFile("x.lzh", RawArchive({first, second, third, fourth})); }
};

TEST_F(EngineDelete, KeptMembersStayByteForByte) {
  const std::pair<std::vector<std::string>, Bytes> rows[] = {
      {{"first.txt"}, RawArchive({second, third, fourth})},
      {{"SUB/SECOND.DOC"}, RawArchive({first, third, fourth})},
      {{"fourth.doc", "not there"}, RawArchive({first, second, third})},
      {{"*.txt"}, RawArchive({second, fourth})},
      {{"first.txt", "third.txt", "fourth.doc"}, RawArchive({second})},
  };
  for (const auto& [names, left] : rows) {
    WriteAll();
    ASSERT_EQ(Delete("x.lzh", names), 0) << names[0];
    EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), left)) << names[0];
  }
  EXPECT_THAT(Temporaries(), ElementsAre());
}

TEST_F(EngineDelete, NothingSelectedChangesNothing) {
  WriteAll();
  EXPECT_EQ(Delete("x.lzh", {"*.bak"}), 0x800F);
  EXPECT_EQ(Delete("x.lzh", {"second.doc"}), 0x800F);
  EXPECT_EQ(Delete("x.lzh", {}), 0x802B);
  EXPECT_EQ(Delete("nowhere.lzh", {"*.*"}), 0x8029);
  EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), RawArchive({first, second, third, fourth})));
}

TEST_F(EngineDelete, ExactNameLeavesItsTwinAndTakesItsOlderSelves) {
  const RawMember upper{.level = 0, .name = "README", .contents = "1"};
  const RawMember lower{.level = 0, .name = "readme", .contents = "2"};
  folder.WriteFile("x.lzh", RawArchive({upper, lower, upper}));
  ASSERT_EQ(Delete("x.lzh", {"README"}), 0);
  EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), RawArchive({lower})));
}

TEST_F(EngineDelete, PrefixOfASelfExtractorStays) {
  Bytes program(3000, 0x90);
  program[0] = 'M';
  program[1] = 'Z';
  folder.WriteFile("x.exe", Join({program, RawArchive({first, fourth})}));
  ASSERT_EQ(Delete("x.exe", {"first.txt"}), 0);
  EXPECT_TRUE(SameBytes(folder.ReadFile("x.exe"), Join({program, RawArchive({fourth})})));
  ASSERT_EQ(Compress("x.exe", "new", {}), 0);
  EXPECT_THAT(Names("x.exe"), ElementsAre("fourth.doc", "new"));

  // A program with code after its archive isn't changed.
  const Bytes atari = Join({program, RawArchive({first, fourth}), Bytes(500, 0x4E)});
  folder.WriteFile("y.ttp", atari);
  EXPECT_EQ(Delete("y.ttp", {"first.txt"}), 0x8008);
  EXPECT_EQ(Compress("y.ttp", "new", {}), 0x8008);
  EXPECT_TRUE(SameBytes(folder.ReadFile("y.ttp"), atari));
}

TEST_F(EngineDelete, DirectoriesGoByNameOrMaskAndTheArchiveWithItsLastMember) {
  const RawMember directory{
      .level = 1, .name = "", .extensions = {{0x02, "sub\xFF"}}, .method = "-lhd-"};
  folder.WriteFile("x.lzh", RawArchive({directory, first, second}));
  ASSERT_EQ(Delete("x.lzh", {"sub"}), 0);
  EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), RawArchive({first, second})));
  folder.WriteFile("y.lzh", RawArchive({directory, first, second}));
  ASSERT_EQ(Delete("y.lzh", {"*.*"}), 0);
  EXPECT_FALSE(folder.Exists("y.lzh"));
}

TEST_F(EngineDelete, GoesThroughALinkToTheArchive) {
  if (!Can(Ability::MakingLinks)) GTEST_SKIP() << "no symbolic links can be made here";
  folder.WriteFile("far/x.lzh", RawArchive({first, third, fourth}));
  std::filesystem::create_symlink("far/x.lzh", folder.Path("link.lzh"));
  ASSERT_EQ(Delete("link.lzh", {"*.txt"}), 0);
  EXPECT_THAT(Names("far/x.lzh"), ElementsAre("fourth.doc"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link.lzh")));
  ASSERT_EQ(Delete("link.lzh", {"*.*"}), 0);
  EXPECT_FALSE(folder.Exists("far/x.lzh"));
}

}  // namespace
}  // namespace kozor::test
