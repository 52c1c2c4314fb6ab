// AddTest.cpp - kozor add: which files go in, under which names, and what is said of the others.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/examples/KozorProgram.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

class KozorAdd : public KozorProgram {
 protected:
  KozorAdd() {
    MakeTree(folder, "tree",
             {{"a.txt", 100}, {"b.c", 5000}, {"sub/a.txt", 70'000}, {"sub/deep/c.txt", 0}});
  }

  std::string Extracted(const std::string& archive) const {
    MustRun({"extract", archive, "-d", "out"});
    return CompareTrees(folder.Path("tree"), folder.Path("out"));
  }
};

TEST_F(KozorAdd, StoresATreeThatComesBackIdentical) {
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  EXPECT_EQ(Extracted("a.lzh"), "");
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "out", "tree"));
}

TEST_F(KozorAdd, KeepsNamesOfAnyScript) {
  MakeTree(folder, "tree", {{"日本語/表示.txt", 10}, {"žluťoučký/kůň 🐎.txt", 20}, {"ソ", 5}});
  MustRun({"add", "アーカイブ.lzh", "-C", "tree", "."});
  EXPECT_EQ(Extracted("アーカイブ.lzh"), "");
}

struct WordCase {
  const char* title;
  std::vector<std::string> words;
  std::vector<std::string> members;
};

class KozorAddWords : public KozorAdd, public testing::WithParamInterface<WordCase> {};

TEST_P(KozorAddWords, MeanTheseFiles) {
  std::vector<std::string> words = {"add", "a.lzh"};
  words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
  MustRun(words);
  EXPECT_THAT(Members("a.lzh"), testing::UnorderedElementsAreArray(GetParam().members));
}

INSTANTIATE_TEST_SUITE_P(
    , KozorAddWords,
    testing::Values(
        WordCase{"File", {"tree/a.txt"}, {"tree/a.txt"}},
        WordCase{"FileOfABase", {"-C", "tree", "a.txt"}, {"a.txt"}},
        WordCase{"Mask", {"-C", "tree", "*.txt"}, {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
        WordCase{"MaskInAFolder", {"-C", "tree", "sub/*.txt"}, {"sub/a.txt", "sub/deep/c.txt"}},
        WordCase{"Directory", {"-C", "tree", "sub/"}, {"sub/a.txt", "sub/deep/c.txt"}},
        WordCase{"SeveralThatMeet",
                 {"-C", "tree", "sub", "*.txt", "a.txt"},
                 {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
        WordCase{"Dots", {"-C", "tree/sub", "../sub/./a.txt"}, {"a.txt"}},
        WordCase{"ExcludedMask", {"-C", "tree", ".", "--exclude", "*.TXT"}, {"b.c"}},
        WordCase{"ExcludedFolder", {"-C", "tree", ".", "--exclude=sub"}, {"a.txt", "b.c"}},
        WordCase{"ExcludedPath",
                 {"-C", "tree", ".", "--exclude", "sub/a.txt"},
                 {"a.txt", "b.c", "sub/deep/c.txt"}}),
    [](const auto& row) { return row.param.title; });

TEST_F(KozorAdd, StoresFilesOutsideTheBaseFromTheRootOn) {
  const std::string outside = folder.Path("tree/sub/a.txt").string();
  MustRun({"add", "a.lzh", "-C", "tree/sub/deep", "c.txt", outside});
  EXPECT_THAT(Members("a.lzh"), UnorderedElementsAre("c.txt", outside.substr(1)));
  MustRun({"extract", "a.lzh", "-d", "out"});
  EXPECT_EQ(folder.ReadFile("out" + outside), folder.ReadFile("tree/sub/a.txt"));
}

TEST_F(KozorAdd, KeepsFilesWhoseNamesDifferInCaseAlone) {
  MakeTree(folder, "tree",
           {{"Twin.h", 10}, {"twin.h", 20}, {"sub/TWIN.h", 30}, {"sub/twin.H", 40}});
  MustRun({"add", "whole.lzh", "-C", "tree", "."});
  EXPECT_EQ(Extracted("whole.lzh"), "");
  MustRun({"add", "chosen.lzh", "-C", "tree", "*.h", "*.txt", "b.c"});
  fs::remove_all(folder.Path("out"));
  EXPECT_EQ(Extracted("chosen.lzh"), "");
}

TEST_F(KozorAdd, NeverPutsTheArchiveIntoItself) {
  MustRun({"add", "tree/a.lzh", "-C", "tree", "."});
  MustRun({"add", "--overwrite", "tree/a.lzh", "-C", "tree", "."});
  MustRun({"add", "--new", "tree/a.lzh", "-C", "tree", "."});
  EXPECT_THAT(Members("tree/a.lzh"), Not(testing::Contains("a.lzh")));
  EXPECT_EQ(Members("tree/a.lzh").size(), 4U);
}

TEST_F(KozorAdd, RefusesNamesThatTheArchiveHoldsUnlessToldTo) {
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  folder.WriteFile("tree/a.txt", "changed");
  folder.WriteFile("tree/new.txt", "new");
  const Bytes before = folder.ReadFile("a.lzh");
  const CommandResult refused = Kozor({"add", "a.lzh", "-C", "tree", "a.txt", "new.txt"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, AllOf(HasSubstr("a.txt: the archive holds a file of that name"),
                                    Not(HasSubstr("new.txt:"))));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  MustRun({"add", "--overwrite", "a.lzh", "-C", "tree", "a.txt", "new.txt"});
  EXPECT_EQ(Extracted("a.lzh"), "");
}

TEST_F(KozorAdd, MakesANewArchiveInPlaceOfAnOldOne) {
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  MustRun({"add", "--new", "a.lzh", "-C", "tree", "b.c"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("b.c"));
  folder.WriteFile("notes.txt", "no archive");
  const CommandResult refused = Kozor({"add", "--new", "notes.txt", "tree"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, HasSubstr("notes.txt: not an LZH archive"));
  EXPECT_EQ(folder.ReadFile("notes.txt").size(), 10U);
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "notes.txt", "tree"));
}

TEST_F(KozorAdd, NamesEveryFileThatHasToBeLeftOut) {
  folder.WriteFile("tree/what?.txt", "x");
  folder.WriteFile("tree/sub/a:b/inside.txt", "x");
  ASSERT_EQ(mkfifo(folder.Path("tree/pipe.txt").c_str(), 0600), 0);
  fs::create_symlink("nowhere", folder.Path("tree/link.txt"));
  for (const char* word : {".", "*.txt"}) {
    const CommandResult result = Kozor({"add", "--new", "a.lzh", "-C", "tree", word});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                AllOf(HasSubstr("tree/what?.txt: left out"), HasSubstr("tree/sub/a?b: left out"),
                      HasSubstr("tree/pipe.txt: left out: neither a file nor a directory"),
                      HasSubstr("tree/link.txt: left out: a link that leads nowhere")));
    EXPECT_THAT(Members("a.lzh"), testing::IsSupersetOf({"a.txt", "sub/a.txt", "sub/deep/c.txt"}));
  }
}

TEST_F(KozorAdd, NamesFilesWithoutPermission) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  fs::permissions(folder.Path("tree/b.c"), fs::perms::none);
  fs::permissions(folder.Path("tree/sub"), fs::perms::none);
  const CommandResult result = Kozor({"add", "a.lzh", "-C", "tree", "."});
  fs::permissions(folder.Path("tree/sub"), fs::perms::owner_all);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, AllOf(HasSubstr("tree/b.c: left out: no permission"),
                                   HasSubstr("tree/sub: left out: no permission")));
  EXPECT_THAT(Members("a.lzh"), ElementsAre("a.txt"));
}

TEST_F(KozorAdd, DoesNothingWhenAWordMeansNothing) {
  for (const std::string word : {"missing.txt", "*.missing", "*/a.txt", "sub/missing/*.txt"}) {
    const CommandResult result = Kozor({"add", "a.lzh", "-C", "tree", "a.txt", word});
    EXPECT_EQ(result.status, 1) << word;
    EXPECT_THAT(result.output, HasSubstr("kozor: ")) << word;
  }
  EXPECT_THAT(TopNames(), ElementsAre("tree"));
}

TEST_F(KozorAdd, RefusesTwoFilesUnderOneName) {
  const std::string twice = folder.Path("tree/a.txt").string();
  const std::string below = twice.substr(1);
  folder.WriteFile("base/" + below, "another file");
  const CommandResult result = Kozor({"add", "a.lzh", "-C", "base", below, twice});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("two of the files would be stored by this name"));
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(KozorAdd, TakesADirectoryWithItsEmptyFolders) {
  fs::create_directories(folder.Path("tree/empty/folder"));
  MustRun({"add", "a.lzh", "--dir", "tree"});
  EXPECT_EQ(Extracted("a.lzh"), "");
  folder.WriteFile("tree/what?.txt", "x");
  const CommandResult refused = Kozor({"add", "b.lzh", "--dir", "tree"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, HasSubstr("tree/what?.txt: left out"));
  EXPECT_FALSE(folder.Exists("b.lzh"));
}

TEST_F(KozorAdd, TakesStandardInput) {
  const CommandResult result = Shell(
      "$KOZOR add --stdin in/sub.bin a.lzh < tree/sub/a.txt && $KOZOR add --stdin - a.lzh < "
      "/dev/null");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(Members("a.lzh"), ElementsAre("in/sub.bin", "-"));
  Shell("$KOZOR print a.lzh in/sub.bin > printed");
  EXPECT_EQ(folder.ReadFile("printed"), folder.ReadFile("tree/sub/a.txt"));
}

TEST_F(KozorAdd, MakesASelfExtractingProgram) {
  const CommandResult made = Kozor({"add", "--sfx", "a.lzh", "-C", "tree", "."});
  if (made.output.find("doesn't know the command") != std::string::npos) {
    GTEST_SKIP() << "this archiver makes no self-extracting programs";
  }
  EXPECT_EQ(made.status, 0) << made.output;
  MustRun({"add", "--new", "--sfx", "a.lzh", "-C", "tree", "."});
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "a.run", "tree"));
  const CommandResult extracted = Shell("mkdir out && cd out && ../a.run");
  EXPECT_EQ(extracted.status, 0) << extracted.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
}

TEST_F(KozorAdd, PutsTemporariesWhereItIsTold) {
  fs::create_directory(folder.Path("work"));
  MustRun({"add", "--work-dir", "work", "a.lzh", "-C", "tree", "."});
  EXPECT_TRUE(fs::is_empty(folder.Path("work")));
  EXPECT_EQ(Extracted("a.lzh"), "");
}

TEST_F(KozorAdd, LeavesAReadOnlyArchiveAlone) {
  MustRun({"add", "a.lzh", "-C", "tree", "a.txt"});
  const Bytes before = folder.ReadFile("a.lzh");
  fs::permissions(folder.Path("a.lzh"), fs::perms::owner_read);
  for (const char* option : {"--new", "--overwrite"}) {
    const CommandResult result = Kozor({"add", option, "a.lzh", "-C", "tree", "b.c"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("a.lzh: the archive is read-only"));
  }
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "tree"));
}

}  // namespace
}  // namespace kozor::test
