// SystemContractTest.cpp - modules, disks and times.
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

TEST(ModuleContract, LoadsAreCountedAndFailuresToldApart) {
  const HMODULE first = LoadLibraryA("KERNEL32.DLL");
  const HMODULE second = LoadLibraryA("kernel32");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(FreeLibrary(first));
  EXPECT_NE(GetProcAddress(second, "GetDiskFreeSpaceExA"), nullptr);
  EXPECT_FAILS_WITH(ERROR_PROC_NOT_FOUND, GetProcAddress(second, "NoSuchFunction") == nullptr);
  EXPECT_TRUE(FreeLibrary(second));

  const WinFolder folder;
  folder.Write("BAD.DLL", "no module at all");
  EXPECT_FAILS_WITH(ERROR_MOD_NOT_FOUND, LoadLibraryA("NOSUCH32.DLL") == nullptr);
  EXPECT_FAILS_WITH(ERROR_BAD_EXE_FORMAT, LoadLibraryA(folder.Path("bad").c_str()) == nullptr);
}

TEST(DiskContract, BothCallsMeasureTheSameDisk) {
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
}

// In steps of 100 nanoseconds.
constexpr ULONGLONG kSecond = 10'000'000;
constexpr ULONGLONG kDay = 86'400 * kSecond;
constexpr ULONGLONG kUnixEpoch = 116'444'736'000'000'000;

FILETIME Time(ULONGLONG ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

ULONGLONG Ticks(const FILETIME& time) {
  return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

TEST(TimeContract, DosTimesCountEvenSecondsFrom1980) {
  const struct {
    WORD date;
    WORD clock;
    ULONGLONG ticks;
  } rows[] = {
      {0x0021, 0, kUnixEpoch + (10 * 365 + 2) * kDay},         // 1980-01-01 00:00:00
      {0x285D, 0xBF7D, kUnixEpoch + 951'868'798 * kSecond},    // 2000-02-29 23:59:58
      {0xFF9F, 0xBF7D, kUnixEpoch + 4'354'819'198 * kSecond},  // 2107-12-31 23:59:58
  };
  FILETIME time;
  WORD date = 0;
  WORD clock = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ticks);
    if (UnderWine() && row.date == 0xFF9F) continue;  // its seconds from 1970 have 32 bits
    ASSERT_TRUE(DosDateTimeToFileTime(row.date, row.clock, &time));
    EXPECT_EQ(Ticks(time), row.ticks);
    ASSERT_TRUE(FileTimeToDosDateTime(&time, &date, &clock));
    EXPECT_EQ(date, row.date);
    EXPECT_EQ(clock, row.clock);
  }
  if (UnderWine()) return;
  for (const ULONGLONG outside : {kUnixEpoch, rows[0].ticks - 1, rows[2].ticks + 2 * kSecond,
                                  ULONGLONG{0x8000'0000'0000'0000}}) {
    time = Time(outside);
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !FileTimeToDosDateTime(&time, &date, &clock));
  }
}

TEST(TimeContract, DosTimesThatAreNoneAreRefused) {
  if (UnderWine()) GTEST_SKIP() << "Wine takes days that a month doesn't have";
  const struct {
    WORD date;
    WORD clock;
  } rows[] = {{0x0020, 0}, {0x0001, 0},      {0x01A1, 0},      {0x005E, 0},
              {0xF05D, 0}, {0x0021, 0xC000}, {0x0021, 0x0780}, {0x0021, 0x001E}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.date << ' ' << row.clock);
    FILETIME time;
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !DosDateTimeToFileTime(row.date, row.clock, &time));
  }
}

TEST(TimeContract, LocalTimesGoThereAndComeBack) {
  FILETIME now;
  FILETIME local;
  FILETIME back;
  GetSystemTimeAsFileTime(&now);
  ASSERT_TRUE(FileTimeToLocalFileTime(&now, &local));
  ASSERT_TRUE(LocalFileTimeToFileTime(&local, &back));
  EXPECT_EQ(Ticks(back), Ticks(now));
  EXPECT_GT(Ticks(now), kUnixEpoch + 50 * 365 * kDay);
}

}  // namespace
}  // namespace kozor::test
