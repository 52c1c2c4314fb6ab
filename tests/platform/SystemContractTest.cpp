// SystemContractTest.cpp - modules, disks, the version and times.
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

TEST(ModuleContract, LoadsAreCounted) {
  const HMODULE first = LoadLibraryA("KERNEL32.DLL");
  const HMODULE second = LoadLibraryA("kernel32");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(FreeLibrary(first));
  EXPECT_NE(GetProcAddress(second, "GetDiskFreeSpaceExA"), nullptr);
  EXPECT_FAILS_WITH(ERROR_PROC_NOT_FOUND, GetProcAddress(second, "NoSuchFunction") == nullptr);
  EXPECT_TRUE(FreeLibrary(second));
}

TEST(ModuleContract, WhatIsNotThereIsNotLoaded) {
  EXPECT_FAILS_WITH(ERROR_MOD_NOT_FOUND, LoadLibraryA("NOSUCH32.DLL") == nullptr);
  EXPECT_FAILS_WITH(ERROR_MOD_NOT_FOUND, LoadLibraryA("C:\\none\\NOSUCH32.DLL") == nullptr);
  const WinFolder folder;
  folder.Write("BAD.DLL", "no module at all");
  EXPECT_FAILS_WITH(ERROR_BAD_EXE_FORMAT, LoadLibraryA(folder.Path("bad").c_str()) == nullptr);
}

TEST(ModuleContract, TheProgramKnowsItsFile) {
  char path[1024];
  const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  ASSERT_GT(length, 0U);
  EXPECT_NE(GetFileAttributesA(path), INVALID_FILE_ATTRIBUTES) << path;
  if (UnderWine()) return;  // it doesn't end a cut text with a zero
  char shorter[8];
  EXPECT_FAILS_WITH(ERROR_INSUFFICIENT_BUFFER,
                    GetModuleFileNameA(nullptr, shorter, sizeof shorter) == sizeof shorter);
  EXPECT_EQ(std::string(shorter), std::string(path).substr(0, 7));
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

TEST(DiskContract, DrivesThatDoNotExist) {
  DWORD a = 0;
  ULARGE_INTEGER b;
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !GetDiskFreeSpaceA("Q:\\", &a, &a, &a, &a));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !GetDiskFreeSpaceExA("Q:\\", &b, &b, &b));
  EXPECT_EQ(GetDriveTypeA("Q:\\"), UINT{DRIVE_NO_ROOT_DIR});
  EXPECT_NE(GetDriveTypeA("C:\\"), UINT{DRIVE_NO_ROOT_DIR});
}

TEST(VersionContract, IsOfTheNtLine) {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  ASSERT_TRUE(GetVersionExA(&version));
  EXPECT_EQ(version.dwPlatformId, DWORD{VER_PLATFORM_WIN32_NT});
  EXPECT_GE(version.dwMajorVersion, 6U);
  version.dwOSVersionInfoSize = 4;
  EXPECT_FAILS_WITH(ERROR_INSUFFICIENT_BUFFER, !GetVersionExA(&version));
}

constexpr ULONGLONG kDay = 864'000'000'000;
constexpr ULONGLONG kUnixEpoch = 116'444'736'000'000'000;

FILETIME Time(ULONGLONG ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

ULONGLONG Ticks(const FILETIME& time) {
  return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

TEST(TimeContract, FileTimesAndCalendarTimesCorrespond) {
  struct Row {
    ULONGLONG ticks;
    SYSTEMTIME fields;
  };
  const Row rows[] = {
      {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
      {kUnixEpoch, {1970, 1, 4, 1, 0, 0, 0, 0}},
      {kUnixEpoch + 0x7FFFFFFFULL * 10'000'000, {2038, 1, 2, 19, 3, 14, 7, 0}},
      {125'963'423'990'010'000, {2000, 2, 2, 29, 23, 59, 59, 1}},
      {0x7FFF35F4F06C58F0, {30827, 12, 5, 31, 23, 59, 59, 999}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.ticks);
    const FILETIME time = Time(row.ticks);
    SYSTEMTIME fields{};
    ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
    EXPECT_EQ(fields.wYear, row.fields.wYear);
    EXPECT_EQ(fields.wMonth, row.fields.wMonth);
    EXPECT_EQ(fields.wDay, row.fields.wDay);
    EXPECT_EQ(fields.wDayOfWeek, row.fields.wDayOfWeek);
    EXPECT_EQ(fields.wHour, row.fields.wHour);
    EXPECT_EQ(fields.wMinute, row.fields.wMinute);
    EXPECT_EQ(fields.wSecond, row.fields.wSecond);
    EXPECT_EQ(fields.wMilliseconds, row.fields.wMilliseconds);
    FILETIME back;
    ASSERT_TRUE(SystemTimeToFileTime(&fields, &back));
    EXPECT_EQ(Ticks(back), row.ticks / 10'000 * 10'000);
  }
}

TEST(TimeContract, FieldsThatAreNoDateAreRefused) {
  if (UnderWine()) GTEST_SKIP() << "Wine takes days that a month doesn't have";
  const SYSTEMTIME rows[] = {
      {1600, 12, 0, 31, 0, 0, 0, 0},  {2001, 2, 0, 29, 0, 0, 0, 0}, {2001, 0, 0, 1, 0, 0, 0, 0},
      {2001, 13, 0, 1, 0, 0, 0, 0},   {2001, 1, 0, 0, 0, 0, 0, 0},  {2001, 4, 0, 31, 0, 0, 0, 0},
      {2001, 1, 0, 1, 24, 0, 0, 0},   {2001, 1, 0, 1, 0, 60, 0, 0}, {2001, 1, 0, 1, 0, 0, 60, 0},
      {2001, 1, 0, 1, 0, 0, 0, 1000}, {30828, 1, 0, 1, 0, 0, 0, 0},
  };
  for (const SYSTEMTIME& fields : rows) {
    FILETIME time;
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !SystemTimeToFileTime(&fields, &time));
  }
  SYSTEMTIME fields;
  const FILETIME negative = Time(0x8000'0000'0000'0000);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !FileTimeToSystemTime(&negative, &fields));
}

TEST(TimeContract, DosTimesCountEvenSecondsFrom1980) {
  FILETIME time;
  WORD date = 0;
  WORD clock = 0;
  ASSERT_TRUE(DosDateTimeToFileTime(0x0021, 0, &time));
  EXPECT_EQ(Ticks(time), kUnixEpoch + (10 * 365 + 2) * kDay);
  ASSERT_TRUE(DosDateTimeToFileTime(0xFF9F, 0xBF7D, &time));
  ASSERT_TRUE(FileTimeToDosDateTime(&time, &date, &clock));
  EXPECT_EQ(date, 0xFF9F);
  EXPECT_EQ(clock, 0xBF7D);
  const FILETIME before = Time(kUnixEpoch);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !FileTimeToDosDateTime(&before, &date, &clock));
  if (UnderWine()) return;  // it leaves no error
  struct Row {
    WORD date;
    WORD clock;
  };
  const Row bad[] = {{0, 0},      {0x0020, 0},      {0x0001, 0},      {0x01A1, 0},
                     {0x005F, 0}, {0x0021, 0xC000}, {0x0021, 0x0780}, {0x0021, 0x001E}};
  for (const Row& row : bad) {
    SCOPED_TRACE(testing::Message() << row.date << ' ' << row.clock);
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
