// FlushTest.cpp - when data is flushed to the medium.
#include "platform/win32/PosixAdmin.h"
#include "tests/support/FailCall.h"
#include "tests/volume/VolumeTest.h"

namespace kozor::test {
namespace {

using VolumeFlush = VolumeTest;

// Each write is flushed before the next: header, areas, head, slices.
TEST_F(VolumeFlush, EveryWriteIsFlushedBeforeTheNext) {
  MakeTree(folder, "source", {{"a", 65'540}});
  volumes.SetIdentity("id", "", "memo");
  constexpr std::uintmax_t kAreas = kHeader + 2 + 4;
  int flushes = 0;
  for (const std::uintmax_t written : {kHeader, kHeader + 2, kAreas, kAreas + kHead,
                                       kAreas + kHead + 65'536, kAreas + kHead + 65'540}) {
    const FailCall<&posix::SystemCalls::fdatasync> failing(++flushes, EIO);
    EXPECT_EQ(Backup(), ZorErrorFileFailure);
    EXPECT_EQ(VolumeBytes(), written);
  }
}

// When only flushed at close, a volume is on the medium before the next one is requested.
TEST_F(VolumeFlush, AFlushThatFailsAtTheEndOfAVolumeEndsTheBackup) {
  MakeTwoFiles();
  KzSetFlushAtClose(1);
  for (const int volume : {1, 2}) {
    const FailCall<&posix::SystemCalls::fdatasync> failing(volume, EIO);
    EXPECT_EQ(Backup(kTwoVolumes), ZorErrorFileFailure);
    EXPECT_EQ(std::filesystem::exists(folder.Path(VolumeName(2))), volume == 2);
  }
  KzSetFlushAtClose(0);
}

}  // namespace
}  // namespace kozor::test
