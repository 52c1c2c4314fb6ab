// FileTimesTest.cpp - last-write times in every zone, and attributes.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

#include "ZorFileServices.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::TestFolder;

// The process's time zone for the length of a test.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) {
    if (const char* value = std::getenv("TZ")) before = value;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ZoneScope() {
    before ? setenv("TZ", before->c_str(), 1) : unsetenv("TZ");
    tzset();
  }
  ZoneScope(const ZoneScope&) = delete;
  ZoneScope& operator=(const ZoneScope&) = delete;

 private:
  std::optional<std::string> before;
};

class FileTimes : public testing::Test {
 protected:
  void SetUp() override { folder.WriteFile("file", ""); }

  TestFolder folder;
  std::string path = folder.Lib("file");
};

// Zones east and west, with daylight saving, with a standard time that was another in the past
// (London 1970), with half an hour of saving, and one that skipped a day.
TEST_F(FileTimes, AreTheSameInEveryZone) {
  const long times[] = {0,
                        1,
                        32'399,
                        32'400,
                        7'000'000,
                        954'637'200,
                        1'143'939'599,
                        1'325'239'200,
                        1'711'846'800,
                        1'711'846'799,
                        0x7FFFFFFF};
  for (const char* zone : {"UTC", "Asia/Tokyo", "Europe/London", "America/New_York",
                           "Australia/Lord_Howe", "Pacific/Apia", "XYZ-14", "XYZ12"}) {
    const ZoneScope scope(zone);
    for (const long time : times) {
      ASSERT_TRUE(ZorSetFileTimeStamp(path.c_str(), time)) << zone << ' ' << time;
      EXPECT_EQ(folder.GetTime("file"), time) << zone;
      long read = -1;
      EXPECT_TRUE(ZorGetFileTimeStamp(path.c_str(), read)) << zone << ' ' << time;
      EXPECT_EQ(read, time) << zone;
    }
  }
}

TEST_F(FileTimes, OutOfRangeFailAndChangeNothing) {
  folder.SetTime("file", 1'000'000'000);
  for (const long time : {-1L, -2'000'000'000L, 0x80000000L}) {
    EXPECT_FALSE(ZorSetFileTimeStamp(path.c_str(), time));
  }
  EXPECT_EQ(folder.GetTime("file"), 1'000'000'000);
  for (const long time : {-1L, -3'000'000'000L, 0x80000000L}) {
    folder.SetTime("file", time);
    long read = 99;
    EXPECT_FALSE(ZorGetFileTimeStamp(path.c_str(), read)) << time;
    EXPECT_EQ(read, 99);
  }
}

TEST_F(FileTimes, DropPartsOfASecond) {
  std::filesystem::last_write_time(
      folder.Path("file"),
      std::chrono::file_clock::from_sys(std::chrono::sys_time<std::chrono::milliseconds>(
          std::chrono::milliseconds(1'234'567'890'999))));
  long time = 0;
  EXPECT_TRUE(ZorGetFileTimeStamp(path.c_str(), time));
  EXPECT_EQ(time, 1'234'567'890);
}

TEST_F(FileTimes, AreReadOfDirectoriesAndFirstMatchesButNotOfRoots) {
  folder.WriteFile("dir/file", "");
  folder.SetTime("file", 5000);
  folder.SetTime("dir", 6000);
  long time = 0;
  EXPECT_TRUE(ZorGetFileTimeStamp(folder.Lib("dir").c_str(), time));
  EXPECT_EQ(time, 6000);
  EXPECT_TRUE(ZorGetFileTimeStamp(folder.Lib("f*").c_str(), time));
  EXPECT_EQ(time, 5000);
  EXPECT_FALSE(ZorGetFileTimeStamp("C:\\", time));
  EXPECT_FALSE(ZorGetFileTimeStamp(folder.Lib("none").c_str(), time));
  EXPECT_EQ(time, 5000);
}

TEST_F(FileTimes, AreNotSetWhereWritingIsRefused) {
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

TEST_F(FileTimes, AttributesOfAPlainFileAreZero) {
  for (const unsigned int attribute : {0x01u, 0x26u, 0x20u, 0x00u, 0x23u, 0x80u}) {
    ASSERT_TRUE(ZorSetFileAttribute(path.c_str(), attribute));
    unsigned int read = 99;
    EXPECT_TRUE(ZorGetFileAttribute(path.c_str(), read));
    EXPECT_EQ(read, attribute & ~0x80u);
  }
  unsigned int read = 99;
  EXPECT_FALSE(ZorGetFileAttribute("C:\\", read));
  EXPECT_FALSE(ZorGetFileAttribute(folder.Lib("none").c_str(), read));
  EXPECT_FALSE(ZorSetFileAttribute(folder.Lib("none").c_str(), 0));
  EXPECT_EQ(read, 99u);
  EXPECT_TRUE(ZorGetFileAttribute(folder.Lib().c_str(), read));
  EXPECT_EQ(read, static_cast<unsigned int>(FILE_ATTRIBUTE_DIRECTORY));
}

}  // namespace
