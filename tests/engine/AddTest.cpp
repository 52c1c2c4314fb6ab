// AddTest.cpp - the command `a`: what goes in, under which name, in which way.
#include <gmock/gmock.h>

#include "tests/engine/EngineFixture.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AddTest : public EngineTest {
 protected:
  AddTest() {
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

TEST_F(AddTest, FilesUnderABaseDirectoryComeBackWithTimes) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "empty", "sub\\b.bin"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "empty", "sub\\b.bin"));
  ExpectMember("a.txt", "src/a.txt");
  ExpectMember("empty", "src/empty");
  ExpectMember("sub\\b.bin", "src/sub/b.bin");
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(AddTest, FullNamesLoseTheirRoot) {
  const std::string line = "a" + Quoted("x.lzh") + Quoted("src/a.txt");
  ASSERT_EQ(engine.Command(nullptr, line.c_str(), nullptr, 0), 0);
  const std::string name = folder.Lib("src/a.txt").substr(2);
  EXPECT_THAT(Names("x.lzh"), ElementsAre(name));
  EXPECT_TRUE(SameBytes(Extract("x.lzh", name).bytes, folder.ReadFile("src/a.txt")));
}

TEST_F(AddTest, SecondRunAppendsInPlaceAndThirdReplaces) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  const Bytes first = folder.ReadFile("x.lzh");
  ASSERT_EQ(Add("x.lzh", "src", {"empty"}), 0);
  const Bytes second = folder.ReadFile("x.lzh");
  ASSERT_GT(second.size(), first.size());
  EXPECT_TRUE(std::equal(first.begin(), first.end() - 1, second.begin()));

  folder.WriteFile("src/a.txt", "changed");
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("empty", "a.txt"));
  ExpectMember("a.txt", "src/a.txt");
}

TEST_F(AddTest, ResponseFileHoldsNames) {
  folder.WriteFile("work/names.rsp", "\"a.txt\"\r\n\n  \"sub\\b.bin\"\n\"empty\"");
  const std::string response = "@" + folder.Lib("work/names.rsp");
  ASSERT_EQ(Add("x.lzh", "src", {response}, "\"-w" + folder.Lib("work") + "\\\""), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "sub\\b.bin", "empty"));
  EXPECT_EQ(Add("x.lzh", "src", {"@" + folder.Lib("work/none.rsp")}), 0x802A);
}

TEST_F(AddTest, FileThatBeginsWithAnAtIsAFile) {
  folder.WriteFile("src/@a", "text");
  ASSERT_EQ(Add("x.lzh", "src", {"@a", "-b"}), 0x800D);
  folder.WriteFile("src/-b", "text");
  ASSERT_EQ(Add("x.lzh", "src", {"@a", "-b"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("@a", "-b"));
}

TEST_F(AddTest, TreeHoldsDirectoriesAsMembers) {
  folder.WriteFile("src/hollow/x", "");
  std::filesystem::remove(folder.Path("src/hollow/x"));
  ASSERT_EQ(AddTree("x.lzh", "src"), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "empty", "sub\\b.bin", "sub\\deep\\c"));
  if (HaveProgram("lhasa")) {
    const CommandResult listing = RunCommand("lhasa l " + folder.Path("x.lzh").string());
    EXPECT_THAT(listing.output, testing::HasSubstr("hollow/"));
  }
  // A second time nothing is to be said twice.
  ASSERT_EQ(AddTree("x.lzh", "src"), 0);
  EXPECT_EQ(Names("x.lzh").size(), 4U);
  EXPECT_EQ(AddTree("x.lzh", "nowhere"), 0x800F);
}

TEST_F(AddTest, ArchiveIsNeverPutIntoItself) {
  ASSERT_EQ(Add("src/x.lzh", "src", {"a.txt"}), 0);
  ASSERT_EQ(Add("src/x.lzh", "src", {"empty", "x.lzh"}), 0);
  ASSERT_EQ(AddTree("src/x.lzh", "src"), 0);
  EXPECT_THAT(Names("src/x.lzh", "*.lzh"), IsEmpty());
  const Bytes before = folder.ReadFile("src/x.lzh");
  EXPECT_EQ(Add("src/x.lzh", "src", {"x.lzh"}), 0x800F);
  EXPECT_TRUE(SameBytes(folder.ReadFile("src/x.lzh"), before));
}

TEST_F(AddTest, NameGivenTwiceIsAddedOnce) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "A.TXT", ".\\a.txt", "a.txt"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt"));
  EXPECT_EQ(Add("y.lzh", "src", {"sub\\deep\\c", folder.Lib("src/a.txt")}), 0);
  folder.WriteFile("other/a.txt", "another");
  EXPECT_EQ(Add("y.lzh", "src",
                {"a.txt", "..\\other\\..\\..\\" + folder.Path().filename().string() +
                              "\\other\\..\\src\\a.txt"}),
            0);
}

