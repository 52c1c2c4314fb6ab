// HostFailureTest.cpp - failures of the host: full disks, failing calls, other processes.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/win32/PosixAdmin.h"
#include "tests/platform/Contract.h"
#include "tests/support/FailCall.h"
#include "tests/support/posix/SmallDisk.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;
using posix::SystemCalls;

using PlatformHostFailure = ContractTest;

TEST_F(PlatformHostFailure, WritesThatStopShortTellHowFarTheyCame) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
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

TEST_F(PlatformHostFailure, ReadsFlushesAndMovesReportTheirErrors) {
  host.WriteFile("f", "x");
  host.WriteFile("g", "y");
  const OpenFile file(folder.Path("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  char byte = 0;
  DWORD got = 0;
  const FailCall<&SystemCalls::read> read(1, EIO);
  const FailCall<&SystemCalls::fdatasync> flush(1, EIO);
  const FailCall<&SystemCalls::renameat2> rename(1, EXDEV);
  const FailCall<&SystemCalls::fsync> sync(1, EIO);
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !ReadFile(file.Get(), &byte, 1, &got, nullptr));
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !FlushFileBuffers(file.Get()));
  EXPECT_FAILS_WITH(ERROR_NOT_SAME_DEVICE, !folder.Move("g", "h"));
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !folder.Move("g", "h", MOVEFILE_WRITE_THROUGH));
}

TEST_F(PlatformHostFailure, SearchesTellThatADirectoryCouldNotBeRead) {
  for (const char* name : {"a", "b"}) host.WriteFile(name, "x");
  WIN32_FIND_DATAA data;
  const auto first = [&] { return FindFirstFileA(folder.Path("*").c_str(), &data); };
  {
    const FailCall<&SystemCalls::opendir> failing(1, EACCES, Failing::Always);
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, first() == INVALID_HANDLE_VALUE);
  }
  {
    const FailCall<&SystemCalls::readdir> failing(1, EIO, Failing::Always);
    EXPECT_FAILS_WITH(ERROR_IO_DEVICE, first() == INVALID_HANDLE_VALUE);
  }
  const FailCall<&SystemCalls::readdir> failing(3, EIO);
  const HANDLE find = first();
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(FindNextFileA(find, &data)) << "what could be read comes first";
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !FindNextFileA(find, &data));
  FindClose(find);
}

TEST_F(PlatformHostFailure, FlushesCanWaitForTheFileToBeClosed) {
  EXPECT_EQ(KzSetFlushAtClose(1), 0);
  const HANDLE file = CreateFileA(folder.Path("f").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  const HANDLE other = CreateFileA(folder.Path("g").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
  const FailCall<&SystemCalls::fdatasync> failing(1, EIO, Failing::Always);
  EXPECT_TRUE(FlushFileBuffers(file));
  EXPECT_EQ(KzSetFlushAtClose(0), 1);
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !CloseHandle(file));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !CloseHandle(file));  // it is closed even then
  EXPECT_TRUE(CloseHandle(other)) << "nobody asked for a flush";
}

