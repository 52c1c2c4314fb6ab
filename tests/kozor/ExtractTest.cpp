// ExtractTest.cpp - kozor extract, list, print and delete: selection, destinations, and hostile or
// damaged archives.
#include <tuple>
#include <utility>

#include "tests/engine/RawArchive.h"
#include "tests/kozor/KozorProgram.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

// A stored member with an arbitrary name, in a level 0 header.
RawMember Member(const std::string& name, const std::string& contents) {
  constexpr std::uint32_t kDosTime = 0x5A21'6000;  // 2025-01-01 12:00:00
  return {.level = 0, .name = name, .contents = contents, .time = kDosTime};
}

class KozorExtract : public KozorProgram {
 protected:
  void MakeArchive() const {
    MakeTree(folder, "tree",
             {{"a.txt", 100}, {"b.c", 5000}, {"sub/a.txt", 700}, {"sub/deep/c.c", 20}});
    MustRun({"add", "a.lzh", "-C", "tree", "."});
  }

  // The checksum of the member "bad.txt" doesn't match its contents.
  void MakeDamagedArchive() const {
    Bytes archive = RawArchive(
        {Member("first.txt", "1"), Member("last.txt", "2"), Member("bad.txt", "secret")});
    archive[archive.size() - 2] ^= 1;
    folder.WriteFile("a.lzh", archive);
  }
};

TEST_F(KozorExtract, BringsOutTheMembersThatTheWordsMean) {
  const std::pair<Words, Words> rows[] = {
      {{}, {"a.txt", "b.c", "sub/a.txt", "sub/deep/c.c"}},
      {{"*.c"}, {"b.c", "sub/deep/c.c"}},
      {{"sub/*.c"}, {"sub/deep/c.c"}},
      {{"a.txt"}, {"a.txt"}},
      {{"c.c"}, {"sub/deep/c.c"}},
      {{"SUB/A.txt"}, {"sub/a.txt"}},
      {{"sub"}, {"sub/a.txt", "sub/deep/c.c"}},
      {{"sub/deep/"}, {"sub/deep/c.c"}},
      {{"b.c", "*.c", "sub/"}, {"b.c", "sub/a.txt", "sub/deep/c.c"}},
      {{"--exclude", "a.txt"}, {"b.c", "sub/deep/c.c"}},
  };
  MakeArchive();
  for (const auto& [words, files] : rows) {
    fs::remove_all(folder.Path("out"));
    MustRun(Words{"extract", "a.lzh", "-d", "out"} + words);
    EXPECT_EQ(FilesIn("out"), files);
  }
}

TEST_F(KozorExtract, SaysWhichWordMeansNothingAndExtractsTheOthers) {
  MakeArchive();
  EXPECT_THAT(MustFail({"extract", "a.lzh", "-d", "out", "b.c", "*.none", "none"}),
              AllOf(HasSubstr("*.none: no such member"), HasSubstr("none: no such"),
                    Not(HasSubstr("b.c:"))));
  EXPECT_THAT(folder.List("out"), ElementsAre("b.c"));
}

