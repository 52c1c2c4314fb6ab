// AddTest.cpp - the command `a`: which files are added, under which names, and how.
#include <utility>

#include "tests/engine/EngineFixture.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class EngineAdd : public EngineTest {
 protected:
  EngineAdd() {
    MakeTree(folder, "src",
             {{"a.txt", 1000}, {"empty", 0}, {"sub/b.bin", 70000}, {"sub/deep/c", 1}});
  }

  void ExpectMember(const std::string& name, const std::string& file) {
    const Extracted extracted = Extract("x.lzh", name);
    EXPECT_EQ(extracted.code, 0) << name;
    EXPECT_TRUE(SameBytes(extracted.bytes, folder.ReadFile(file))) << name;
    EXPECT_EQ(extracted.time, folder.GetTime(file)) << name;
  }
};

TEST_F(EngineAdd, FirstRunMakesTheArchiveSecondAppendsInPlaceThirdReplaces) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "sub\\b.bin"}), 0);
  ExpectMember("a.txt", "src/a.txt");
  ExpectMember("sub\\b.bin", "src/sub/b.bin");
  const Bytes first = folder.ReadFile("x.lzh");
  ASSERT_EQ(Add("x.lzh", "src", {"empty"}), 0);
  const Bytes second = folder.ReadFile("x.lzh");
  ASSERT_GT(second.size(), first.size());
  EXPECT_TRUE(std::equal(first.begin(), first.end() - 1, second.begin()));

  folder.WriteFile("src/a.txt", "changed");
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("sub\\b.bin", "empty", "a.txt"));
  ExpectMember("a.txt", "src/a.txt");
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(EngineAdd, KeepsUnixFactsOnlyWhenToldTo) {
  if (!Can(Ability::MakingLinks)) GTEST_SKIP() << "no symbolic links can be made here";
  std::filesystem::create_symlink("a.txt", folder.Path("src/link"));
  std::filesystem::create_directory_symlink("sub", folder.Path("src/dir"));
  std::filesystem::create_symlink("nowhere", folder.Path("src/dangling"));
  EXPECT_EQ(Add("x.lzh", "src", {"dangling"}), 0x800F);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "link"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "link"));
  ExpectMember("link", "src/a.txt");

  // A link replaces a file or another link.  It can be deleted, but isn't listed.
  const std::string names = Quoted("src\\") + " a.txt link dir dangling sub\\";
  const std::string line = "a -unix -j1" + Quoted("x.lzh") + names;
  ASSERT_EQ(engine.Command(nullptr, line.c_str(), nullptr, 0), 0);
  const std::uintmax_t bytes = std::filesystem::file_size(folder.Path("x.lzh"));
  ASSERT_EQ(engine.Command(nullptr, line.c_str(), nullptr, 0), 0);
  EXPECT_EQ(std::filesystem::file_size(folder.Path("x.lzh")), bytes);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt"));
  EXPECT_NE(Extract("x.lzh", "link").code, 0);
  EXPECT_EQ(Delete("x.lzh", {"dir"}), 0);
  EXPECT_EQ(Delete("x.lzh", {"dir"}), 0x800F);
  folder.WriteFile("src/now", "a file");
  std::filesystem::rename(folder.Path("src/now"), folder.Path("src/link"));
  ASSERT_EQ(Add("x.lzh", "src", {"link"}), 0);
  ExpectMember("link", "src/link");
}

TEST_F(EngineAdd, FullNamesLoseTheirRoot) {
  const std::string line = "a" + Quoted("x.lzh") + Quoted("src/a.txt");
  ASSERT_EQ(Command(line), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre(folder.Lib("src/a.txt").substr(2)));
}

