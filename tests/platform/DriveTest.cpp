// DriveTest.cpp - drives, shares and the process's directory.
#include <sys/vfs.h>
#include <unistd.h>

#include "platform/win32/PosixAdmin.h"
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

class PlatformDrive : public ContractTest {
 protected:
  PlatformDrive() : before(std::filesystem::current_path()) {
    host.WriteFile("d/sub/f", "x");
    host.WriteFile("outside", "x");
    EXPECT_TRUE(DefineDosDeviceA(0, "D:", host.Path("d").c_str()));
  }
  ~PlatformDrive() override {
    DefineDosDeviceA(DDD_REMOVE_DEFINITION, "D:", nullptr);
    std::filesystem::current_path(before);
  }

  static bool Exists(const char* path) {
    return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
  }

  std::filesystem::path before;
};

TEST_F(PlatformDrive, IsAHostDirectoryThatNobodyClimbsOutOf) {
  std::filesystem::current_path(host.Path("d/sub"));
  for (const char* path : {"D:\\sub\\f", "d:\\SUB", "D:\\", "D:\\..\\..\\sub\\..\\..\\sub\\f", "f",
                           "D:f", "\\sub\\f", "..\\..\\..\\sub\\f"}) {
    EXPECT_TRUE(Exists(path)) << path;
  }
  // On a drive other than the process's, "C:f" is relative to the root.
  for (const char* path : {"D:\\outside", "D:\\..\\outside", "..\\..\\outside", "C:f"}) {
    EXPECT_FALSE(Exists(path)) << path;
  }
  char current[1024];
  EXPECT_EQ(GetCurrentDirectoryA(sizeof current, current), 6U);
  EXPECT_STREQ(current, "D:\\sub");
  EXPECT_EQ(Search("."), Names{"sub"});
  EXPECT_EQ(Search("D:\\*"), Names{"sub"}) << "a root has no dots";
}

TEST_F(PlatformDrive, GoesAndComesWithItsDefinition) {
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "d:", nullptr));
  EXPECT_FALSE(Exists("D:\\sub"));
  EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !DefineDosDeviceA(DDD_REMOVE_DEFINITION, "D:", nullptr));
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !DefineDosDeviceA(0, "1:", "/tmp"));
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !DefineDosDeviceA(0, "D:", nullptr));
}

TEST_F(PlatformDrive, CIsTheHostsRootUntilToldOtherwise) {
  EXPECT_TRUE(DefineDosDeviceA(0, "C:", host.Path("d/sub").c_str()));
  EXPECT_TRUE(Exists("C:\\f"));
  EXPECT_TRUE(DefineDosDeviceA(DDD_REMOVE_DEFINITION, "C:", nullptr));
  EXPECT_TRUE(Exists(folder.Path("outside").c_str()));
}

TEST_F(PlatformDrive, HoldsTheHostPathsBelowIt) {
  std::string path;
  EXPECT_TRUE(KzHostToLibraryPath(host.Path("d/sub/f").c_str(), path));
  EXPECT_EQ(path, "D:\\sub\\f");
  EXPECT_TRUE(KzHostToLibraryPath((host.Path("d").string() + "x").c_str(), path));
  EXPECT_EQ(path, folder.Path("dx"));
}

TEST_F(PlatformDrive, SharesAreKnownByServerAndName) {
  ASSERT_TRUE(KzMapShare("\\\\Server\\Share", host.Path("d").c_str()));
  EXPECT_TRUE(Exists("\\\\server\\SHARE\\sub\\f"));
  EXPECT_TRUE(Exists("\\\\server\\share"));
  EXPECT_FALSE(Exists("\\\\server\\share\\..\\outside"));
  EXPECT_FAILS_WITH(ERROR_BAD_NET_NAME, !Exists("\\\\server\\other\\f"));
  EXPECT_FAILS_WITH(ERROR_BAD_NETPATH, !Exists("\\\\nobody\\share\\f"));
  EXPECT_FAILS_WITH(ERROR_BAD_PATHNAME, !Exists("\\\\server"));
  EXPECT_EQ(GetDriveTypeA("\\\\server\\share\\"), DRIVE_REMOTE);
  EXPECT_TRUE(KzMapShare("\\\\SERVER\\share", nullptr));
  EXPECT_FAILS_WITH(ERROR_BAD_NET_NAME, !KzMapShare("\\\\server\\share", nullptr));
  EXPECT_FAILS_WITH(ERROR_BAD_NETPATH, !KzMapShare("server", "/tmp"));
}

TEST_F(PlatformDrive, TellsItsKind) {
  EXPECT_EQ(GetDriveTypeA("D:\\sub"), DRIVE_NO_ROOT_DIR);
  EXPECT_TRUE(DefineDosDeviceA(0, "D:", "/no/such/directory"));
  EXPECT_EQ(GetDriveTypeA("D:\\"), DRIVE_NO_ROOT_DIR);
  constexpr long kTmpfs = 0x01021994;
  struct statfs shared {};
  if (::statfs("/dev/shm", &shared) != 0 || shared.f_type != kTmpfs) return;
  EXPECT_TRUE(DefineDosDeviceA(0, "D:", "/dev/shm"));
  EXPECT_EQ(GetDriveTypeA("D:\\"), DRIVE_RAMDISK);
}

}  // namespace
}  // namespace kozor::test
