// MediaTest.cpp - backups to two small disks, mounted as drives A: and B:, until they are full.
#include "tests/support/posix/SmallDisk.h"
#include "tests/volume/VolumeTest.h"

namespace kozor::test {
namespace {

constexpr std::uint32_t kDiskBytes = 128 * 1024;
constexpr std::uint32_t kCluster = 4096;

class VolumeMedia : public VolumeTest {
 protected:
  void SetUp() override {
    if (!diskA.IsThere() || !diskB.IsThere()) GTEST_SKIP() << "only root can mount the disks";
    DefineDosDeviceA(0, "A:", folder.Path("A").c_str());
    DefineDosDeviceA(0, "B:", folder.Path("B").c_str());
  }
  void TearDown() override {
    for (const char* drive : {"A:", "B:"}) DefineDosDeviceA(DDD_REMOVE_DEFINITION, drive, nullptr);
  }
  ZorError BackupToDisks() {
    volumes.nameVolume = [](int number) {
      return CString(number % 2 == 1 ? "A:\\backup\\set.vol" : "B:\\backup\\set.vol");
    };
    return BackupToMedia();
  }

 private:
  const SmallDisk diskA{folder.Path("A"), kDiskBytes};
  const SmallDisk diskB{folder.Path("B"), kDiskBytes};
};

TEST_F(VolumeMedia, SpaceIsWhatAFileThereCanTake) {
  EXPECT_EQ(volumes.DefaultSpace("A:\\set.vol"), kDiskBytes);
  EXPECT_EQ(volumes.DefaultSpace("A:"), kDiskBytes);
  EXPECT_EQ(volumes.DefaultSpace("A:\\new\\sub\\set.vol"), kDiskBytes - 2 * kCluster);
  EXPECT_EQ(volumes.DefaultSpace("A:\\\\new\\\\"), kDiskBytes - kCluster);
  EXPECT_EQ(volumes.DefaultSpace("set.vol"), 0U);
  EXPECT_EQ(volumes.DefaultSpace("Q:\\set.vol"), 0U);

  folder.WriteFile("A/one", "1");
  EXPECT_EQ(volumes.DefaultSpace("A:\\set.vol"), kDiskBytes - kCluster);
  EXPECT_EQ(volumes.DefaultSpace("A:\\one"), kDiskBytes);
  folder.WriteFile("A/full", Bytes(kDiskBytes - kCluster));
  EXPECT_EQ(volumes.DefaultSpace("A:\\set.vol"), 0U);
  EXPECT_EQ(volumes.DefaultSpace("A:\\one"), kCluster);
  EXPECT_EQ(volumes.DefaultSpace("A:\\new\\one"), 0U);
}

TEST_F(VolumeMedia, ASetFillsOneDiskAndGoesOnOnTheOther) {
  MakeTree(folder, "source", {{"a", 150'000}, {"b", 50'000}});
  ASSERT_EQ(BackupToDisks(), ZorErrorNone);
  EXPECT_EQ(std::filesystem::file_size(folder.Path("A/backup/set.vol")), kDiskBytes - kCluster);
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");

  ASSERT_EQ(BackupToDisks(), ZorErrorNone);  // the space of replaced volumes counts as free
  EXPECT_EQ(std::filesystem::file_size(folder.Path("A/backup/set.vol")), kDiskBytes);
}

TEST_F(VolumeMedia, FullDisksEndBackupAndRestoreWithDiskFull) {
  MakeTree(folder, "source", {{"a", 1000}, {"b", 150'000}});
  ASSERT_EQ(Backup(), ZorErrorNone);
  EXPECT_EQ(Restore("B:"), ZorErrorDiskFull);
  EXPECT_EQ(folder.ReadFile("B/a"), folder.ReadFile("source/a"));
  volumes.space = [](const char*) { return 1UL << 20; };  // more than the disk takes
  EXPECT_EQ(BackupToDisks(), ZorErrorDiskFull);
}

}  // namespace
}  // namespace kozor::test
