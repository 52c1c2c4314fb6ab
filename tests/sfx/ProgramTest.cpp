// ProgramTest.cpp - what a self-extracting program does and refuses to do.
#include <tuple>
#include <utility>

#include "tests/sfx/SfxFixture.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using SfxProgram = SfxTest;

TEST_F(SfxProgram, BringsATreeBack) {
  const CodePageScope utf8(65001);
  MakeTree(folder, "tree",
           {{"a.txt", 300'000},
            {"empty", 0},
            {"sub/deep/c.bin", 1},
            {"sub/d", 70'000},
            {"hollow/"},
            {"日本語/表示.txt", 10},
            {"žluť 🐎.txt", 20}});
  folder.WriteFile("tree/noise", RandomBytes(100'000));
  folder.WriteFile("tree/large", TextBytes(5'000'000));
  fs::permissions(folder.Path("tree/empty"), fs::perms::owner_read);
  ASSERT_EQ(AddTree("a.lzh", "tree"), 0);
  ASSERT_EQ(Add("a.lzh", "tree", {"a.txt"}, "-w0 -o6"), 0);
  ASSERT_EQ(Add("a.lzh", "tree", {"sub\\d"}, "-w0 -o7"), 0);
  ASSERT_EQ(Add("a.lzh", "tree", {"sub\\deep\\c.bin"}, "-w0 -z1"), 0);
  ASSERT_EQ(ConvertBeside("a.lzh"), 0);
  EXPECT_EQ(Run("a.run", "$RUN -t").status, 0);
  EXPECT_EQ(folder.List("out"), std::vector<std::string>());
  const CommandResult result = Run("a.run", "PATH=\"$(dirname $RUN):$PATH\" && a.run new/place");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, AllOf(HasSubstr("日本語/表示.txt\n"), HasSubstr("\n8 files, 4 ")));
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out/new/place"), true), "");
  EXPECT_EQ(fs::status(folder.Path("out/new/place/empty")).permissions() & fs::perms(0222),
            fs::perms::none);
}

TEST_F(SfxProgram, ReadsHeadersOfEveryLevel) {
  constexpr std::uint32_t kDosTime = 0x3C210000;  // 2010-01-01 00:00:00
  MakeProgram("a.run", RawArchive({{.level = 0, .name = "d\\0", .contents = "x", .time = kDosTime},
                                   {.level = 1, .name = "1", .contents = "x", .time = kDosTime},
                                   {.level = 2, .name = "2", .contents = "x"},
                                   {.level = 3, .name = "3", .contents = "x"}}));
  const CommandResult listing = Run("a.run", "$RUN -l");
  EXPECT_EQ(listing.status, 0);
  for (const char* name : {"d/0", "1", "2", "3"}) {
    EXPECT_THAT(listing.output, HasSubstr(std::string(" 1  2010-01-01 00:00:00  ") + name + '\n'));
  }
  EXPECT_EQ(Run("a.run").status, 0);
  EXPECT_THAT(folder.List("out"), ElementsAre("1", "2", "3", "d/", "d/0"));
}

TEST_F(SfxProgram, OverwritesOnlyWhenToldTo) {
  MakeProgram("a.run", RawArchive({{.name = "a", .contents = "new"}, {.name = "b"}}));
  folder.WriteFile("out/a", "old one");
  const CommandResult refused = Run("a.run");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.output, HasSubstr("a.run: a: exists already, not overwritten (see -o)\n"));
  EXPECT_EQ(folder.ReadFile("out/a"), ToBytes("old one"));
  EXPECT_TRUE(folder.Exists("out/b"));
  EXPECT_EQ(Run("a.run", "$RUN -o").status, 0);
  EXPECT_EQ(folder.ReadFile("out/a"), ToBytes("new"));
  EXPECT_THAT(folder.List("out"), ElementsAre("a", "b"));
}

TEST_F(SfxProgram, RefusesNamesThatLeadOut) {
  // Names, and their places with -r; empty if that is refused too.
  const std::pair<const char*, const char*> rows[] = {{"..\\x", ""}, {"sub\\..\\..\\x", ""},
                                                      {"C:x", ""},   {"C:\\tmp\\x", ""},
                                                      {"\\x", "x"},  {"/tmp/x", "tmp/x"}};
  for (const auto& [name, withRooted] : rows) {
    SCOPED_TRACE(name);
    MakeProgram("a.run", RawArchive({{.level = 0, .name = name}, {.name = "good"}}));
    const std::vector<std::string> before = folder.List();
    const CommandResult result = Run("a.run");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("not extracted: the name "));
    EXPECT_THAT(folder.List("out"), ElementsAre("good"));
    EXPECT_EQ(folder.List().size(), before.size() + 1);
    EXPECT_EQ(Run("a.run", "$RUN -o -r").status, *withRooted != '\0' ? 0 : 1);
    EXPECT_TRUE(folder.Exists(std::string("out/") + withRooted));
    fs::remove_all(folder.Path("out"));
    fs::create_directories(folder.Path("out"));
  }
}

TEST_F(SfxProgram, NeverGoesThroughALink) {
  fs::create_directories(folder.Path("outside"));
  folder.WriteFile("outside/kept", "kept");
  fs::create_symlink("../outside", folder.Path("out/dir"));
  fs::create_symlink("../outside/kept", folder.Path("out/file"));
  fs::create_symlink("../outside/new", folder.Path("out/dangling"));
  MakeProgram("a.run", RawArchive({{.level = 0, .name = "dir\\x"},
                                   {.name = "file", .contents = "x"},
                                   {.name = "dangling", .contents = "x"}}));
  EXPECT_EQ(Run("a.run").status, 1);
  const CommandResult result = Run("a.run", "$RUN -o");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("dir/x: a file or a link is in the way\n"));
  EXPECT_THAT(folder.List("outside"), ElementsAre("kept"));
  EXPECT_EQ(folder.ReadFile("outside/kept"), ToBytes("kept"));
  // The links themselves have been replaced.
  EXPECT_FALSE(fs::is_symlink(folder.Path("out/file")));
  EXPECT_FALSE(fs::is_symlink(folder.Path("out/dangling")));
}