TEST_F(AddTest, NamesThatDifferInCaseAlone) {
  // The one file is replaced under its new spelling; two files are kept side by side.
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  std::filesystem::rename(folder.Path("src/a.txt"), folder.Path("src/A.TXT"));
  ASSERT_EQ(Add("x.lzh", "src", {"A.TXT"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("A.TXT"));
  folder.WriteFile("src/a.txt", "small");
  folder.WriteFile("src/A.TXT", "LARGE");
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  ASSERT_EQ(Add("x.lzh", "src", {"A.TXT"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("a.txt", "A.TXT"));
  ExpectMember("a.txt", "src/a.txt");
  ExpectMember("A.TXT", "src/A.TXT");
}

TEST_F(AddTest, MethodsAreChosenBySwitch) {
  const auto methodAt2 = [&] {
    const Bytes bytes = folder.ReadFile("x.lzh");
    std::filesystem::remove(folder.Path("x.lzh"));
    return std::string(bytes.begin() + 2, bytes.begin() + 7);
  };
  struct Row {
    const char* switches;
    const char* method;
  };
  for (const Row& row : {Row{"", "-lh5-"}, Row{"-o5", "-lh5-"}, Row{"-o6", "-lh6-"},
                         Row{"-o7", "-lh7-"}, Row{"-z1", "-lh0-"}}) {
    ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}, row.switches), 0);
    ExpectMember("a.txt", "src/a.txt");
    EXPECT_EQ(methodAt2(), row.method);
  }
}

TEST_F(AddTest, WhatDoesNotPackIsStored) {
  folder.WriteFile("src/noise", RandomBytes(1300000));
  ASSERT_EQ(Add("x.lzh", "src", {"noise", "a.txt"}), 0);
  const Bytes archive = folder.ReadFile("x.lzh");
  EXPECT_EQ(std::string(archive.begin() + 2, archive.begin() + 7), "-lh0-");
  ExpectMember("noise", "src/noise");
  ExpectMember("a.txt", "src/a.txt");
}

TEST_F(AddTest, FailuresLeaveTheArchiveAsItWas) {
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  const Bytes before = folder.ReadFile("x.lzh");
  struct Row {
    std::vector<std::string> names;
    int code;
  };
  const Row rows[] = {
      {{"empty", "missing"}, 0x800D},
      {{"a.txt", "missing"}, 0x800D},
      {{"empty", "sub"}, 0x8008},
      {{"empty", "a>b"}, 0x800D},
      {{}, 0x802B},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Add("x.lzh", "src", row.names), row.code);
    EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), before));
    EXPECT_NE(Add("new.lzh", "src", row.names), 0);
    EXPECT_FALSE(folder.Exists("new.lzh"));
  }
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(AddTest, FileOf4GiBIsRefusedBeforeAnythingIsWritten) {
  folder.WriteFile("src/large", "");
  std::filesystem::resize_file(folder.Path("src/large"), std::uintmax_t{1} << 32);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "large"}), 0x8008);
  EXPECT_FALSE(folder.Exists("x.lzh"));
}

TEST_F(AddTest, ArchivesThatCannotBeChanged) {
  folder.WriteFile("text", "no archive at all, but long enough to hold a header");
  EXPECT_EQ(Add("text", "src", {"a.txt"}), 0x8019);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt"}), 0);
  SetFileAttributesA(folder.Lib("x.lzh").c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(Add("x.lzh", "src", {"empty"}), 0x8027);
  EXPECT_EQ(Add("nowhere/x.lzh", "src", {"a.txt"}), 0x8018);
  EXPECT_EQ(Add("src", "src", {"a.txt"}), 0x8018);
  EXPECT_EQ(Add("y.lzh", "src", {"a.txt"}, "\"-w" + folder.Lib("nowhere") + "\""), 0x8025);
}

TEST_F(AddTest, MaskMeansTheFilesOfItsDirectory) {
  folder.WriteFile("src/sub/d.bin", "d");
  ASSERT_EQ(Add("x.lzh", "src", {"sub\\*.bin"}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("sub\\b.bin", "sub\\d.bin"));
}

TEST_F(AddTest, AttributesComeBack) {
  SetFileAttributesA(folder.Lib("src/a.txt").c_str(),
                     FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  ASSERT_EQ(Add("x.lzh", "src", {"a.txt", "empty"}), 0);
  EXPECT_EQ(Extract("x.lzh", "a.txt").attribute, 0x03);
  EXPECT_EQ(Extract("x.lzh", "empty").attribute, 0x20);
}

}  // namespace
}  // namespace kozor::test
