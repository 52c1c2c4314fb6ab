// FileTimesTest.cpp - last-write times in several time zones, and attributes.
#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "ZorFileServices.h"
#include "tests/support/Ability.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

class FilesFileTimes : public testing::Test {
 protected:
  FilesFileTimes() { folder.WriteFile("file", ""); }

  TestFolder folder;
  std::string path = folder.Lib("file");
};

// Zones east and west, with daylight saving, with a different standard time in the past (London
// 1970), with half an hour of saving, and one that skipped a day.
TEST_F(FilesFileTimes, AreTheSameInEveryZone) {
  for (const char* zone : {"UTC", "Asia/Tokyo", "Europe/London", "America/New_York",
                           "Australia/Lord_Howe", "Pacific/Apia", "XYZ-14", "XYZ12"}) {
    SetTimeZone(zone);
    for (const long time : {0L, 1L, 32'399L, 32'400L, 954'637'200L, 1'143'939'599L, 1'325'239'200L,
                            1'711'846'799L, 1'711'846'800L, 0x7FFFFFFFL}) {
      ASSERT_TRUE(ZorSetFileTimeStamp(path.c_str(), time)) << zone << ' ' << time;
      EXPECT_EQ(folder.GetTime("file"), time) << zone;
      long read = -1;
      EXPECT_TRUE(ZorGetFileTimeStamp(path.c_str(), read)) << zone << ' ' << time;
      EXPECT_EQ(read, time) << zone;
    }
  }
  SetTimeZone(nullptr);
}

TEST_F(FilesFileTimes, OutOfRangeFailAndChangeNothing) {
  folder.SetTime("file", 5000);
  for (const std::int64_t time : {-1LL, -2'000'000'000LL, 0x80000000LL}) {
    if (!std::in_range<long>(time)) continue;
    EXPECT_FALSE(ZorSetFileTimeStamp(path.c_str(), static_cast<long>(time)));
  }
  EXPECT_EQ(folder.GetTime("file"), 5000);
  for (const std::int64_t time : {-1LL, -3'000'000'000LL, 0x80000000LL}) {
    folder.SetTime("file", time);
    long read = 99;
    EXPECT_FALSE(ZorGetFileTimeStamp(path.c_str(), read)) << time;
    EXPECT_EQ(read, 99);
  }
}

TEST_F(FilesFileTimes, AreReadOfWhatASearchFindsFirst) {
  using namespace std::chrono;
  folder.WriteFile("dir/file", "");
  folder.SetTime("dir", 6000);
  fs::last_write_time(folder.Path("file"), file_clock::from_sys(sys_time<milliseconds>(5999ms)));
  long time = 0;
  EXPECT_TRUE(ZorGetFileTimeStamp(folder.Lib("dir").c_str(), time));
  EXPECT_EQ(time, 6000);
  EXPECT_TRUE(ZorGetFileTimeStamp(folder.Lib("f*").c_str(), time));
  EXPECT_EQ(time, 5) << "parts of a second are dropped";
  EXPECT_FALSE(ZorGetFileTimeStamp("C:\\", time));
  EXPECT_FALSE(ZorGetFileTimeStamp(folder.Lib("none").c_str(), time));
  EXPECT_EQ(time, 5);
}

TEST_F(FilesFileTimes, AreNotSetWhereWritingIsRefused) {
  folder.SetTime("file", 5000);
  EXPECT_FALSE(ZorSetFileTimeStamp(folder.Lib().c_str(), 1));
  {
    CFile open(path.c_str(), CFile::modeRead | CFile::shareExclusive);
    EXPECT_FALSE(ZorSetFileTimeStamp(path.c_str(), 1));
  }
  ASSERT_TRUE(ZorSetFileAttribute(path.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_FALSE(ZorSetFileTimeStamp(path.c_str(), 1));
  EXPECT_EQ(folder.GetTime("file"), 5000);
}

TEST_F(FilesFileTimes, AttributesOfAPlainFileAreZero) {
  const unsigned int kept = Can(Ability::KeepingAttributes) ? ~0x80U : FILE_ATTRIBUTE_READONLY;
  unsigned int read = 99;
  for (const unsigned int attribute : {0x26u, 0x00u, 0x23u, 0x80u}) {
    ASSERT_TRUE(ZorSetFileAttribute(path.c_str(), attribute));
    EXPECT_TRUE(ZorGetFileAttribute(path.c_str(), read));
    EXPECT_EQ(read & kept, attribute & kept);
  }
  EXPECT_FALSE(ZorGetFileAttribute("C:\\", read));
  EXPECT_FALSE(ZorSetFileAttribute(folder.Lib("none").c_str(), 0));
  EXPECT_EQ(read & kept, 0u);
}

}  // namespace
}  // namespace kozor::test