TEST_F(EngineAdd, ResponseFileHoldsNames) {
  folder.WriteFile("work/names.rsp", "\"a.txt\"\r\n\n  \"sub\\b.bin\"\n\"empty\"");
  const std::string response = "@" + folder.Lib("work/names.rsp");
  ASSERT_EQ(Add("x.lzh", "src", {response}, "\"-w" + folder.Lib("work") + "\\\""), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "sub\\b.bin", "empty"));
  EXPECT_EQ(Add("x.lzh", "src", {"@" + folder.Lib("work/none.rsp")}), 0x802A);
}

TEST_F(EngineAdd, WildCardsAreAMaskOutsideOfQuotesAndNoNameInThem) {
  folder.WriteFile("src/sub/d.bin", "d");
  const std::string line = "a" + Quoted("x.lzh") + Quoted("src/");
  ASSERT_EQ(Command(line + " sub\\?.bin"), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("sub\\b.bin", "sub\\d.bin"));
  EXPECT_EQ(Command(line + " *.none"), 0x800F);

  // Code page 932 lacks the letter, so the file is listed as "caf?.txt", a mask for both.
  folder.WriteFile("src/caf\xC3\xA9.txt", "coffee");
  folder.WriteFile("src/cafe.txt", "coffee house");
  folder.WriteFile("names.rsp", "caf?.txt\n");
  EXPECT_EQ(Add("y.lzh", "src", {"caf?.txt"}), 0x800D);
  EXPECT_EQ(Add("y.lzh", "src", {"@" + folder.Lib("names.rsp")}), 0x800D);
  EXPECT_EQ(Command(line + " *.txt"), 0x800D);
  EXPECT_EQ(AddTree("y.lzh", "src"), 0x800D);
  EXPECT_FALSE(folder.Exists("y.lzh"));
}

TEST_F(EngineAdd, TreeTakenAgainIsReplaced) {
  ASSERT_EQ(AddTree("x.lzh", "src"), 0);
  const std::size_t size = folder.ReadFile("x.lzh").size();
  ASSERT_EQ(AddTree("x.lzh", "src"), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "empty", "sub\\b.bin", "sub\\deep\\c"));
  EXPECT_EQ(folder.ReadFile("x.lzh").size(), size);  // directories aren't added twice either
  EXPECT_EQ(AddTree("x.lzh", "nowhere"), 0x800F);
}

// It can't be appended to in place, so everything that stays is copied.
TEST_F(EngineAdd, AnArchiveWithAnUnusualEndKeepsItsMembers) {
  folder.WriteFile("src/x.lzh", "is a member, too");
  for (const bool isPadded : {false, true}) {
    ASSERT_EQ(AddTree("good.lzh", "src"), 0);
    Bytes archive = folder.ReadFile("good.lzh");
    archive.resize(isPadded ? archive.size() + 127 : archive.size() - 1);
    for (const std::string name : {"src/x.lzh", "y.lzh"}) {
      folder.WriteFile(name, archive);
      std::filesystem::create_directories(folder.Path("dirs/sub/deep"));
      EXPECT_EQ(AddTree(name, "dirs"), 0);
      EXPECT_EQ(Names(name), Names("good.lzh"));
      EXPECT_EQ(Add(name, "src", {"x.lzh"}), 0);
      EXPECT_EQ(Names(name).size(), 5U);
    }
    folder.WriteFile("src/x.lzh", "is a member, too");
  }
}

