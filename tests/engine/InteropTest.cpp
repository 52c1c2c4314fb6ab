// InteropTest.cpp - other programs read what we write, and we read what others write.

#include "tests/engine/EngineFixture.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class EngineInterop : public EngineTest {
 protected:
  EngineInterop() {
    MakeTree(folder, "src",
             {{"README", 3000},
              {"Mixed.Txt", 70000},
              {"empty", 0},
              {"one", 1},
              {"sub/deep/er/file.c", 20000},
              {"sub/.hidden", 10},
              {"with blank/a b", 500}});
    folder.WriteFile("src/noise.bin", RandomBytes(300000));
    folder.WriteFile("src/large", TextBytes(1200000));  // several segments
    folder.SetTime("src/noise.bin", 1234567890);
    std::filesystem::create_directories(folder.Path("out"));
  }

  std::string ShellPath(const std::string& name) {
    return "'" + ShellPathOf(folder.Path(name)) + "'";
  }

  // Extracts x.lzh with another program into "out" and compares trees.
  void ExpectExtractedBy(const std::string& command) {
    const CommandResult result =
        RunCommand("cd " + ShellPath("out") + " && TZ=UTC " + command + " ../x.lzh");
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(CompareTrees(folder.Path("src"), folder.Path("out")), "") << result.output;
  }
};

class EngineReaders : public EngineInterop, public testing::WithParamInterface<std::string> {};

TEST_P(EngineReaders, ExtractTreesWithMembersAppendedReplacedAndDeleted) {
  const std::string program = GetParam().substr(0, GetParam().find(' '));
  if (!HaveProgram(program)) GTEST_SKIP() << program << " is not installed";
  std::filesystem::create_directories(folder.Path("src/hollow"));
  for (const char* method : {"-o5", "-o5 -ol1", "-o6 -ol7", "-o7 -ol9", "-z1"}) {
    std::filesystem::remove(folder.Path("x.lzh"));
    std::filesystem::remove_all(folder.Path("out"));
    std::filesystem::create_directories(folder.Path("out"));
    ASSERT_EQ(Add("x.lzh", "src", {}, "-w0 -d1 " + std::string(method)), 0);
    ASSERT_EQ(Compress("x.lzh", "extra", TextBytes(100)), 0);
    folder.WriteFile("src/one", method);
    ASSERT_EQ(Add("x.lzh", "src", {"one"}, method), 0);
    ASSERT_EQ(Delete("x.lzh", {"extra"}), 0);
    ExpectExtractedBy(GetParam());
    EXPECT_TRUE(folder.Exists("out/hollow"));
  }
}

INSTANTIATE_TEST_SUITE_P(, EngineReaders, testing::Values("lhasa xq", "7zz x -y", "bsdtar -xf"),
                         [](const auto& reader) {
                           return "By" + reader.param.substr(0, reader.param.find(' '));
                         });

TEST_F(EngineInterop, ModesLinksFoldersAndJapaneseNamesAreRestoredByOthers) {
  if (!Can(Ability::MakingLinks)) GTEST_SKIP() << "no symbolic links can be made here";
  const CommandResult made = RunCommand(
      "cd " + ShellPath("src") +
      " && chmod 751 README && chmod 600 one && mkdir -m 700 hollow && "
      "ln -s README link && ln -s ../../one sub/deep/up && ln -s nowhere/at/all dangling && "
      "mkdir 日本語 && echo 932 > 日本語/表示 && ln -s 日本語/表示 リンク");
  ASSERT_EQ(made.status, 0) << made.output;
  ASSERT_EQ(Add("x.lzh", "src", {}, "-w0 -d1 -unix"), 0);
  const std::string list = " && find . -mindepth 1 -printf '%P %y %m %l\n' | sort";
  const std::string expected = RunCommand("cd " + ShellPath("src") + list).output;
  for (const std::string command : {"lhasa xq ../x.lzh", "LC_ALL=C.UTF-8 bsdtar -xf ../x.lzh"}) {
    if (!HaveProgram(command.starts_with("lhasa") ? "lhasa" : "bsdtar")) continue;
    std::filesystem::remove_all(folder.Path("out"));
    std::filesystem::create_directories(folder.Path("out"));
    EXPECT_EQ(RunCommand("umask 022; cd " + ShellPath("out") + " && " + command + list).output,
              expected)
        << command;
  }
}

TEST_F(EngineInterop, ArchivesByJlhaAreRead) {
  if (!HaveProgram("jlha")) GTEST_SKIP() << "jlha is not installed";
  for (const char* command : {"a0o5", "a1o6", "a2o7", "a2z"}) {
    SCOPED_TRACE(command);
    const CommandResult made = RunCommand(
        "cd " + ShellPath("src") + " && rm -f ../j.lzh && jlha -" + command + " ../j.lzh * 2>&1");
    ASSERT_EQ(made.status, 0) << made.output;
    const std::vector<std::string> names = Names("j.lzh");
    EXPECT_EQ(names.size(), 9U);
    for (std::string name : names) {
      const Extracted extracted = Extract("j.lzh", name);
      EXPECT_EQ(extracted.code, 0) << name;
      std::replace(name.begin(), name.end(), '\\', '/');
      EXPECT_TRUE(SameBytes(extracted.bytes, folder.ReadFile("src/" + name))) << name;
      EXPECT_LE(std::abs(extracted.time - folder.GetTime("src/" + name)), 1) << name;
    }
  }
}

}  // namespace
}  // namespace kozor::test
