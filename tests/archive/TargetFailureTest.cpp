// TargetFailureTest.cpp - Extract when the system refuses an operation on a target.
#include "RecordedArchive.h"
#include "tests/support/FailCall.h"

namespace kozor::test {
namespace {

class ArchiveTargetFailure : public ArchiveRecorded {
 protected:
  ArchiveTargetFailure() {
    recording.members = {{.name = "d/f.txt", .contents = "hello"}, {.name = "g.txt"}};
  }

  ZorError Run() { return ErrorOf(archive.Extract(path.c_str(), Lib("out").c_str(), nullptr)); }
};

TEST_F(ArchiveTargetFailure, NamesWhyATargetCannotBeMapped) {
  folder.WriteFile("out/d/f.txt", "old");
  {
    const FailCall<&posix::SystemCalls::fallocate> full(1, ENOSPC);
    EXPECT_EQ(Run(), ZorErrorDiskFull);
  }
  const FailCall<&posix::SystemCalls::mmap> exhausted(1, ENOMEM);
  EXPECT_EQ(Run(), ZorErrorOutOfMemory);
}

// Otherwise the file would silently keep bytes that aren't the member's.
TEST_F(ArchiveTargetFailure, FailsWhenATargetCannotBeTrimmed) {
  const FailCall<&posix::SystemCalls::ftruncate> failing(1, EIO);
  EXPECT_EQ(Run(), ZorErrorFileFailure);
  EXPECT_FALSE(folder.Exists("out/g.txt"));
}

}  // namespace
}  // namespace kozor::test