TEST_F(KozorExtract, RefusesTargetsOutsideTheDestinationUnlessToldTo) {
  folder.WriteFile("hostile.lzh",
                   RawArchive({Member("good.txt", "good"), Member("\\kozor-root.txt", "bad"),
                               Member("link\\in.txt", "bad"), Member("file.txt", "bad"),
                               Member("dangling.txt", "bad"), Member("inner\\in.txt", "good")}));
  folder.WriteFile("elsewhere/file.txt", "untouched");
  fs::create_directories(folder.Path("out/real"));
  fs::create_symlink("../elsewhere", folder.Path("out/link"));
  fs::create_symlink("../elsewhere/file.txt", folder.Path("out/file.txt"));
  fs::create_symlink("../elsewhere/new.txt", folder.Path("out/dangling.txt"));
  fs::create_symlink("real", folder.Path("out/inner"));
  EXPECT_THAT(
      MustFail({"extract", "hostile.lzh", "-d", "out"}),
      AllOf(HasSubstr("absolute names are written below the destination"),
            HasSubstr("link/in.txt: refused: the link"), HasSubstr("file.txt: refused: the link"),
            HasSubstr("dangling.txt: refused: the link")));
  EXPECT_THAT(folder.List("elsewhere"), ElementsAre("file.txt"));
  EXPECT_EQ(folder.ReadFile("elsewhere/file.txt").size(), 9U);
  EXPECT_TRUE(folder.Exists("out/good.txt"));
  EXPECT_TRUE(folder.Exists("out/real/in.txt"));
  EXPECT_FALSE(fs::exists("/kozor-root.txt"));
  EXPECT_TRUE(folder.Exists("out/kozor-root.txt"));
  MustRun({"extract", "--allow-outside", "hostile.lzh", "-d", "out", "link/in.txt"});
  EXPECT_TRUE(folder.Exists("elsewhere/in.txt"));
}

TEST_F(KozorExtract, StaysInsideWhateverNamesAreHostile) {
  std::vector<RawMember> members = {{.name = std::string(300, 'n'), .contents = "long"}};
  for (const char* name :
       {"..\\..\\up.txt", "sub/../../up2.txt", "D:\\drive.txt", "\\\\server\\share\\x", "NUL",
        "dir\\con.txt", "a\x1B[2Jb", "file:stream", "Case", "case"}) {
    members.push_back(Member(name, name));
  }
  folder.WriteFile("hostile.lzh", RawArchive(members));
  fs::create_directory(folder.Path("deep"));
  EXPECT_THAT(MustFail({"extract", "hostile.lzh", "-d", "deep/out"}), HasSubstr("nnn: "));
  EXPECT_THAT(TopNames(), ElementsAre("deep", "hostile.lzh"));
  Words expected = {"out/up.txt", "out/sub/up2.txt", "out/drive.txt", "out/server/share/x",
                    "out/a_[2Jb", "out/file_stream", "out/Case"};
  if (Can(Ability::TellingCaseApart)) {
    expected = expected + Words{"out/NUL", "out/dir/con.txt", "out/case"};
  }
  EXPECT_THAT(FilesIn("deep"), testing::UnorderedElementsAreArray(expected));
  EXPECT_EQ(folder.ReadFile("deep/out/Case"), ToBytes("Case"));
}

TEST_F(KozorExtract, ExtractsTheRestOfADamagedArchiveAndPrintsNothingOfTheMember) {
  MakeDamagedArchive();
  EXPECT_THAT(MustFail({"extract", "a.lzh", "-d", "out"}),
              HasSubstr("bad.txt: the member is damaged"));
  EXPECT_TRUE(folder.Exists("out/first.txt"));
  EXPECT_TRUE(folder.Exists("out/last.txt"));
  EXPECT_THAT(MustFail({"print", "a.lzh", "none.txt"}),
              HasSubstr("none.txt: no such member in a.lzh"));
  EXPECT_THAT(MustFail({"print", "a.lzh", "bad.txt"}),
              AllOf(HasSubstr("is damaged"), Not(HasSubstr("secre"))));
}

TEST_F(KozorExtract, BringsOutTheWholeMembersOfACutArchive) {
  folder.WriteFile("a.lzh", RawArchive({Member("first", "1"), Member("last", "abcdef")}));
  folder.Truncate("a.lzh", folder.ReadFile("a.lzh").size() - 4);
  EXPECT_THAT(MustFail({"extract", "a.lzh", "-d", "out"}), HasSubstr("1 member can be read"));
  EXPECT_THAT(folder.List("out"), ElementsAre("first"));
  EXPECT_THAT(MustFail({"list", "a.lzh"}), HasSubstr("7 bytes in 2 files\n"));
}