// Through a link to its directory a file has a second path, but only one directory entry, which
// must not be lost.
TEST_F(PlatformHostFailure, AMoveOntoItselfLosesNothing) {
  host.WriteFile("d/f", "x");
  host.WriteFile("d/g", "y");
  ASSERT_EQ(::link(host.Path("d/g").c_str(), host.Path("d/h").c_str()), 0);
  ASSERT_EQ(::symlink("d", host.Path("way").c_str()), 0);
  EXPECT_TRUE(folder.Move("d\\f", "way\\f", MOVEFILE_REPLACE_EXISTING));
  EXPECT_TRUE(folder.Move("d\\g", "way\\g", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(ReadText(folder.Path("d\\f")) + ReadText(folder.Path("d\\g")), "xy");
  EXPECT_TRUE(folder.Move("d\\g", "way\\h", MOVEFILE_REPLACE_EXISTING)) << "two names become one";
  EXPECT_FALSE(host.Exists("d/g"));
  EXPECT_EQ(ReadText(folder.Path("d\\h")), "y");
}

TEST_F(PlatformHostFailure, AFileKeepsItsModeIfItCannotReplaceAnother) {
  host.WriteFile("f", "x");
  host.WriteFile("g", "y");
  fs::permissions(host.Path("g"), fs::perms{0600});
  const auto mode = fs::status(host.Path("f")).permissions();
  const FailCall<&SystemCalls::renameat2> failing(1, EIO);
  EXPECT_FAILS_WITH(ERROR_IO_DEVICE, !folder.Move("f", "g", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(fs::status(host.Path("f")).permissions(), mode);
  EXPECT_TRUE(folder.Move("f", "g", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(fs::status(host.Path("g")).permissions(), fs::perms{0600});
}

TEST_F(PlatformHostFailure, MovesWorkWhereTheHostCannotRefuseToReplace) {
  host.WriteFile("f", "x");
  const FailCall<&SystemCalls::renameat2> failing(1, EINVAL);
  EXPECT_TRUE(folder.Move("f", "g"));
  EXPECT_EQ(host.List(), Names{"g"});
}

TEST_F(PlatformHostFailure, AMappingNeedsRoomAndAddressesButNoReservation) {
  host.WriteFile("f", "0123456789");
  const OpenFile file(folder.Path("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  const auto map = [&](DWORD bytes) {
    return CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0, bytes, nullptr);
  };
  {
    const FailCall<&SystemCalls::fallocate> full(1, ENOSPC);
    EXPECT_FAILS_WITH(ERROR_DISK_FULL, map(1 << 20) == nullptr);
    EXPECT_EQ(GetFileSize(file.Get(), nullptr), 10U) << "the file is as it was";
  }
  const FailCall<&SystemCalls::fallocate> unable(1, EOPNOTSUPP);
  const FailCall<&SystemCalls::mmap> failing(1, ENOMEM);
  const HANDLE mapping = map(300'000);
  EXPECT_FAILS_WITH(ERROR_NOT_ENOUGH_MEMORY,
                    MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0) == nullptr);
  CloseHandle(mapping);
  struct stat facts {};
  ASSERT_EQ(::stat(host.Path("f").c_str(), &facts), 0);
  EXPECT_EQ(facts.st_size, 300'000);
  EXPECT_GE(facts.st_blocks * 512, 290'000) << "filled with zeros: no holes";
  EXPECT_EQ(host.ReadFile("f")[9], '9');
}

TEST_F(PlatformHostFailure, AFullDiskIsAnErrorAndNeverAFault) {
  const SmallDisk disk(host.Path("disk"), 1 << 20);
  if (!disk.IsThere()) GTEST_SKIP() << "mounting a small disk needs root";
  const OpenFile file(folder.Path("disk/f"), kReadWrite, 0, CREATE_NEW);
  for (const int error : {EINTR, EOPNOTSUPP}) {  // retried; zeros written until the disk is full
    const FailCall<&SystemCalls::fallocate> failing(1, error);
    EXPECT_FAILS_WITH(ERROR_DISK_FULL, CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE, 0,
                                                          2 << 20, nullptr) == nullptr);
    EXPECT_EQ(GetFileSize(file.Get(), nullptr), 0U);
  }
  SetFilePointer(file.Get(), 2 << 20, nullptr, FILE_BEGIN);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, !SetEndOfFile(file.Get()));
  SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN);
  const std::string block(2 << 20, 'x');
  DWORD written = 0;
  EXPECT_FAILS_WITH(ERROR_DISK_FULL,
                    !WriteFile(file.Get(), block.data(), 2 << 20, &written, nullptr));
  EXPECT_LE(written, 1U << 20);
}

// Another process that opens a file and holds it.
class OtherProcess {
 public:
  OtherProcess(const std::string& path, DWORD access, DWORD share) : child(::fork()) {
    if (child == 0) {
      const OpenFile file(path, access, share, OPEN_EXISTING);
      if (file.IsOpen()) ::raise(SIGSTOP);  // until it is killed
      ::_exit(0);
    }
    int status = 0;
    opened = ::waitpid(child, &status, WUNTRACED) == child && WIFSTOPPED(status);
  }
  ~OtherProcess() {
    if (!opened) return;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  bool HasOpened() const { return opened; }

 private:
  pid_t child;
  bool opened = false;
};

TEST_F(PlatformHostFailure, SharingHoldsBetweenProcesses) {
  host.WriteFile("f", "x");
  host.WriteFile("g", "y");
  {
    const OtherProcess easy(folder.Path("f"), GENERIC_READ, kShareAll);
    const OtherProcess reader(folder.Path("f"), GENERIC_READ, FILE_SHARE_READ);
    const OtherProcess easier(folder.Path("f"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE);
    ASSERT_TRUE(easy.HasOpened() && reader.HasOpened() && easier.HasOpened());
    EXPECT_TRUE(Opens(folder.Path("f")));
    EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !Opens(folder.Path("f"), GENERIC_WRITE));
    EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !folder.Delete("f"));
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Move("g", "f", MOVEFILE_REPLACE_EXISTING));
  }
  const OpenFile writer(folder.Path("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
  ASSERT_TRUE(writer.IsOpen()) << "a process that ends gives everything back";
  EXPECT_FALSE(OtherProcess(folder.Path("f"), GENERIC_READ, FILE_SHARE_READ).HasOpened());
  EXPECT_TRUE(OtherProcess(folder.Path("f"), GENERIC_READ, kShareAll).HasOpened());
}

}  // namespace
}  // namespace kozor::test
