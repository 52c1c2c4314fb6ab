// HostFailureTest.cpp - what is left when the host says no: full disks, failing calls, other
// processes.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/Contract.h"
#include "tests/support/FailCall.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

using posix::SystemCalls;

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

class HostFailure : public ::testing::Test {
 protected:
  std::string Lib(const char* name) const { return folder.Lib() + '\\' + name; }
  TestFolder folder;
};

TEST_F(HostFailure, WritesThatStopShortTellHowFarTheyCame) {
  const OpenFile file(Lib("f"), kReadWrite, 0, CREATE_NEW);
  DWORD written = 99;
  {
    const FailCall<&SystemCalls::write> failing(1, ENOSPC);
    EXPECT_FAILS_WITH(ERROR_DISK_FULL, !WriteFile(file.Get(), "abc", 3, &written, nullptr));
    EXPECT_EQ(written, 0U);
  }
  const FailCall<&SystemCalls::write> interrupted(1, EINTR);
  EXPECT_TRUE(WriteFile(file.Get(), "abc", 3, &written, nullptr));
  EXPECT_EQ(written, 3U);
}

TEST_F(HostFailure, ReadsFlushesAndMovesReportTheirErrors) {
  folder.WriteFile("f", "x");
  const OpenFile file(Lib("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  char byte = 0;
  DWORD got = 0;
  const FailCall<&SystemCalls::read> read(1, EIO);
  const FailCall<&SystemCalls::fdatasync> flush(1, EIO);
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !ReadFile(file.Get(), &byte, 1, &got, nullptr));
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !FlushFileBuffers(file.Get()));
  folder.WriteFile("g", "y");
  {
    const FailCall<&SystemCalls::renameat2> rename(1, EXDEV);
    EXPECT_FAILS_WITH(ERROR_NOT_SAME_DEVICE, !MoveFileExA(Lib("g").c_str(), Lib("h").c_str(), 0));
  }
  const FailCall<&SystemCalls::fsync> sync(1, EIO);
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE,
                    !MoveFileExA(Lib("g").c_str(), Lib("h").c_str(), MOVEFILE_WRITE_THROUGH));
}

TEST_F(HostFailure, MovesWorkWhereTheHostCannotRefuseToReplace) {
  folder.WriteFile("f", "x");
  const FailCall<&SystemCalls::renameat2> failing(1, EINVAL);
  EXPECT_TRUE(MoveFileExA(Lib("f").c_str(), Lib("g").c_str(), 0));
  EXPECT_EQ(folder.List(), std::vector<std::string>{"g"});
}

TEST_F(HostFailure, AMappingWithoutRoomLeavesTheFileAsItWas) {
  folder.WriteFile("f", "0123456789");
  const OpenFile file(Lib("f"), kReadWrite, 0, OPEN_EXISTING);
  const FailCall<&SystemCalls::fallocate> full(1, ENOSPC);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0,
                                                        1 << 20, nullptr) == nullptr);
  EXPECT_EQ(GetFileSize(file.Get(), nullptr), 10U);
}