TEST_F(KozorExtract, SaysWhatIsWrongWithAnArchive) {
  folder.WriteFile("text.txt", "this is a text and not an archive at all");
  folder.WriteFile("empty.lzh", "");
  for (const std::string command : {"extract", "list", "print", "delete"}) {
    EXPECT_THAT(MustFail({command, "missing.lzh", "member"}),
                HasSubstr("missing.lzh: no such archive"));
    for (const std::string archive : {"text.txt", "empty.lzh"}) {
      EXPECT_THAT(MustFail({command, archive, "member"}),
                  HasSubstr(archive + ": not an LZH archive"));
    }
  }
}

TEST_F(KozorExtract, DoesWithExistingFilesWhatItIsTold) {
  // Options, the exit code, and the contents of older, newer and readOnly afterwards.
  const std::tuple<Words, int, std::string, std::string, std::string> rows[] = {
      {{}, 1, "was", "was", "was"},
      {{"--force"}, 0, "new", "new", "new"},
      {{"--keep-existing"}, 0, "was", "was", "was"},
      {{"--keep-newer"}, 0, "new", "was", "new"},
  };
  folder.WriteFile("a.lzh", RawArchive({Member("older", "new"), Member("newer", "new"),
                                        Member("readOnly", "new"), Member("same", "same")}));
  for (const auto& [options, status, older, newer, readOnly] : rows) {
    SCOPED_TRACE(testing::PrintToString(options));
    MakeRemovable(folder.Path("out"));
    fs::remove_all(folder.Path("out"));
    for (const std::string name : {"older", "newer", "readOnly"}) {
      folder.WriteFile("out/" + name, "was");
      folder.SetTime("out/" + name, name == "newer" ? 2'000'000'000 : 1'000'000'000);
    }
    SetReadOnly(folder.Path("out/readOnly"));
    folder.WriteFile("out/same", "same");
    const CommandResult result = Kozor(Words{"extract", "a.lzh", "-d", "out"} + options);
    EXPECT_EQ(result.status, status) << result.output;
    EXPECT_EQ(folder.ReadFile("out/older"), ToBytes(older));
    EXPECT_EQ(folder.ReadFile("out/newer"), ToBytes(newer));
    EXPECT_EQ(folder.ReadFile("out/readOnly"), ToBytes(readOnly));
    EXPECT_THAT(result.output, Not(HasSubstr("same")));
  }
}

TEST_F(KozorExtract, TouchesNothingUntilAFileIsWhole) {
  MakeDamagedArchive();
  folder.WriteFile("out/bad.txt", "precious");
  folder.WriteFile("out/first.txt", "x");
  fs::create_hard_link(folder.Path("out/first.txt"), folder.Path("elsewhere"));
  fs::create_directories(folder.Path("out/last.txt"));
  // Leftovers of a killed run, and the folder of a running one.
  folder.WriteFile("out/.kozor-0123456789abcdef/1", "part");
  EXPECT_THAT(MustFail({"extract", "--force", "a.lzh", "-d", "out"}),
              AllOf(HasSubstr("bad.txt: the member is damaged"),
                    HasSubstr("last.txt: a directory is in the way")));
  EXPECT_EQ(folder.ReadFile("out/bad.txt"), ToBytes("precious"));
  EXPECT_EQ(folder.ReadFile("out/first.txt"), ToBytes("1"));
  EXPECT_EQ(folder.ReadFile("elsewhere"), ToBytes("x"));
  EXPECT_THAT(folder.List("out"), ElementsAre("bad.txt", "first.txt", "last.txt/"));
}

