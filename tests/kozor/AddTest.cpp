// AddTest.cpp - kozor add: which files are added, under which names, and the messages about the
// others.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/kozor/KozorProgram.h"

namespace kozor::test {
namespace {

using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

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

TEST_F(KozorAdd, StoresATreeWithNamesOfAnyScriptThatComesBackIdentical) {
  MakeTree(folder, "tree", {{"日本語/表示.txt", 10}, {"žluťoučký/kůň 🐎.txt", 20}, {"ソ", 5}});
  fs::create_directory(folder.Path("work"));
  MustRun({"add", "--work-dir", "work", "アーカイブ.lzh", "-C", "tree", "."});
  EXPECT_TRUE(fs::is_empty(folder.Path("work")));
  EXPECT_EQ(Extracted("アーカイブ.lzh"), "");
}

TEST_F(KozorAdd, TakesTheFilesThatTheWordsMean) {
  struct Row {
    Words words;
    Words members;
  };
  const Row rows[] = {
      {{"tree/a.txt"}, {"tree/a.txt"}},
      {{"-C", "tree", "*.txt"}, {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree", "sub/*.txt"}, {"sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree", "sub/"}, {"sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree", "sub", "*.txt", "a.txt"}, {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree/sub", "../sub/./a.txt"}, {"a.txt"}},
      {{"-C", "tree", ".", "--exclude", "*.TXT"}, {"b.c"}},
      {{"-C", "tree", ".", "--exclude=deep", "--exclude", "sub/a.txt"}, {"a.txt", "b.c"}},
  };
  for (const Row& row : rows) {
    Words words = {"add", "--new", "a.lzh"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    MustRun(words);
    EXPECT_THAT(Members("a.lzh"), UnorderedElementsAreArray(row.members));
    EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "tree"));
  }
}

TEST_F(KozorAdd, StoresFilesOutsideTheBaseFromTheRootOn) {
  const std::string outside = folder.Path("tree/sub/a.txt").string();
  MustRun({"add", "a.lzh", "-C", "tree/sub/deep", "c.txt", outside});
  EXPECT_THAT(Members("a.lzh"), UnorderedElementsAre("c.txt", outside.substr(1)));
  folder.WriteFile("base" + outside, "another file by this name");
  EXPECT_THAT(MustFail({"add", "b.lzh", "-C", "base", outside.substr(1), outside}),
              HasSubstr("two of the files would be stored by this name"));
  EXPECT_FALSE(folder.Exists("b.lzh"));
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
  EXPECT_THAT(Members("tree/a.lzh"),
              UnorderedElementsAre("a.txt", "b.c", "sub/a.txt", "sub/deep/c.txt"));
}

TEST_F(KozorAdd, RefusesNamesThatTheArchiveHoldsUnlessToldTo) {
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  folder.WriteFile("tree/a.txt", "changed");
  folder.WriteFile("tree/new.txt", "new");
  const Bytes before = folder.ReadFile("a.lzh");
  EXPECT_THAT(
      MustFail({"add", "a.lzh", "-C", "tree", "a.txt", "new.txt"}),
      AllOf(HasSubstr("a.txt: the archive holds a file of that name"), Not(HasSubstr("new.txt:"))));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  MustRun({"add", "--overwrite", "a.lzh", "-C", "tree", "a.txt", "new.txt"});
  EXPECT_EQ(Extracted("a.lzh"), "");
}

TEST_F(KozorAdd, ReplacesNothingButAnArchiveThatMayBeWritten) {
  folder.WriteFile("notes.txt", "no archive");
  EXPECT_THAT(MustFail({"add", "--new", "notes.txt", "tree"}),
              HasSubstr("notes.txt: not an LZH archive"));
  EXPECT_EQ(folder.ReadFile("notes.txt").size(), 10U);
  MustRun({"add", "a.lzh", "-C", "tree", "a.txt"});
  const Bytes before = folder.ReadFile("a.lzh");
  fs::permissions(folder.Path("a.lzh"), fs::perms::owner_read);
  for (const char* option : {"--new", "--overwrite"}) {
    EXPECT_THAT(MustFail({"add", option, "a.lzh", "-C", "tree", "b.c"}),
                HasSubstr("a.lzh: the archive is read-only"));
  }
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "notes.txt", "tree"));
}

TEST_F(KozorAdd, NamesEveryFileThatHasToBeLeftOut) {
  folder.WriteFile("tree/what?.txt", "x");
  folder.WriteFile("tree/what|.txt", "x");
  folder.WriteFile("tree/sub/a:b/inside.txt", "x");
  ASSERT_EQ(mkfifo(folder.Path("tree/pipe.txt").c_str(), 0600), 0);
  fs::create_symlink("nowhere", folder.Path("tree/link.txt"));
  for (const char* word : {".", "*.txt"}) {
    EXPECT_THAT(MustFail({"add", "--new", "a.lzh", "-C", "tree", word}),
                AllOf(HasSubstr("tree/what?.txt: left out"), HasSubstr("tree/what|.txt: left out"),
                      HasSubstr("tree/sub/a:b: left out"),
                      HasSubstr("tree/pipe.txt: left out: neither a file nor a directory"),
                      HasSubstr("tree/link.txt: left out: a link that leads nowhere")));
    EXPECT_THAT(Members("a.lzh"), testing::IsSupersetOf({"a.txt", "sub/a.txt", "sub/deep/c.txt"}));
  }
  EXPECT_THAT(MustFail({"add", "b.lzh", "--dir", "tree"}), HasSubstr("tree/what?.txt: left out"));
  EXPECT_FALSE(folder.Exists("b.lzh"));
}

TEST_F(KozorAdd, NamesFilesWithoutPermission) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  fs::permissions(folder.Path("tree/b.c"), fs::perms::none);
  fs::permissions(folder.Path("tree/sub"), fs::perms::none);
  const std::string said = MustFail({"add", "a.lzh", "-C", "tree", "."});
  fs::permissions(folder.Path("tree/sub"), fs::perms::owner_all);
  EXPECT_THAT(said, AllOf(HasSubstr("tree/b.c: left out: no permission"),
                          HasSubstr("tree/sub: left out: no permission")));
  EXPECT_THAT(Members("a.lzh"), ElementsAre("a.txt"));
}

TEST_F(KozorAdd, DoesNothingWhenAWordMeansNothing) {
  for (const std::string word : {"missing.txt", "*.missing", "*/a.txt", "sub/missing/*.txt"}) {
    EXPECT_THAT(MustFail({"add", "a.lzh", "-C", "tree", "a.txt", word}), HasSubstr("kozor: "));
  }
  EXPECT_THAT(MustFail({"add", "--work-dir", "none", "a.lzh", "tree"}),
              HasSubstr("none: no such directory"));
  EXPECT_THAT(TopNames(), ElementsAre("tree"));
}

TEST_F(KozorAdd, TakesADirectoryWithItsEmptyFolders) {
  fs::create_directories(folder.Path("tree/empty/folder"));
  MustRun({"add", "a.lzh", "--dir", "tree"});
  EXPECT_EQ(Extracted("a.lzh"), "");
}

TEST_F(KozorAdd, TakesStandardInput) {
  const CommandResult result = Shell(
      "$KOZOR add --stdin in/sub.bin a.lzh < tree/sub/a.txt && $KOZOR add --stdin - a.lzh < "
      "/dev/null && $KOZOR print a.lzh in/sub.bin | cmp - tree/sub/a.txt");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(Members("a.lzh"), ElementsAre("in/sub.bin", "-"));
}

TEST_F(KozorAdd, AddsWhatIsNewOrListedOrOnlySaysSo) {
  MustRun({"add", "a.lzh", "-C", "tree", "a.txt", "b.c"});
  const Bytes before = folder.ReadFile("a.lzh");
  EXPECT_THAT(Kozor({"add", "--update", "a.lzh", "-C", "tree", "*.txt", "--exclude", "sub"}).output,
              HasSubstr("a.lzh: up to date"));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  folder.WriteFile("tree/b.c", "newer");
  folder.SetTime("tree/b.c", 2'000'000'000);
  const Words update = {"add", "--update", "--dry-run", "a.lzh", "-C", "tree", "."};
  EXPECT_EQ(Kozor(update).output, "b.c\nsub/a.txt\nsub/deep/c.txt\n");
  MustRun({"add", "--update", "a.lzh", "-C", "tree", "."});
  EXPECT_EQ(Extracted("a.lzh"), "");
  EXPECT_EQ(Shell("find tree -type f -print0 | $KOZOR add b.lzh --null --files-from -").status, 0);
  EXPECT_EQ(Members("b.lzh").size(), 4U);
}

TEST_F(KozorAdd, WritesToStandardOutputAndOthersReadStandardInput) {
  const CommandResult result = Shell(
      "$KOZOR add - -C tree . | tee a.lzh | $KOZOR extract - -d out && $KOZOR test - < a.lzh && "
      "$KOZOR print - a.txt < a.lzh | cmp - tree/a.txt");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
}

TEST_F(KozorAdd, MakesASelfExtractingProgram) {
  if (Shell("uname -m").output != "x86_64\n") GTEST_SKIP() << "programs are for x86-64 only";
  MustRun({"add", "--sfx", "a.lzh", "-C", "tree", "."});
  MustRun({"add", "--new", "--sfx", "a.lzh", "-C", "tree", "."});
  EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "a.run", "tree"));
  const CommandResult extracted = Shell("mkdir out && cd out && ../a.run");
  EXPECT_EQ(extracted.status, 0) << extracted.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
  folder.WriteFile("notes.run", "no program");
  EXPECT_THAT(MustFail({"add", "--sfx", "notes.lzh", "tree"}),
              HasSubstr("a file that is no self-extracting archive"));
  EXPECT_FALSE(folder.Exists("notes.lzh"));
}

}  // namespace
}  // namespace kozor::test
