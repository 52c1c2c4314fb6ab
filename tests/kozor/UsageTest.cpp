// UsageTest.cpp - kozor's command line, exit codes, progress and signals; and the quickstart
// program.
#include <chrono>
#include <csignal>
#include <thread>
#include <tuple>

#include "tests/engine/RawArchive.h"
#include "tests/kozor/KozorProgram.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

using testing::StartsWith;

class KozorUsage : public KozorProgram {};

TEST_F(KozorUsage, HelpsWithEveryCommand) {
  const CommandResult help = Kozor({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const std::string command : {"add", "extract", "list", "test", "print", "delete", "backup",
                                    "restore", "verify", "info"}) {
    EXPECT_THAT(help.output, HasSubstr("\n  " + command + " "));
    for (const Words& words : {Words{command, "--help"}, {"help", command}}) {
      const CommandResult result = Kozor(words);
      EXPECT_EQ(result.status, 0);
      EXPECT_THAT(result.output, StartsWith("Usage: kozor " + command));
    }
  }
  EXPECT_EQ(Kozor({"--version"}).output, "kozor " KOZOR_VERSION "\n");
}

TEST_F(KozorUsage, RefusesCommandLinesThatMakeNoSense) {
  const Words lines[] = {
      {},
      {"pack"},
      {"add", "a.lzh"},
      {"add", "--newer", "a.lzh", "x"},
      {"add", "a.lzh", "x", "-C"},
      {"add", "--new=yes", "a.lzh", "x"},
      {"add", "--stdin", "x", "a.lzh", "y"},
      {"add", "--stdin", "b:c", "a.lzh"},
      {"extract"},
      {"add", "--stdin", "--dir", "tree", "a.lzh"},
      {"add", "--dir", "tree", "a.lzh", "-C", "x"},
      {"add", "--sfx", "--unix", "a.lzh", "x"},
      {"add", "--new", "--update", "a.lzh", "x"},
      {"list", "--long", "--json", "a.lzh"},
      {"list", "--null", "a.lzh"},
      {"list", "--progress", "often", "a.lzh"},
      {"extract", "--force", "--keep-newer", "a.lzh"},
      {"print", "a.lzh"},
      {"delete", "a.lzh"},
      {"backup", "x.vol"},
      {"backup", "--format", "102", "x.vol", "x"},
      {"backup", "--volume-size", "0", "x.vol", "x"},
      {"backup", "--volume-size", "4G", "x.vol", "x"},
      {"backup", "--volume-size", "1T", "x.vol", "x"},
      {"restore"},
      {"info"},
  };
  for (const Words& line : lines) {
    const CommandResult result = Kozor(line);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(line) << result.output;
    EXPECT_THAT(result.output, AllOf(StartsWith("kozor: "), HasSubstr("--help\" for usage")));
  }
  EXPECT_THAT(TopNames(), IsEmpty());
  EXPECT_THAT(Kozor({"extrat", "a.lzh"}).output, HasSubstr("did you mean extract?"));
  EXPECT_THAT(Kozor({"list", "--logn", "a.lzh"}).output, HasSubstr("did you mean --long?"));
}

TEST_F(KozorUsage, TakesOddWordsAsTheyAre) {
  folder.WriteFile("-n", "x");
  folder.WriteFile("[a,b]", "x");
  MustRun({"add", "a.lzh", "--exclude", "-m", "--", "-n", "[a,b]"});
  EXPECT_THAT(Members("a.lzh"), ElementsAre("-n", "[a,b]"));
}

TEST_F(KozorUsage, ShowsProgressOnATerminalOnly) {
  if (!HaveProgram("script")) GTEST_SKIP() << "the program script isn't installed";
  folder.WriteFile("tree/file", "contents");
  const std::string command = "$KOZOR add --new a.lzh tree";
  EXPECT_EQ(Shell(command).output, "");
  const CommandResult shown = Shell("script -qec \"" + command + "\" /dev/null < /dev/null");
  EXPECT_EQ(shown.status, 0);
  EXPECT_THAT(shown.output, HasSubstr("%"));
}

TEST_F(KozorUsage, FailsWhenItsOutputIsntTaken) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "there is no /dev/full";
  const CommandResult result = Shell("$KOZOR --help > /dev/full");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("standard output"));
}

class KozorSignals : public KozorProgram {
 protected:
  // Starts a command, sends `signal` as soon as `ready` is true, and returns the exit status.
  template <typename Condition>
  int RunAndSignal(const std::string& command, const char* signal, Condition ready) const {
    int status = -1;
    std::thread runner([&] {
      status = Shell("sh -c 'echo $$ > pid; exec \"$0\" \"$@\"' $KOZOR " + command).status;
    });
    while (!ready()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    Shell("kill -" + std::string(signal) + " $(cat pid)");
    runner.join();
    fs::remove(folder.Path("pid"));
    return status;
  }

  // Whether a work directory of the run exists beside the archive.
  bool OwnDirectoryExists() const {
    return testing::Value(TopNames(), testing::Contains(StartsWith(".kozor-")));
  }
};

TEST_F(KozorSignals, KeepTheOldArchiveAndLeaveNothingElse) {
  folder.WriteFile("small", "x");
  MustRun({"add", "old.lzh", "small"});
  const Bytes before = folder.ReadFile("old.lzh");
  folder.WriteFile("tree/big", RandomBytes(32 << 20));
  // Windows has Ctrl-C alone, which Wine makes of SIGINT.
  const char* const term = Can(Ability::MakingLinks) ? "TERM" : "INT";
  const int termNumber = Can(Ability::MakingLinks) ? SIGTERM : SIGINT;
  const std::tuple<const char*, const char*, int> rows[] = {
      {"add new.lzh tree", "INT", SIGINT},
      {"add --new old.lzh tree", term, termNumber},
      {"add --overwrite old.lzh tree", term, termNumber}};
  for (const auto& [command, signal, number] : rows) {
    EXPECT_EQ(RunAndSignal(command, signal, [&] { return OwnDirectoryExists(); }), 128 + number);
    EXPECT_EQ(folder.ReadFile("old.lzh"), before);
    EXPECT_THAT(TopNames(), ElementsAre("old.lzh", "small", "tree"));
  }
}

TEST_F(KozorSignals, LeaveWholeFilesOnlyWhenExtracting) {
  const std::string large(32 << 20, 'x');
  folder.WriteFile("a.lzh", RawArchive({{.level = 0, .name = "0", .contents = "whole"},
                                        {.level = 0, .name = "1", .contents = large},
                                        {.level = 0, .name = "2", .contents = large}}));
  const int status =
      RunAndSignal("extract a.lzh -d out", "INT", [&] { return folder.Exists("out/0"); });
  EXPECT_EQ(status, 128 + SIGINT);
  const Words files = folder.List("out");
  EXPECT_THAT(files, testing::IsSubsetOf({"0", "1"}));
  for (const std::string& file : files) {
    EXPECT_TRUE(folder.ReadFile("out/" + file) == ToBytes(file == "0" ? "whole" : large)) << file;
  }
}

TEST_F(KozorSignals, EndAWaitForStandardInput) {
  ASSERT_EQ(Shell("mkfifo in").status, 0);
  const auto start = std::chrono::steady_clock::now();
  // Open for reading and writing, the pipe never ends.
  const int status = RunAndSignal("add --stdin x a.lzh <> in", "INT", [&] {
    return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(500);
  });
  EXPECT_EQ(status, 128 + SIGINT);
  EXPECT_THAT(TopNames(), ElementsAre("in"));
}

}  // namespace
}  // namespace kozor::test
