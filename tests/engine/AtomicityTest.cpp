// AtomicityTest.cpp - however a run ends, the archive is the old one or the new one: full disks,
// other file systems, uncommitted runs, other programs.  tests/faults has what a power loss leaves.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"
#include "tests/support/posix/SmallDisk.h"

namespace kozor::test {
namespace {

class EngineAtomicity : public EngineTest {
 protected:
  // Whether a child process ended, and with success.
  static bool IsDone(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
};

TEST_F(EngineAtomicity, RestOfAnAppendThatNeverCommittedIsOverwritten) {
  const Bytes archive = RawArchive({{.name = "old", .contents = "old"}});
  Bytes rest = RawArchive({{.name = "lost", .contents = "lost"}});
  rest.erase(rest.begin());
  folder.WriteFile("x.lzh", Join({archive, rest}));
  EXPECT_THAT(Names("x.lzh"), ElementsAre("old"));
  ASSERT_EQ(Compress("x.lzh", "n", {}), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("old", "n"));
  const Bytes bytes = folder.ReadFile("x.lzh");
  EXPECT_TRUE(std::equal(archive.begin(), archive.end() - 1, bytes.begin()));
  EXPECT_LT(bytes.size(), archive.size() + 60);
}

TEST_F(EngineAtomicity, FullDiskLeavesTheArchiveAsItWas) {
  const SmallDisk disk(folder.Path("disk"), 2 << 20);
  if (!disk.IsThere()) GTEST_SKIP() << "a small file system needs root";
  folder.WriteFile("src/large", RandomBytes(3000000));
  folder.WriteFile("src/old", RandomBytes(1500000));
  ASSERT_EQ(Compress("disk/x.lzh", "old", RandomBytes(1200000)), 0);
  ASSERT_EQ(Compress("disk/x.lzh", "small", TextBytes(10)), 0);
  const Bytes before = folder.ReadFile("disk/x.lzh");
  const std::string work = "\"-w" + folder.Lib("disk") + "\\\"";

  EXPECT_EQ(Add("disk/x.lzh", "src", {"large"}), 0x8005);  // in place
  EXPECT_EQ(Add("disk/x.lzh", "src", {"old"}), 0x8005);    // rewritten beside
  EXPECT_EQ(Delete("disk/x.lzh", {"small"}), 0x8005);
  EXPECT_EQ(Add("new.lzh", "src", {"large"}, work), 0x8005);  // in the work directory
  EXPECT_TRUE(SameBytes(folder.ReadFile("disk/x.lzh"), before));
  EXPECT_FALSE(folder.Exists("new.lzh"));
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(EngineAtomicity, WorkDirectoryMayBeOnAnotherFileSystem) {
  const SmallDisk disk(folder.Path("disk"), 8 << 20);
  if (!disk.IsThere()) GTEST_SKIP() << "a file system of its own needs root";
  folder.WriteFile("src/a", RandomBytes(1000000));
  const std::string work = "\"-w" + folder.Lib("disk") + "\\\"";
  ASSERT_EQ(Add("x.lzh", "src", {"a"}, work), 0);
  ASSERT_EQ(Add("x.lzh", "src", {"a"}, work), 0);
  EXPECT_TRUE(SameBytes(Extract("x.lzh", "a").bytes, folder.ReadFile("src/a")));
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(EngineAtomicity, TwoProcessesLoseNoUpdate) {
  const char* const given = std::getenv("KOZOR_TEST_PAIRS");
  const int pairs = given != nullptr ? std::atoi(given) : 300;
  ASSERT_EQ(Compress("x.lzh", "rewritten", {}), 0);
  const auto nameOf = [](int i) { return "appended" + std::to_string(i); };
  // Repeats each change while the other process has the archive open.
  const auto start = [&](const std::function<int(int)>& change) {
    const pid_t child = fork();
    int i = 0;
    while (child == 0) {
      const int code = i < pairs ? change(i) : 0;
      if (i == pairs || (code != 0 && code != 0x8018)) _exit(code == 0 ? 0 : 1);
      if (code == 0) ++i;
    }
    return child;
  };
  const pid_t appender =
      start([&](int i) { return Compress("x.lzh", nameOf(i), ToBytes(nameOf(i))); });
  const pid_t rewriter = start([&](int i) {
    return Compress("x.lzh", "rewritten", TextBytes(static_cast<std::size_t>(i % 100)));
  });
  EXPECT_TRUE(IsDone(appender));
  EXPECT_TRUE(IsDone(rewriter));
  const std::vector<std::string> names = Names("x.lzh");
  EXPECT_EQ(names.size(), static_cast<std::size_t>(pairs) + 1);
  for (int i = 0; i < pairs; ++i) EXPECT_THAT(names, testing::Contains(nameOf(i)));
}

TEST_F(EngineAtomicity, TemporariesOfOthersStay) {
  folder.WriteFile("lhtmp001.lzh", "a file of this name, but not left by a run");
  folder.WriteFile("lhtmp002.lzh", "left by a run");
  folder.WriteFile("lhtmp003.lzh", "of a run that is at work");
  for (const char* name : {"lhtmp002.lzh", "lhtmp003.lzh"}) {
    SetFileAttributesA(folder.Lib(name).c_str(), FILE_ATTRIBUTE_TEMPORARY);
  }
  const HANDLE atWork = CreateFileA(folder.Lib("lhtmp003.lzh").c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_EQ(Compress("x.lzh", "new", {}), 0);
  EXPECT_THAT(Temporaries(), ElementsAre("lhtmp001.lzh", "lhtmp003.lzh"));
  CloseHandle(atWork);
  ASSERT_EQ(Compress("x.lzh", "appended", {}), 0);
  EXPECT_THAT(Temporaries(), ElementsAre("lhtmp001.lzh"));
}

}  // namespace
}  // namespace kozor::test