TEST_F(KozorExtract, GoesOnAfterAnyNumberOfBadMembers) {
  std::vector<RawMember> members(150, Member("bad", "x"));
  for (std::size_t i = 0; i < members.size(); ++i) {
    members[i].name += std::to_string(i);
    members[i].method = "-lh9-";
  }
  members.push_back(Member("good", "good"));
  folder.WriteFile("a.lzh", RawArchive(members));
  EXPECT_THAT(MustFail({"extract", "a.lzh", "-d", "out"}), HasSubstr("bad149: "));
  EXPECT_THAT(folder.List("out"), ElementsAre("good"));
  EXPECT_THAT(MustFail({"test", "a.lzh"}), HasSubstr("1 file OK, 150 not"));
}

TEST_F(KozorExtract, TestTellsOfAMissingEndMark) {
  Bytes archive = RawArchive({Member("a", "1"), Member("b", "2")});
  archive.pop_back();
  folder.WriteFile("a.lzh", archive);
  EXPECT_THAT(MustFail({"test", "a.lzh"}),
              AllOf(HasSubstr("2 files OK"), HasSubstr("no end mark")));
}

// A UNIX mode in the little-endian form of headers.
RawExtension Mode(unsigned int mode) {
  return {0x50, {static_cast<char>(mode), static_cast<char>(mode >> 8)}};
}

TEST_F(KozorExtract, BringsOutModesFoldersAndLinks) {
  const auto special = [](const std::string& directory, const std::string& name,
                          unsigned int mode) {
    RawMember member = {.level = 2, .name = name, .method = "-lhd-"};
    if (!directory.empty()) member.extensions.push_back({0x02, directory});
    member.extensions.push_back(Mode(mode));
    return member;
  };
  RawMember tool = {.level = 2, .name = "tool", .contents = "x"};
  tool.extensions = {Mode(0104755)};
  folder.WriteFile("a.lzh", RawArchive({special("empty\xFF", "", 0040700),
                                        special("", "link|tool", 0120777),
                                        special("deep\xFF", "up|..", 0120777),
                                        tool,
                                        special("out|..\xFF", "x", 0120777),
                                        special("", "abs|\xFF", 0120777),
                                        {.level = 0, .name = "", .method = "-lhd-"},
                                        Member("folder", "its attributes"),
                                        Member("folder\\file", "1"),
                                        {.level = 0, .name = "..", .contents = "?"}}));
  EXPECT_THAT(
      MustFail({"extract", "a.lzh", "-d", "out"}),
      AllOf(HasSubstr("out: refused: the link to ../x leads out"), HasSubstr("abs: refused"),
            HasSubstr("without a usable name"), HasSubstr("folder: extracted as folder~1")));
  EXPECT_THAT(folder.List("out"),
              testing::IsSupersetOf({"empty/", "folder/file", "folder~1", "tool"}));
  EXPECT_THAT(
      Kozor({"list", "a.lzh"}).output,
      AllOf(HasSubstr("  empty/\n"), HasSubstr("  link -> tool\n"), HasSubstr("  (no name)\n"),
            HasSubstr("in 3 files, 1 folder, 4 links, 2 without a name\n")));
  if (!Can(Ability::MakingLinks)) return;
  EXPECT_EQ(fs::read_symlink(folder.Path("out/link")), "tool");
  EXPECT_EQ(fs::read_symlink(folder.Path("out/deep/up")), "..");
  EXPECT_EQ(fs::status(folder.Path("out/tool")).permissions(), fs::perms(0755));
  EXPECT_EQ(fs::status(folder.Path("out/empty")).permissions(), fs::perms(0700));
}

