// DiskTest.cpp - space and type of the volume that holds a path, compared with the host's values.
#include <gtest/gtest.h>

#include "ZorFileServices.h"
#include "platform/win32/PosixAdmin.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

TEST(FilesDisk, GivesTheCapacityOfTheRootWhateverFollowsIt) {
  TestFolder folder;
  ASSERT_TRUE(DefineDosDeviceA(0, "R:", folder.Path().c_str()));
  ASSERT_TRUE(KzMapShare("\\\\srv\\share", folder.Path().c_str()));
  const std::uint64_t capacity = std::filesystem::space(folder.Path()).capacity;
  for (const char* path : {"R:\\", "R:", "R:file", "R:\\no\\such\\file", "\\\\srv\\share",
                           "\\\\srv\\share\\dir\\file"}) {
    unsigned long high = 99;
    const std::uint64_t low = ZorGetDiskSpace(path, 0, &high);
    EXPECT_EQ(std::uint64_t{high} << 32 | low, capacity) << path;
    EXPECT_EQ(ZorGetDiskSpace(path, 0, nullptr), capacity >> 32 != 0 ? 0xFFFFFFFF : low) << path;
    EXPECT_EQ(ZorGetDriveType(path), GetDriveTypeA(path[0] == 'R' ? "R:\\" : "\\\\srv\\share\\"));
  }
  unsigned long high = 0;
  const std::uint64_t freeSpace = ZorGetDiskSpace("R:\\", 1, &high);
  EXPECT_LE(std::uint64_t{high} << 32 | freeSpace, capacity);
  KzMapShare("\\\\srv\\share", nullptr);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "R:", nullptr);
}

TEST(FilesDisk, TellsAFailureFromAFullDiskByTheLastError) {
  unsigned long high = 99;
  SetLastError(77);
  EXPECT_NE(ZorGetDiskSpace("C:\\", 0, nullptr), 0u);
  for (const char* withoutRoot : {"dir\\file", "\\dir\\file", "", "\\\\srv"}) {
    EXPECT_EQ(ZorGetDiskSpace(withoutRoot, 1, &high), 0u) << withoutRoot;
    EXPECT_EQ(ZorGetDriveType(withoutRoot), DRIVE_UNKNOWN) << withoutRoot;
  }
  EXPECT_EQ(GetLastError(), 77u);
  EXPECT_EQ(ZorGetDiskSpace("Q:\\", 0, &high), 0u);
  EXPECT_NE(GetLastError(), 77u);
  EXPECT_EQ(ZorGetDriveType("Q:\\dir"), DRIVE_NO_ROOT_DIR);
  EXPECT_EQ(high, 99u) << "a failure leaves it alone";
}

}  // namespace
}  // namespace kozor::test
