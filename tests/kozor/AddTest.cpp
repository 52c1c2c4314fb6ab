// AddTest.cpp - kozor add: which files are added, under which names, and the messages about the
// others.
#include <utility>

#include "tests/kozor/KozorProgram.h"
#include "tests/support/Ability.h"

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
  const std::pair<Words, Words> rows[] = {
      {{"tree/a.txt"}, {"tree/a.txt"}},
      {{"-C", "tree", "*.txt"}, {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree", "sub/*.txt"}, {"sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree", "sub/"}, {"sub/a.txt", "sub/deep/c.txt", "sub/deep/", "sub/"}},
      {{"-C", "tree", "--no-unix", "sub", "*.txt", "a.txt"},
       {"a.txt", "sub/a.txt", "sub/deep/c.txt"}},
      {{"-C", "tree/sub", "../sub/./a.txt"}, {"a.txt"}},
      {{"-C", "tree", ".", "--exclude", "*.TXT", "--exclude", "sub"}, {"b.c"}},
      {{"-C", "tree", ".", "--exclude=deep", "--exclude", "sub/a.txt"}, {"a.txt", "b.c", "sub/"}},
      {{"--dir", "tree", "--no-unix", "--exclude", "*.txt"}, {"b.c", "sub/deep/", "sub/"}},
  };
  for (const auto& [words, members] : rows) {
    MustRun(Words{"add", "--new", "a.lzh"} + words);
    EXPECT_THAT(Members("a.lzh"), UnorderedElementsAreArray(members));
    EXPECT_THAT(TopNames(), ElementsAre("a.lzh", "tree"));
  }
}

TEST_F(KozorAdd, StoresFilesOutsideTheBaseFromTheRootOn) {
  const std::string outside = folder.Path("tree/sub/a.txt").string();
  const std::string stored = folder.Path("tree/sub/a.txt").relative_path().generic_string();
  MustRun({"add", "a.lzh", "-C", "tree/sub/deep", "c.txt", outside});
  EXPECT_THAT(Members("a.lzh"), UnorderedElementsAre("c.txt", stored));
  folder.WriteFile("base/" + stored, "another file by this name");
  EXPECT_THAT(MustFail({"add", "b.lzh", "-C", "base", stored, outside}),
              HasSubstr("two files would be stored by this name"));
  EXPECT_FALSE(folder.Exists("b.lzh"));
}

TEST_F(KozorAdd, KeepsFilesWhoseNamesDifferInCaseAlone) {
  MakeTree(folder, "tree",
           {{"Twin.h", 10}, {"twin.h", 20}, {"sub/TWIN.h", 30}, {"sub/twin.H", 40}});
  fs::create_hard_link(folder.Path("tree/twin.h"), folder.Path("tree/TWIN.h"));
  MustRun({"add", "whole.lzh", "-C", "tree", "."});
  EXPECT_EQ(Extracted("whole.lzh"), "");
  MustRun({"add", "chosen.lzh", "-C", "tree", "*.h", "*.txt", "b.c"});
  fs::remove_all(folder.Path("out"));
  EXPECT_EQ(Extracted("chosen.lzh"), "");
}

TEST_F(KozorAdd, NeverPutsTheArchiveIntoItself) {
  MustRun({"add", "tree/a.lzh", "-C", "tree", "."});
  fs::create_hard_link(folder.Path("tree/a.lzh"), folder.Path("tree/b.lzh"));
  MustRun({"add", "--overwrite", "tree/a.lzh", "-C", "tree", "."});
  EXPECT_THAT(MustFail({"add", "--overwrite", "tree/a.lzh", "tree/a.lzh"}),
              HasSubstr("there is nothing to store"));
  fs::remove(folder.Path("tree/b.lzh"));
  MustRun({"add", "--new", "tree/a.lzh", "-C", "tree", "."});
  EXPECT_THAT(Members("tree/a.lzh"), UnorderedElementsAre("a.txt", "b.c", "sub/a.txt",
                                                          "sub/deep/c.txt", "sub/deep/", "sub/"));
}

TEST_F(KozorAdd, RefusesNamesThatTheArchiveHoldsUnlessToldTo) {
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  folder.WriteFile("tree/a.txt", "changed");
  folder.WriteFile("tree/new.txt", "new");
  const Bytes before = folder.ReadFile("a.lzh");
  EXPECT_THAT(MustFail({"add", "a.lzh", "-C", "tree", "a.txt", "new.txt"}),
              AllOf(HasSubstr("a.txt: the archive already has a member of that name"),
                    Not(HasSubstr("new.txt:"))));
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
  ASSERT_EQ(Shell("mkfifo tree/pipe.txt").status, 0);
  fs::create_symlink("nowhere", folder.Path("tree/link.txt"));
  for (const char* word : {".", "*.txt"}) {
    EXPECT_THAT(MustFail({"add", "--new", "--no-unix", "a.lzh", "-C", "tree", word}),
                AllOf(HasSubstr("tree/what?.txt: left out"), HasSubstr("tree/what|.txt: left out"),
                      HasSubstr("tree/sub/a:b: left out"),
                      HasSubstr("tree/pipe.txt: left out: not a regular file or directory"),
                      HasSubstr("tree/link.txt: left out: a broken link")));
    EXPECT_THAT(Members("a.lzh"), testing::IsSupersetOf({"a.txt", "sub/a.txt", "sub/deep/c.txt"}));
  }
  EXPECT_THAT(MustFail({"add", "b.lzh", "--dir", "tree"}),
              AllOf(HasSubstr("tree/what?.txt: left out"), Not(HasSubstr("link.txt"))));
  for (const Words& command : {Words{"add", "c.lzh"}, Words{"backup", "c.vol"}}) {
    EXPECT_THAT(MustFail({command[0], command[1], "/proc/self/status"}),
                HasSubstr("/proc/self/status: its size is 0, but it has contents"));
  }
  EXPECT_THAT(Members("b.lzh"), testing::IsSupersetOf({"a.txt", "sub/deep/c.txt"}));
  // What can't be read may be in the old archive.
  const Bytes before = folder.ReadFile("a.lzh");
  fs::create_symlink(std::string(300, 'x'), folder.Path("tree/long.txt"));
  EXPECT_THAT(MustFail({"add", "--new", "--no-unix", "a.lzh", "-C", "tree", "."}),
              AllOf(HasSubstr("tree/long.txt: left out"), HasSubstr("the old archive stays")));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
}

TEST_F(KozorAdd, NamesFilesWithoutPermission) {
  if (Shell("chmod 0 tree/b.c tree/sub; cat tree/b.c").status == 0) {
    GTEST_SKIP() << "root may read everything";
  }
  const std::string said = MustFail({"add", "a.lzh", "-C", "tree", "."});
  Shell("chmod 700 tree/sub");
  EXPECT_THAT(said, AllOf(HasSubstr("b.c: left out: permission denied"),
                          HasSubstr("sub: left out: permission denied")));
  EXPECT_THAT(Members("a.lzh"), ElementsAre("a.txt"));
}

TEST_F(KozorAdd, KeepsModesLinksAndEmptyFoldersSoThatATreeComesBackIdentical) {
  fs::create_directories(folder.Path("tree/empty/日本"));
  fs::create_directories(folder.Path("tree/閉じた"));
  folder.WriteFile("tree/閉じた/Readme", "1");
  folder.WriteFile("tree/閉じた/README", "2");
  const CommandResult made = Shell(
      "cd tree && chmod 751 a.txt && chmod 440 b.c && ln -s nowhere dangling && "
      "ln -s ../a.txt sub/up && ln -s sub to-folder && ln -s 閉じた/Readme 日本語 && "
      "ln -s sub/ slash && touch -hd @1000000000 dangling && chmod 500 閉じた && "
      "touch -d @1100000000 empty sub");
  ASSERT_EQ(made.status, 0) << made.output;
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  MustRun({"extract", "a.lzh", "-d", "out"});
  const CommandResult differences = Shell(
      "diff -r --no-dereference tree out; for t in tree out; do "
      "(cd $t; find . -mindepth 1 -printf '%P %y %m %s %Ts %l\n' | sort > ../$t.list); done; "
      "diff tree.list out.list; chmod 700 tree/閉じた out/閉じた");
  EXPECT_EQ(differences.output, "");

  fs::remove_all(folder.Path("out"));
  MustRun({"add", "--dir", "tree", "a.lzh"});  // nothing doubles
  EXPECT_EQ(Members("a.lzh").size(), 17U);
  fs::remove(folder.Path("tree/dangling"));
  folder.WriteFile("tree/dangling", "a file now");
  EXPECT_THAT(MustFail({"add", "a.lzh", "-C", "tree", "to-folder"}),
              HasSubstr("to-folder: the archive already has a member of that name"));
  MustRun({"add", "--overwrite", "a.lzh", "-C", "tree", "dangling"});
  MustRun({"delete", "a.lzh", "sub/", "slash"});
  MustRun({"extract", "a.lzh", "-d", "out"});
  EXPECT_EQ(Shell("cat out/dangling; ls -A out").output,
            "a file nowa.txt\nb.c\ndangling\nempty\nto-folder\n日本語\n閉じた\n");
}

TEST_F(KozorAdd, BringsSetIdBitsBackOnlyWhenAskedTo) {
  ASSERT_EQ(Shell("chmod 4755 tree/a.txt && chmod 2755 tree/sub").status, 0);
  MustRun({"add", "a.lzh", "-C", "tree", "a.txt", "sub"});
  MustRun({"extract", "a.lzh", "-d", "out"});
  MustRun({"extract", "a.lzh", "-d", "asked", "--keep-setid"});
  EXPECT_EQ(Shell("stat -c %a out/a.txt out/sub asked/a.txt asked/sub").output,
            "755\n755\n4755\n2755\n");
}

TEST_F(KozorAdd, PacksByMethodAndLevelOnThreads) {
  for (const std::string method : {"lh0", "lh1", "lh5", "lh6", "lh7"}) {
    MustRun({"add", "--new", "a.lzh", "-C", "tree", "sub/a.txt", "--method", method, "-j", "2"});
    EXPECT_THAT(Kozor({"list", "-l", "a.lzh"}).output, HasSubstr("-" + method + "-"));
  }
  EXPECT_EQ(Shell("KOZOR_ARCHIVER='-o6 -ol2' $KOZOR add b.lzh -C tree sub/a.txt --level 9 && "
                  "$KOZOR list -l b.lzh | grep -c lh6")
                .output,
            "1\n");
  MustRun({"add", "fast.lzh", "-C", "tree", ".", "--level", "1"});
  MustRun({"add", "small.lzh", "-C", "tree", ".", "--level", "9", "-j2"});
  EXPECT_LT(fs::file_size(folder.Path("small.lzh")), fs::file_size(folder.Path("fast.lzh")));
  EXPECT_EQ(Kozor({"add", "x.lzh", "tree", "--method", "lh1", "--level", "3"}).status, 2);
  EXPECT_EQ(Kozor({"add", "x.lzh", "tree", "--method", "zip"}).status, 2);
  EXPECT_EQ(Kozor({"add", "x.lzh", "tree", "--level", "10"}).status, 2);
  EXPECT_THAT(Shell("KOZOR_ARCHIVER='-o5 -fast' $KOZOR add x.lzh tree").output,
              HasSubstr("KOZOR_ARCHIVER: unknown switch -fast"));
  EXPECT_FALSE(folder.Exists("x.lzh"));
}

TEST_F(KozorAdd, DoesNothingWhenAWordMeansNothing) {
  for (const std::string word : {"missing.txt", "*.missing", "*/a.txt", "sub/missing/*.txt"}) {
    EXPECT_THAT(MustFail({"add", "a.lzh", "-C", "tree", "a.txt", word}), HasSubstr("kozor: "));
  }
  for (const char* option : {"--work-dir", "-C"}) {
    EXPECT_THAT(MustFail({"add", option, "none", "a.lzh", "tree"}),
                HasSubstr("none: no such directory"));
  }
  EXPECT_THAT(TopNames(), ElementsAre("tree"));
}

TEST_F(KozorAdd, TakesStandardInput) {
  const CommandResult result = Shell(
      "$KOZOR add --stdin in/sub.bin a.lzh < tree/sub/a.txt && $KOZOR add --stdin - a.lzh < "
      "/dev/null && $KOZOR print a.lzh in/sub.bin | cmp - tree/sub/a.txt");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(MustFail({"add", "--stdin", "-", "a.lzh"}),
              HasSubstr("-: the archive already has a member of that name"));
  MustRun({"add", "--overwrite", "--stdin", "in/sub.bin", "a.lzh"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("-", "in/sub.bin"));
}

TEST_F(KozorAdd, NamesFilesThatAreWrittenToMeanwhile) {
  for (const std::string run : {"add a.lzh -C tree .", "backup set -C tree ."}) {
    const CommandResult result =
        Shell("(until [ -e done ]; do echo >> tree/b.c; done) & $KOZOR " + run +
              "; status=$?; touch done; wait; rm done; (exit $status)");
    EXPECT_EQ(result.status, 1) << result.output;
    EXPECT_THAT(result.output, HasSubstr("b.c: was written to during the run"));
    EXPECT_THAT(result.output, Not(HasSubstr("a.txt")));
  }
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
  EXPECT_EQ(Kozor(update).output, "sub/\nsub/deep/\nb.c\nsub/a.txt\nsub/deep/c.txt\n");
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
  const std::string end = kProgramEnd;
  EXPECT_THAT(TopNames(), UnorderedElementsAre("a.lzh", "a" + end, "tree"));
  const CommandResult extracted = Shell("mkdir out && cd out && " + ShellProgram("../a" + end));
  EXPECT_EQ(extracted.status, 0) << extracted.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
  folder.WriteFile("notes" + end, "no program");
  EXPECT_THAT(MustFail({"add", "--sfx", "notes.lzh", "tree"}),
              HasSubstr("isn't a self-extracting archive"));
  EXPECT_FALSE(folder.Exists("notes.lzh"));
}

}  // namespace
}  // namespace kozor::test