TEST_F(HostFailure, AMappingIsFilledWithZerosWhereBlocksCannotBeReserved) {
  folder.WriteFile("f", "0123456789");
  const OpenFile file(Lib("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  const FailCall<&SystemCalls::fallocate> unable(1, EOPNOTSUPP);
  const HANDLE mapping =
      CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0, 300'000, nullptr);
  ASSERT_NE(mapping, nullptr);
  CloseHandle(mapping);
  struct stat facts {};
  ASSERT_EQ(::stat(folder.Path("f").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_size, 300'000);
  EXPECT_GE(facts.st_blocks * 512, 290'000) << "no holes";
  EXPECT_EQ(folder.ReadFile("f")[9], '9');
}

TEST_F(HostFailure, AViewThatFailsIsAnErrorOfMemory) {
  const OpenFile file(Lib("f"), kReadWrite, 0, CREATE_NEW);
  const HANDLE mapping = CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0, 1024, nullptr);
  const FailCall<&SystemCalls::mmap> failing(1, ENOMEM);
  EXPECT_FAILS_WITH(ERROR_NOT_ENOUGH_MEMORY,
                    MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0) == nullptr);
  CloseHandle(mapping);
}

// A disk of 1 MiB, where the user may mount one.
class FullDisk : public HostFailure {
 protected:
  void SetUp() override {
    mounted = ::mount("tmpfs", folder.Path().c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!mounted) GTEST_SKIP() << "mounting a small disk needs root";
  }
  void TearDown() override {
    if (mounted) ::umount2(folder.Path().c_str(), MNT_DETACH);
  }
  bool mounted = false;
};

TEST_F(FullDisk, IsAnErrorAndNeverAFault) {
  const OpenFile file(Lib("f"), kReadWrite, 0, CREATE_NEW);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0,
                                                        2 << 20, nullptr) == nullptr);
  EXPECT_EQ(GetFileSize(file.Get(), nullptr), 0U);
  SetFilePointer(file.Get(), 2 << 20, nullptr, FILE_BEGIN);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, !SetEndOfFile(file.Get()));
  SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN);
  const std::string block(2 << 20, 'x');
  DWORD written = 0;
  EXPECT_FAILS_WITH(ERROR_DISK_FULL,
                    !WriteFile(file.Get(), block.data(), 2 << 20, &written, nullptr));
  EXPECT_LE(written, 1U << 20);
}

// What another process does with a file while this one looks on.
class OtherProcess {
 public:
  OtherProcess(const std::string& path, DWORD access, DWORD share) {
    int ready[2];
    int done[2];
    if (::pipe(ready) != 0 || ::pipe(done) != 0) return;
    child = ::fork();
    char signal = 0;
    if (child == 0) {
      const HANDLE file =
          CreateFileA(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr);
      signal = file != INVALID_HANDLE_VALUE ? 'y' : 'n';
      ::close(done[1]);
      bool told = ::write(ready[1], &signal, 1) == 1;
      told = ::read(done[0], &signal, 1) == 0 && told;
      ::_exit(told ? 0 : 1);
    }
    opened = ::read(ready[0], &signal, 1) == 1 && signal == 'y';
    for (const int end : {ready[0], ready[1], done[0]}) ::close(end);
    release = done[1];
  }
  ~OtherProcess() {
    ::close(release);
    ::waitpid(child, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  bool HasOpened() const { return opened; }

 private:
  pid_t child = -1;
  int release = -1;
  bool opened = false;
};

TEST_F(HostFailure, SharingHoldsBetweenProcesses) {
  folder.WriteFile("f", "x");
  constexpr DWORD kShareBoth = FILE_SHARE_READ | FILE_SHARE_WRITE;
  {
    const OtherProcess reader(Lib("f"), GENERIC_READ, FILE_SHARE_READ);
    ASSERT_TRUE(reader.HasOpened());
    EXPECT_TRUE(OpenFile(Lib("f"), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING).IsOpen());
    EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION,
                      !OpenFile(Lib("f"), GENERIC_WRITE, kShareBoth, OPEN_EXISTING).IsOpen());
    EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !DeleteFileA(Lib("f").c_str()));
    folder.WriteFile("g", "y");
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                      !MoveFileExA(Lib("g").c_str(), Lib("f").c_str(), MOVEFILE_REPLACE_EXISTING));
  }
  const OpenFile writer(Lib("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_TRUE(writer.IsOpen()) << "a process that ends gives everything back";
  EXPECT_FALSE(OtherProcess(Lib("f"), GENERIC_READ, FILE_SHARE_READ).HasOpened());
  EXPECT_TRUE(OtherProcess(Lib("f"), GENERIC_READ, kShareBoth).HasOpened());
}

}  // namespace
}  // namespace kozor::test