TEST_F(KozorExtract, TakesFilesOutOfTheirWrappersWhenToldTo) {
  std::string wrapped(128, '\0');
  wrapped.replace(1, 6,
                  "\x05"
                  "a.txt");
  wrapped[86] = 3;  // bytes of the data fork
  wrapped[89] = 1;  // 256 of the resource fork
  const std::string forks = "yes" + std::string(125, '\0') + std::string(256, 'r');
  RawMember capsule = {.level = 3, .name = "c", .contents = "<<it>>"};
  capsule.extensions = {{0x7D, std::string("\2\0\0\0\2\0\0\0", 8)}};
  RawMember lying = {.level = 3, .name = "d", .contents = "short"};
  lying.extensions = {{0x7D, std::string("\4\0\0\0\2\0\0\0", 8)}};
  folder.WriteFile("a.lzh", RawArchive({Member("a.txt", wrapped + forks),
                                        Member("b.txt", wrapped + forks), capsule, lying}));
  MustRun({"extract", "--unwrap", "a.lzh", "-d", "out"});
  EXPECT_EQ(folder.ReadFile("out/a.txt"), ToBytes("yes"));
  EXPECT_EQ(folder.ReadFile("out/b.txt").size(), 512U);  // the wrapper has another name
  EXPECT_EQ(folder.ReadFile("out/c"), ToBytes("it"));
  EXPECT_EQ(folder.ReadFile("out/d"), ToBytes("short"));
  MustRun({"extract", "a.lzh", "-d", "whole"});
  EXPECT_EQ(folder.ReadFile("whole/a.txt").size(), 512U);
}

TEST_F(KozorExtract, ListsSizesTimesAttributesAndNames) {
  folder.WriteFile("a.lzh", RawArchive({Member("dir\\a.txt", "12345"), Member("b.txt", "1")}));
  EXPECT_EQ(Kozor({"list", "a.lzh"}).output,
            "         5  2025-01-01 12:00:00  ---a  dir/a.txt\n"
            "         1  2025-01-01 12:00:00  ---a  b.txt\n"
            "6 bytes in 2 files\n");
}

TEST_F(KozorExtract, TakesNamesForTheCodePageThatItIsTold) {
  folder.WriteFile("a.lzh", RawArchive({Member("caf\x82.txt", "12345")}));  // page 850
  EXPECT_THAT(Kozor({"list", "--names", "--name-page", "850", "a.lzh"}).output, "café.txt\n");
  EXPECT_EQ(Kozor({"print", "--name-page", "850", "a.lzh", "café.txt"}).output, "12345");
  EXPECT_EQ(Kozor({"list", "--name-page", "851", "a.lzh"}).status, 2);
  MustRun({"extract", "--name-page", "850", "a.lzh", "-d", "out"});
  EXPECT_TRUE(folder.Exists("out/café.txt"));
  MustRun({"delete", "--name-page", "850", "a.lzh", "café.txt"});
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(KozorExtract, DeletesWhatIsNamedAndNothingElse) {
  MakeArchive();
  const Bytes before = folder.ReadFile("a.lzh");
  EXPECT_THAT(MustFail({"delete", "a.lzh", "b.c", "none.txt"}),
              HasSubstr("none.txt: no such member in a.lzh; nothing was deleted"));
  EXPECT_EQ(folder.ReadFile("a.lzh"), before);
  const bool byLink = Can(Ability::MakingLinks);
  if (byLink) fs::create_symlink("a.lzh", folder.Path("link.lzh"));
  MustRun({"delete", byLink ? "link.lzh" : "a.lzh", "a.txt", "*.c"});
  EXPECT_EQ(fs::is_symlink(folder.Path("link.lzh")), byLink);
  EXPECT_THAT(Members("a.lzh"), ElementsAre("sub/a.txt", "sub/deep/", "sub/"));
  MustRun({"delete", "a.lzh", "sub/"});
  EXPECT_FALSE(folder.Exists("a.lzh"));

  MakeArchive();
  MustRun({"delete", "a.lzh", "--exclude", "deep", "*"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("sub/deep/c.c", "sub/deep/", "sub/"));
  folder.WriteFile("a.lzh",
                   RawArchive({Member("ab", "1"), Member(" a", "2"), Member("a\"\nb", "3")}));
  MustRun({"delete", "a.lzh", " a", "a__b"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("ab"));
}

}  // namespace
}  // namespace kozor::test
