// ExtractTest.cpp - kozor extract, list, print and delete: which members, where to, and what a
// hostile or damaged archive can do.
#include "tests/examples/KozorProgram.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

class KozorExtract : public KozorProgram {
 protected:
  void MakeArchive() const {
    MakeTree(folder, "tree",
             {{"a.txt", 100}, {"b.c", 5000}, {"sub/a.txt", 700}, {"sub/deep/c.c", 20}});
    MustRun({"add", "a.lzh", "-C", "tree", "."});
  }
};

struct MaskCase {
  const char* title;
  std::vector<std::string> words;
  std::vector<std::string> files;
};

class KozorExtractMasks : public KozorExtract, public testing::WithParamInterface<MaskCase> {};

TEST_P(KozorExtractMasks, MeanTheseMembers) {
  MakeArchive();
  std::vector<std::string> words = {"extract", "a.lzh", "-d", "out"};
  words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
  MustRun(words);
  std::vector<std::string> files;
  for (const std::string& name : folder.List("out")) {
    if (!name.ends_with('/')) files.push_back(name);
  }
  EXPECT_THAT(files, testing::ElementsAreArray(GetParam().files));
}

INSTANTIATE_TEST_SUITE_P(
    , KozorExtractMasks,
    testing::Values(MaskCase{"Everything", {}, {"a.txt", "b.c", "sub/a.txt", "sub/deep/c.c"}},
                    MaskCase{"Wildcard", {"*.c"}, {"b.c", "sub/deep/c.c"}},
                    MaskCase{"WildcardInAFolder", {"sub/*.c"}, {"sub/deep/c.c"}},
                    MaskCase{"WholeName", {"a.txt"}, {"a.txt"}},
                    MaskCase{"Folder", {"sub"}, {"sub/a.txt", "sub/deep/c.c"}},
                    MaskCase{"FolderWithSlash", {"sub/deep/"}, {"sub/deep/c.c"}},
                    MaskCase{
                        "Several", {"b.c", "*.c", "sub/"}, {"b.c", "sub/a.txt", "sub/deep/c.c"}},
                    MaskCase{"Excluded", {"--exclude", "a.txt"}, {"b.c", "sub/deep/c.c"}}),
    [](const auto& row) { return row.param.title; });