TEST_F(SfxProgram, NamesWhatItCannotExtract) {
  const RawExtension link{0x50, {'\xFF', '\xA1'}};
  RawMember wrong{.name = "wrong", .contents = "x", .method = "-lh5-"};
  MakeProgram("a.run", RawArchive({wrong,
                                   {.name = "later", .contents = "x", .method = "-lh9-"},
                                   {.name = "a|b", .extensions = {link}, .method = "-lhd-"},
                                   {.name = "esc\x1B[1m", .contents = "x"},
                                   {.name = "good", .contents = "x"}}));
  for (const char* command : {"$RUN", "$RUN -t"}) {
    const CommandResult result = Run("a.run", command);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, AllOf(HasSubstr("wrong: damaged: "),
                                     HasSubstr("later: its method is not supported\n"),
                                     HasSubstr("esc_[1m\n"), Not(HasSubstr("\x1B"))));
  }
  EXPECT_THAT(Run("a.run").output, HasSubstr("not extracted: a symbolic link"));
  EXPECT_THAT(folder.List("out"), ElementsAre("esc_[1m", "good"));
}

TEST_F(SfxProgram, UnderstandsItsCommandLineOrSaysSo) {
  MakeProgram("a.run", RawArchive({{.name = "a"}}));
  const std::tuple<const char*, int, const char*> rows[] = {
      {"$RUN --help", 0, "Usage: a.run [OPTION]... [DIRECTORY]"},
      {"$RUN -x", 2, "a.run: unknown option -x"},
      {"$RUN one two", 2, "more than one directory"},
      {"$RUN -- -x && ls -- -x", 0, "a\n"},
      {"($RUN -l > /dev/full)", 1, "can't write to standard output"},
      {"touch f && $RUN f", 1, "f: a file or a link is in the way"}};
  for (const auto& [command, status, says] : rows) {
    const CommandResult result = Run("a.run", command);
    EXPECT_EQ(result.status, status) << command;
    EXPECT_THAT(result.output, HasSubstr(says)) << command;
  }
}

}  // namespace
}  // namespace kozor::test
