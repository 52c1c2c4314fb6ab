// MemoryTest.cpp - CompressMem, ExtractMem and GetFileInfo.
#include <cstdlib>
#include <ctime>
#include <limits>

#include "RecordedArchive.h"

namespace kozor::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class Memory : public RecordedArchiveTest {
 protected:
  Memory() : path(folder.Lib("a.lzh")) {
    folder.WriteFile("a.lzh", "old");
    recording.members = {{.name = "d\\f.txt", .contents = "hello"}};
  }
  int Compress(const char* name, int append) {
    return archive.CompressMem(path.c_str(), name, reinterpret_cast<const unsigned char*>("data"),
                               4, append);
  }

  const std::string path;
  unsigned char buffer[8] = {};
};

TEST_F(Memory, GivesTheArchiverDataNameAndOptions) {
  EXPECT_EQ(Compress("g.txt", 1), 1);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("GetRunning", "SetOwnerWindowEx", "SetCursorMode 0",
                          "OpenArchive #\\a.lzh 0x801202", "FindFirst *.*", "CloseArchive",
                          "OnAbort 0 0 0/1 0/0 '#\\a.lzh' -",
                          "CompressMem data 4:" + kOptions + " -w0 \"#\\a.lzh\" \"g.txt\"",
                          "OnAbort 0 4 0/1 0/0 '#\\a.lzh' -", "KillOwnerWindowEx"));
  archive.SetBackgroundMode(0);
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(archive.CompressMem(path.c_str(), "C:\\g", nullptr, 0, 0), 1);
  EXPECT_THAT(TakeCalls("CompressMem "),
              ElementsAre("null 0:" + kOptions + " -jsb \"-wC:\\tmp\\\" \"#\\a.lzh\" \"C:\\g\""));
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(Memory, RefusesToReplaceAMemberUnlessItMay) {
  for (const char* name : {"D\\F.TXT", "d\\f.txt"}) {
    EXPECT_EQ(Compress(name, 1), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorSameName);
    EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  }
  EXPECT_EQ(Compress("C:\\d\\f.txt", 1), 1);  // would be "\d\f.txt"
  archive.SetOverwriteMode(1);
  EXPECT_EQ(Compress("d\\f.txt", 1), 1);
  archive.SetOverwriteMode(0);
  recording.archivesThatOpen = 0;
  EXPECT_EQ(Compress("g", 1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
  std::filesystem::remove(folder.Path("a.lzh"));
  EXPECT_EQ(Compress("g", 1), 1);  // nothing to compare with
}

TEST_F(Memory, RefusesMoreDataThanAMemberCanHold) {
  if constexpr (sizeof(unsigned long) <= 4) GTEST_SKIP() << "`long` can't count that far here";
  const auto size = static_cast<unsigned long>(std::numeric_limits<std::uint32_t>::max());
  EXPECT_EQ(archive.CompressMem(path.c_str(), "g", buffer, size + 1, 0), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileFailure);
  EXPECT_TRUE(folder.Exists("a.lzh"));
}

TEST_F(Memory, UnpacksOneMemberAndReportsItByName) {
  recording.reports = {{1, 2, 5, ""}};
  EXPECT_EQ(archive.ExtractMem(path.c_str(), "d\\f.txt", buffer, sizeof buffer), 1);
  EXPECT_STREQ(reinterpret_cast<const char*>(buffer), "hello");
  const std::string member = " 'd\\f.txt' 'd\\f.txt' 5 2e45 6000 20";
  EXPECT_THAT(TakeCalls(),
              ElementsAre("GetRunning", "SetCursorMode 0", "SetOwnerWindowEx",
                          "OnAbort 1 0 0/1 0/0 '#\\a.lzh' -", "OpenArchive #\\a.lzh 0x801002",
                          "FindFirst \"d\\f.txt\"", "GetAttribute", "CloseArchive",
                          "OnAbort 1 1 0/1 0/5 '#\\a.lzh'" + member,
                          "ExtractMem 8:" + kOptions + " \"#\\a.lzh\" \"d\\f.txt\"",
                          "OnAbort 1 2 0/1 2/5 '#\\a.lzh'" + member,
                          "OnAbort 1 3 1/1 5/5 '#\\a.lzh'" + member,
                          "OnAbort 1 4 1/1 5/5 '#\\a.lzh'" + member, "KillOwnerWindowEx"));
}

TEST_F(Memory, StopsInEachPhaseOfAMember) {
  for (const int phase : {1, 3}) {
    archive.stopInPhase = phase;
    std::fill(std::begin(buffer), std::end(buffer), '\0');
    EXPECT_EQ(archive.ExtractMem(path.c_str(), "d\\f.txt", buffer, sizeof buffer), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer), phase == 1 ? "" : "hello");
  }
}

TEST_F(Memory, NeedsTheMember) {
  EXPECT_EQ(archive.ExtractMem(path.c_str(), "none", buffer, sizeof buffer), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
  EXPECT_THAT(TakeCalls("CloseArchive"), ElementsAre(""));
  unsigned long size = 77;
  EXPECT_EQ(archive.GetFileInfo(path.c_str(), "none", &size, nullptr, nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
  EXPECT_EQ(size, 77U);
  recording.archivesThatOpen = 0;
  EXPECT_EQ(archive.ExtractMem(path.c_str(), "d\\f.txt", buffer, sizeof buffer), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveOpen);
}

TEST_F(Memory, TellsOfAMemberInTheTermsOfTheSystem) {
  setenv("TZ", "JST-9", 1);
  tzset();
  archive.SetBackgroundMode(0);
  unsigned long size = 0;
  unsigned long attribute = 0;
  FILETIME time{};
  EXPECT_EQ(archive.GetFileInfo(path.c_str(), "d\\f.txt", &size, &time, &attribute), 1);
  unsetenv("TZ");
  tzset();
  EXPECT_EQ(size, 5U);
  EXPECT_EQ(attribute, 0x20U);
  SYSTEMTIME utc{};
  FileTimeToSystemTime(&time, &utc);
  EXPECT_EQ(utc.wYear * 10000 + utc.wMonth * 100 + utc.wDay, 20030205);  // of 0x2E45, 0x6000
  EXPECT_EQ(utc.wHour, 12 - 9);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("GetRunning", "SetCursorMode 0", "OpenArchive #\\a.lzh 0x801006",
                          "FindFirst \"d\\f.txt\"", "GetAttribute", "CloseArchive"));
}

TEST_F(Memory, TranslatesTheAttributesItKnows) {
  const struct {
    int archivers;
    unsigned long attribute;
  } rows[] = {{0x08, 0x80}, {0, 0x80}, {0x27, 0x27}, {0xFF, 0x37}, {-1, 77}};
  for (const auto& row : rows) {
    recording.members[0].attribute = row.archivers;
    unsigned long attribute = 77;
    EXPECT_EQ(archive.GetFileInfo(path.c_str(), "d\\f.txt", nullptr, nullptr, &attribute), 1);
    EXPECT_EQ(attribute, row.attribute);
  }
  TakeCalls();
  EXPECT_EQ(archive.GetFileInfo(path.c_str(), "d\\f.txt", nullptr, nullptr, nullptr), 1);
  EXPECT_THAT(TakeCalls("GetAttribute"), IsEmpty());
  recording.busy = true;
  EXPECT_EQ(archive.GetFileInfo(path.c_str(), "d\\f.txt", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngineBusy);
  EXPECT_EQ(archive.GetFileInfo(Lib("none").c_str(), "x", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveNotFound);
}

}  // namespace
}  // namespace kozor::test