TEST_F(KozorExtract, SaysWhichWordMeansNothingAndExtractsTheOthers) {
  MakeArchive();
  const CommandResult result = Kozor({"extract", "a.lzh", "-d", "out", "b.c", "*.none", "none"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, AllOf(HasSubstr("*.none: no such member"), HasSubstr("none: no such"),
                                   Not(HasSubstr("b.c:"))));
  EXPECT_THAT(folder.List("out"), ElementsAre("b.c"));
}

TEST_F(KozorExtract, RefusesTargetsOutsideTheDestination) {
  folder.WriteFile(
      "hostile.lzh",
      StoredArchive({StoredMember("good.txt", "good"), StoredMember("\\kozor-root.txt", "bad"),
                     StoredMember("link\\in.txt", "bad"), StoredMember("file.txt", "bad"),
                     StoredMember("dangling.txt", "bad"), StoredMember("inner\\in.txt", "good")}));
  folder.WriteFile("elsewhere/file.txt", "untouched");
  fs::create_directories(folder.Path("out/real"));
  fs::create_symlink("../elsewhere", folder.Path("out/link"));
  fs::create_symlink("../elsewhere/file.txt", folder.Path("out/file.txt"));
  fs::create_symlink("../elsewhere/new.txt", folder.Path("out/dangling.txt"));
  fs::create_symlink("real", folder.Path("out/inner"));
  const CommandResult result = Kozor({"extract", "hostile.lzh", "-d", "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.output,
      AllOf(HasSubstr("/kozor-root.txt: refused: its name begins at the root"),
            HasSubstr("link/in.txt: refused: the link"), HasSubstr("file.txt: refused: the link"),
            HasSubstr("dangling.txt: refused: the link")));
  EXPECT_THAT(folder.List("elsewhere"), ElementsAre("file.txt"));
  EXPECT_EQ(folder.ReadFile("elsewhere/file.txt").size(), 9U);
  EXPECT_TRUE(folder.Exists("out/good.txt"));
  EXPECT_TRUE(folder.Exists("out/real/in.txt"));
  EXPECT_FALSE(fs::exists("/kozor-root.txt"));
}

TEST_F(KozorExtract, StaysInsideWhateverNamesClimb) {
  folder.WriteFile("hostile.lzh", StoredArchive({StoredMember("..\\..\\up.txt", "x"),
                                                 StoredMember("sub/../../up2.txt", "x"),
                                                 StoredMember("D:\\drive.txt", "x")}));
  fs::create_directory(folder.Path("deep"));
  Kozor({"extract", "hostile.lzh", "-d", "deep/out"});
  EXPECT_THAT(TopNames(), ElementsAre("deep", "hostile.lzh"));
  EXPECT_THAT(folder.List("deep"), Not(testing::Contains("up.txt")));
}

TEST_F(KozorExtract, GoesThroughLinksWhenToldTo) {
  folder.WriteFile("a.lzh", StoredArchive({StoredMember("link\\in.txt", "x")}));
  fs::create_directory(folder.Path("elsewhere"));
  fs::create_directory(folder.Path("out"));
  fs::create_symlink("../elsewhere", folder.Path("out/link"));
  MustRun({"extract", "--allow-outside", "a.lzh", "-d", "out"});
  EXPECT_TRUE(folder.Exists("elsewhere/in.txt"));
}

TEST_F(KozorExtract, ExtractsTheRestOfADamagedArchive) {
  Bytes damaged = StoredMember("bad.txt", "some contents");
  damaged.back() ^= 1;
  folder.WriteFile("a.lzh", StoredArchive({StoredMember("first.txt", "1"), damaged,
                                           StoredMember("last.txt", "2")}));
  const CommandResult result = Kozor({"extract", "a.lzh", "-d", "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("bad.txt: the member is damaged"));
  EXPECT_TRUE(folder.Exists("out/first.txt"));
  EXPECT_TRUE(folder.Exists("out/last.txt"));
}

TEST_F(KozorExtract, SaysWhatIsWrongWithAnArchive) {
  folder.WriteFile("text.txt", "this is a text and not an archive at all");
  folder.WriteFile("empty.lzh", "");
  for (const std::string command : {"extract", "list", "print", "delete"}) {
    const std::vector<std::string> rest = {"text.txt", "member"};
    CommandResult result = Kozor({command, "missing.lzh", "member"});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.output, HasSubstr("missing.lzh: no such archive"));
    for (const std::string archive : {"text.txt", "empty.lzh"}) {
      result = Kozor({command, archive, "member"});
      EXPECT_EQ(result.status, 1) << command;
      EXPECT_THAT(result.output, HasSubstr(archive + ": not an LZH archive"));
    }
  }
}

TEST_F(KozorExtract, ReplacesFilesButNoReadOnlyOnes) {
  MakeArchive();
  folder.WriteFile("out/a.txt", "older");
  folder.WriteFile("out/b.c", "protected");
  fs::permissions(folder.Path("out/b.c"), fs::perms::owner_read);
  const CommandResult result = Kozor({"extract", "a.lzh", "-d", "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("b.c: "));
  EXPECT_EQ(folder.ReadFile("out/a.txt"), folder.ReadFile("tree/a.txt"));
  EXPECT_EQ(folder.ReadFile("out/b.c").size(), 9U);
  EXPECT_EQ(folder.ReadFile("out/sub/deep/c.c"), folder.ReadFile("tree/sub/deep/c.c"));
}

TEST_F(KozorExtract, ListsSizesTimesAttributesAndNames) {
  folder.WriteFile(
      "a.lzh", StoredArchive({StoredMember("dir\\a.txt", "12345"), StoredMember("b.txt", "1")}));
  const CommandResult result = Kozor({"list", "a.lzh"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "         5  2025-01-01 12:00:00  ---a  dir/a.txt\n"
            "         1  2025-01-01 12:00:00  ---a  b.txt\n"
            "6 bytes in 2 files\n");
}

TEST_F(KozorExtract, PrintsAMember) {
  MakeArchive();
  EXPECT_EQ(Shell("$KOZOR print a.lzh sub/a.txt | cmp - tree/sub/a.txt").status, 0);
  const CommandResult missing = Kozor({"print", "a.lzh", "sub/none.txt"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.output, HasSubstr("a.lzh: sub/none.txt: "));
}

TEST_F(KozorExtract, PrintsNothingOfADamagedMember) {
  Bytes damaged = StoredMember("bad.txt", "some contents");
  damaged.back() ^= 1;
  folder.WriteFile("a.lzh", StoredArchive({damaged}));
  const CommandResult result = Kozor({"print", "a.lzh", "bad.txt"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, AllOf(HasSubstr("is damaged"), Not(HasSubstr("contents"))));
}

TEST_F(KozorExtract, DeletesWhatIsNamedAndNothingElse) {
  MakeArchive();
  const Bytes before = folder.ReadFile("a.lzh");
  const CommandResult refused = Kozor({"delete", "a.lzh", "b.c", "none.txt"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, HasSubstr("none.txt: no such member in a.lzh; nothing was deleted"));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  MustRun({"delete", "a.lzh", "a.txt", "*.c"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("sub/a.txt"));
  MustRun({"delete", "a.lzh", "sub/"});
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

}  // namespace
}  // namespace kozor::test