TEST_F(EngineAdd, ArchiveIsNeverPutIntoItself) {
  ASSERT_EQ(Add("src/x.lzh", "src", {"a.txt"}), 0);
  ASSERT_EQ(Add("src/x.lzh", "src", {"empty", "x.lzh"}), 0);
  ASSERT_EQ(AddTree("src/x.lzh", "src"), 0);
  EXPECT_THAT(Names("src/x.lzh", "*.lzh"), IsEmpty());
  const Bytes before = folder.ReadFile("src/x.lzh");
  std::filesystem::create_hard_link(folder.Path("src/x.lzh"), folder.Path("src/link"));
  const bool isLinked = Can(Ability::MakingLinks);
  if (isLinked) std::filesystem::create_directory_symlink(folder.Path("src"), folder.Path("far"));
  folder.WriteFile("names.rsp", "x.lzh\n");
  const std::string response = "@" + folder.Lib("names.rsp");
  for (const bool isThere : {true, false}) {
    if (!isThere) std::filesystem::remove(folder.Path("src/x.lzh"));
    EXPECT_EQ(Add("src/x.lzh", "src", {"x.lzh"}), 0);
    EXPECT_EQ(Add("src/x.lzh", "src", {response, "sub\\..\\X.LZH"}), 0);
    if (isLinked) {
      EXPECT_EQ(Add("far/x.lzh", "src", {"x.lzh"}), 0);
    }
    EXPECT_EQ(folder.Exists("src/x.lzh"), isThere);
  }
  ASSERT_EQ(Add("src/x.lzh", "src", {"x.lzh", "a.txt"}), 0);
  EXPECT_THAT(Names("src/x.lzh"), ElementsAre("a.txt"));
  EXPECT_EQ(Add("src/x.lzh", "src", {"x.lzh", "gone"}), 0x800F);
  folder.WriteFile("src/x.lzh", before);
  EXPECT_EQ(Add("src/x.lzh", "src", {"empty"}), 0);
}

TEST_F(EngineAdd, NameGivenTwiceIsAddedOnceAndMeansOneFile) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "A.TXT", ".\\a.txt", "a.txt"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt"));
  folder.WriteFile("src/sub/a.txt", "stored by the same name as the other one");
  EXPECT_EQ(Add("y.lzh", "src", {"sub\\a.txt", "sub\\..\\a.txt"}), 0x8028);
}

TEST_F(EngineAdd, AttributesComeBack) {
  if (!Can(Ability::KeepingAttributes)) GTEST_SKIP() << "Wine keeps few attributes";
  SetFileAttributesA(folder.Lib("src/a.txt").c_str(),
                     FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "empty"}), 0);
  EXPECT_EQ(Extract("x.lzh", "a.txt").attribute, 0x03);
  EXPECT_EQ(Extract("x.lzh", "empty").attribute, 0x20);
}

TEST_F(EngineAdd, FailuresLeaveTheArchiveAsItWas) {
  folder.WriteFile("src/large", "");
  // Its size plus the 1 KiB that extraction reserves exceeds 32 bits by one.
  std::filesystem::resize_file(folder.Path("src/large"), 0x1'0000'0000 - 1024);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  const Bytes before = folder.ReadFile("x.lzh");
  const std::pair<std::vector<std::string>, int> rows[] = {
      {{"empty", "missing"}, 0x800F}, {{"a.txt", "missing"}, 0x800F}, {{"empty", "a>b"}, 0x800D},
      {{"empty", "sub"}, 0x8008},     {{"empty", "large"}, 0x8008},   {{}, 0x802B},
  };
  for (const auto& [names, code] : rows) {
    EXPECT_EQ(Add("x.lzh", "src", names), code);
    EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), before));
    EXPECT_EQ(Add("new.lzh", "src", names), code);
    EXPECT_FALSE(folder.Exists("new.lzh"));
  }
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(EngineAdd, ArchivesThatCannotBeChanged) {
  folder.WriteFile("text", "no archive at all, but long enough to hold a header");
  EXPECT_EQ(Add("text", "src", {"a.txt"}), 0x8019);
  EXPECT_EQ(engine.CheckArchive(folder.Lib("text").c_str(), 1), 0);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  SetFileAttributesA(folder.Lib("x.lzh").c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(Add("x.lzh", "src", {"empty"}), 0x8027);
  EXPECT_EQ(Add("nowhere/x.lzh", "src", {"a.txt"}), 0x8018);
  EXPECT_EQ(Add("src", "src", {"a.txt"}), 0x8018);
  EXPECT_EQ(Add("y.lzh", "src", {"a.txt"}, "\"-w" + folder.Lib("nowhere") + "\""), 0x8025);
}

}  // namespace
}  // namespace kozor::test
