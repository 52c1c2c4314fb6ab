// InterchangeTest.cpp - archives of kozor's in other programs' hands, and the other way round. What
// comes out is compared byte by byte: an exit status alone proves nothing.
#include "tests/examples/KozorProgram.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

struct Reader {
  const char* program;
  const char* command;  // extracts ../a.lzh into the current directory
};

class KozorArchives : public KozorProgram, public testing::WithParamInterface<Reader> {};

TEST_P(KozorArchives, AreReadByOtherPrograms) {
  if (!HaveProgram(GetParam().program)) {
    GTEST_SKIP() << "the program " << GetParam().program << " isn't installed";
  }
  MakeTree(
      folder, "tree",
      {{"empty", 0}, {"one", 1}, {"text.txt", 300'000}, {"with blank/and (signs) [1].txt", 50}});
  folder.WriteFile("tree/random.bin", RandomBytes(70'000));
  folder.WriteFile("tree/deep/er/zeros", Bytes(200'000));
  folder.SetTime("tree/random.bin", 1'234'567'891);
  folder.SetTime("tree/deep/er/zeros", 1'234'567'893);
  MustRun({"add", "a.lzh", "-C", "tree", "."});
  fs::create_directory(folder.Path("out"));
  const CommandResult result = Shell(std::string("cd out && ") + GetParam().command);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
}

INSTANTIATE_TEST_SUITE_P(, KozorArchives,
                         testing::Values(Reader{"lhasa", "lhasa xq ../a.lzh"},
                                         Reader{"7zz", "7zz x -bd ../a.lzh"},
                                         Reader{"bsdtar", "bsdtar -xf ../a.lzh"}),
                         [](const auto& row) { return "By_" + std::string(row.param.program); });

class OtherArchives : public KozorProgram, public testing::WithParamInterface<const char*> {};

TEST_P(OtherArchives, AreReadByKozor) {
  if (!HaveProgram("jlha")) GTEST_SKIP() << "the program jlha isn't installed";
  MakeTree(folder, "tree", {{"empty", 0}, {"text.txt", 300'000}, {"sub/b.txt", 4000}});
  folder.WriteFile("tree/random.bin", RandomBytes(70'000));
  folder.SetTime("tree/random.bin", 1'234'567'892);
  const CommandResult packed = Shell(std::string("cd tree && jlha ") + GetParam() +
                                     " ../a.lzh empty random.bin sub text.txt");
  ASSERT_EQ(packed.status, 0) << packed.output;
  MustRun({"extract", "a.lzh", "-d", "out"});
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
}

INSTANTIATE_TEST_SUITE_P(, OtherArchives,
                         testing::Values("aqo5", "aqo6", "aqo7", "aq0", "aq1", "aq2"),
                         [](const auto& row) { return "By_jlha_" + std::string(row.param); });

TEST_F(KozorProgram, QuickstartBringsAFolderBack) {
  MakeTree(folder, "tree", {{"a.txt", 100}, {"sub/b.txt", 5000}});
  const auto quickstart = [&](const std::string& source) {
    return RunCommand(Quoted(QUICKSTART_PROGRAM) + " " + Quoted(folder.Lib(source)) + " " +
                      Quoted(folder.Lib("a.lzh")) + " " + Quoted(folder.Lib("out")));
  };
  const CommandResult result = quickstart("tree");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(CompareTrees(folder.Path("tree"), folder.Path("out")), "");
  EXPECT_EQ(quickstart("missing").output, "error 32, see ZorError.h\n");
}

}  // namespace
}  // namespace kozor::test
