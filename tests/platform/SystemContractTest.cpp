// SystemContractTest.cpp - modules, disks and times.
#include "platform/base/Clock.h"
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

TEST(PlatformModuleContract, LoadsAreCountedAndFailuresToldApart) {
  const HMODULE first = LoadLibraryA("KERNEL32.DLL");
  const HMODULE second = LoadLibraryA("kernel32");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(FreeLibrary(first));
  EXPECT_NE(GetProcAddress(second, "GetDiskFreeSpaceExA"), nullptr);
  EXPECT_FAILS_WITH(ERROR_PROC_NOT_FOUND, GetProcAddress(second, "NoSuchFunction") == nullptr);
  EXPECT_TRUE(FreeLibrary(second));

  const TestFolder host;
  const WinFolder folder(host.Lib());
  folder.Write("BAD.DLL", "no module at all");
  EXPECT_FAILS_WITH(ERROR_MOD_NOT_FOUND, LoadLibraryA("NOSUCH32.DLL") == nullptr);
  EXPECT_FAILS_WITH(ERROR_BAD_EXE_FORMAT, LoadLibraryA(folder.Path("bad").c_str()) == nullptr);
}

TEST(PlatformDiskContract, BothCallsMeasureTheSameDisk) {
  ULARGE_INTEGER free;
  ULARGE_INTEGER total;
  ULARGE_INTEGER allFree;
  ASSERT_TRUE(GetDiskFreeSpaceExA("C:\\", &free, &total, &allFree));
  EXPECT_GE(total.QuadPart, allFree.QuadPart);
  EXPECT_GE(allFree.QuadPart, free.QuadPart);
  DWORD sectors = 0;
  DWORD bytes = 0;
  DWORD freeClusters = 0;
  DWORD totalClusters = 0;
  ASSERT_TRUE(GetDiskFreeSpaceA("C:\\", &sectors, &bytes, &freeClusters, &totalClusters));
  const ULONGLONG clusterBytes = ULONGLONG{sectors} * bytes;
  EXPECT_NEAR(static_cast<double>(clusterBytes * totalClusters),
              static_cast<double>(total.QuadPart), static_cast<double>(clusterBytes));
  EXPECT_LE(freeClusters, totalClusters);
  for (std::string root = "A:\\"; root[0] <= 'Z'; ++root[0]) {
    if (GetDriveTypeA(root.c_str()) != DRIVE_NO_ROOT_DIR) continue;
    EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND,
                      !GetDiskFreeSpaceExA(root.c_str(), &free, &total, &allFree));
  }
}

TEST(PlatformTimeContract, DosTimesCountEvenSecondsFrom1980) {
  FILETIME time;
  DosTime back;
  const int lastDate = UnderWine() ? 0x7421 : 0xFF9F;  // Wine counts seconds since 1970 in 32 bits
  for (int date = kFirstDosTime.date; date <= lastDate; ++date) {
    DosTime dos{static_cast<WORD>(date), static_cast<WORD>(date * 7)};
    if (!dos.IsValid()) dos.time = kLastDosTime.time;
    if (!dos.IsValid()) continue;
    SCOPED_TRACE(testing::Message() << dos.date << ' ' << dos.time);
    ASSERT_TRUE(DosDateTimeToFileTime(dos.date, dos.time, &time));
    EXPECT_EQ(Ticks(time), FileTimeOfDosAsUtc(dos));
    ASSERT_TRUE(FileTimeToDosDateTime(&time, &back.date, &back.time));
    EXPECT_EQ(back.date, dos.date);
    EXPECT_EQ(back.time, dos.time);
  }
  if (UnderWine()) GTEST_SKIP() << "Wine takes times outside, and days that a month doesn't have";
  for (const std::uint64_t outside :
       {kFileTimeOf1970, FileTimeOfDosAsUtc(kFirstDosTime) - 1,
        FileTimeOfDosAsUtc(kLastDosTime) + 2 * kTicksPerSecond, 0x8000'0000'0000'0000}) {
    time = FromTicks<FILETIME>(outside);
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER,
                      !FileTimeToDosDateTime(&time, &back.date, &back.time));
  }
  for (const DosTime none : {DosTime{0x0020, 0},
                             {0x0001, 0},
                             {0x01A1, 0},
                             {0x005E, 0},
                             {0xF05D, 0},
                             {0x0021, 0xC000},
                             {0x0021, 0x0780},
                             {0x0021, 0x001E}}) {
    SCOPED_TRACE(testing::Message() << none.date << ' ' << none.time);
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !DosDateTimeToFileTime(none.date, none.time, &time));
  }
}

}  // namespace
}  // namespace kozor::test
