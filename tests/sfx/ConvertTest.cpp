// ConvertTest.cpp - `s -gw4`: the place and contents of the program, and what stays unchanged.
#include <sys/stat.h>

#include <utility>

#include "tests/sfx/SfxFixture.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

class SfxConvert : public SfxTest {
 protected:
  SfxConvert() { EXPECT_EQ(Compress("a.lzh", "notes.txt", TextBytes(600'000)), 0); }
};

// Bytes after the end mark are left out, and a missing end mark is added.
TEST_F(SfxConvert, PutsTheStubBeforeTheUnchangedArchive) {
  const Bytes archive = folder.ReadFile("a.lzh");
  const auto stub = sfx::FindStub()->program;
  const Bytes program = Join({{stub.begin(), stub.end()}, archive});
  for (const Bytes& given :
       {archive, Join({archive, archive}), Bytes(archive.begin(), archive.end() - 1)}) {
    folder.WriteFile("a.lzh", given);
    ASSERT_EQ(ConvertBeside("a.lzh"), 0);
    EXPECT_TRUE(SameBytes(folder.ReadFile("a.run"), program));
    EXPECT_TRUE(SameBytes(folder.ReadFile("a.lzh"), given));
  }
  EXPECT_EQ(folder.List(), (std::vector<std::string>{"a.lzh", "a.run", "out/"}));
}

TEST_F(SfxConvert, FindsItsTargetByTheSecondOperand) {
  fs::create_directories(folder.Path("dir.d"));
  for (const char* name : {"dir.d/plain", "dir.d/two.dots.lzh"}) {
    fs::copy_file(folder.Path("a.lzh"), folder.Path(name));
  }
  const std::pair<std::string, const char*> rows[] = {
      {Quoted("a.lzh") + Quoted("out\\"), "out/a.run"},
      {Quoted("a.lzh") + Quoted("a.lzh"), "a.run"},
      {Quoted("a.lzh"), "a.run"},
      {Quoted("dir.d\\plain"), "dir.d/plain.run"},
      {Quoted("dir.d\\two.dots.lzh"), "dir.d/two.dots.run"},
  };
  for (const auto& [operands, target] : rows) {
    EXPECT_EQ(Convert(operands), 0) << operands;
    EXPECT_TRUE(folder.Exists(target)) << operands;
    fs::remove(folder.Path(target));
  }
}

TEST_F(SfxConvert, MayBeRunByThoseWhoMayReadTheArchive) {
  using fs::perms;
  const mode_t before = ::umask(022);
  fs::permissions(folder.Path("a.lzh"), perms(0644));
  EXPECT_EQ(ConvertBeside("a.lzh"), 0);
  ::umask(before);
  EXPECT_EQ(fs::status(folder.Path("a.run")).permissions(), perms(0755));
  fs::permissions(folder.Path("a.lzh"), perms(0600));
  fs::permissions(folder.Path("a.run"), perms(0644));
  ASSERT_EQ(ConvertBeside("a.lzh"), 0);
  EXPECT_EQ(fs::status(folder.Path("a.run")).permissions(), perms(0700));
}

TEST_F(SfxConvert, FailsWithACodeAndLeavesEverythingAsItWas) {
  ASSERT_EQ(ConvertBeside("a.lzh"), 0);
  const Bytes archive = folder.ReadFile("a.lzh");
  folder.WriteFile("cut.lzh", Bytes(archive.begin(), archive.end() - 100));
  folder.WriteFile("text.lzh", "no archive at all");
  folder.WriteFile("empty.lzh", Bytes{0});
  folder.WriteFile("b.run", archive);
  for (const char* name : {"kept.lzh", "hidden.lzh"}) folder.WriteFile(name, archive);
  folder.WriteFile("kept.run", "precious");
  fs::permissions(folder.Path("kept.run"), fs::perms::owner_read);
  fs::create_directories(folder.Path("hidden.run"));
  const std::vector<std::string> before = folder.List();
  const std::pair<std::string, int> rows[] = {
      {Quoted("none.lzh"), 0x8029},
      {Quoted("cut.lzh"), 0x8014},
      {Quoted("text.lzh"), 0x8019},
      {Quoted("empty.lzh"), 0x800F},
      {Quoted("a.run"), 0x8008},
      {Quoted("b.run"), 0x8028},
      {Quoted("kept.lzh"), 0x8006},
      {Quoted("hidden.lzh"), 0x8028},
      {"", 0x802B},
      {Quoted("a.lzh") + Quoted("nowhere\\"), 0x8025},
  };
  for (const auto& [operands, code] : rows) EXPECT_EQ(Convert(operands), code) << operands;
  EXPECT_EQ(Command("s -gw1" + Quoted("a.lzh")), 0x801C);
  EXPECT_EQ(Convert("-gfor=nothing-known" + Quoted("a.lzh")), 0x801C);
  EXPECT_EQ(folder.List(), before);
  EXPECT_EQ(folder.ReadFile("kept.run").size(), 8U);
}

TEST_F(SfxConvert, CanBeStoppedAtEveryReport) {
  folder.WriteFile("a.run", "what was there");
  int stopAt = 1;
  int reports = 0;
  Listen([&](UINT, const UnlhaProgressRecord&) { return ++reports != stopAt ? 1 : 0; });
  for (; ConvertBeside("a.lzh") != 0; ++stopAt, reports = 0) {
    EXPECT_EQ(folder.ReadFile("a.run").size(), 14U);
  }
  EXPECT_GT(stopAt, 4);
  EXPECT_EQ(Temporaries(), std::vector<std::string>());
  EXPECT_EQ(Run("a.run", "$RUN -t").status, 0);
}

TEST_F(SfxConvert, MakesAnArchiveForEveryCall) {
  ASSERT_EQ(ConvertBeside("a.lzh"), 0);
  EXPECT_EQ(engine.CheckArchive(folder.Lib("a.run").c_str(), 0), 1);
  EXPECT_EQ(Names("a.run"), std::vector<std::string>{"notes.txt"});
  EXPECT_TRUE(SameBytes(Extract("a.run", "notes.txt").bytes, TextBytes(600'000)));
  // It stays a program when members are added and deleted.
  ASSERT_EQ(Compress("a.run", "more.txt", TextBytes(10)), 0);
  ASSERT_EQ(Delete("a.run", {"notes.txt"}), 0);
  const CommandResult result = Run("a.run");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(folder.List("out"), std::vector<std::string>{"more.txt"});
}

}  // namespace
}  // namespace kozor::test
