// MemoryTest.cpp - the calls on one member, CompressMem, ExtractMem and GetFileInfo; and IsArchive.
#include <ctime>
#include <limits>
#include <utility>

#include "RecordedArchive.h"
#include "platform/base/Clock.h"

namespace kozor::test {
namespace {

class ArchiveMemory : public ArchiveRecorded {
 protected:
  ArchiveMemory() { recording.members = {{.name = "d\\f.txt", .contents = "hello"}}; }

  ZorError Compress(const char* name) {
    const auto* data = reinterpret_cast<const unsigned char*>("data");
    return ErrorOf(archive.CompressMem(path.c_str(), name, data, 4, 1));
  }
  ZorError Extract(const char* name = "d\\f.txt") {
    return ErrorOf(archive.ExtractMem(path.c_str(), name, buffer, sizeof buffer));
  }
  ZorError GetInfo(unsigned long* size, FILETIME* time, unsigned long* attribute) {
    return ErrorOf(archive.GetFileInfo(path.c_str(), "d\\f.txt", size, time, attribute));
  }

  unsigned char buffer[8] = {};
};

TEST_F(ArchiveMemory, GivesTheArchiverDataNameAndOptions) {
  EXPECT_EQ(Compress("g.txt"), ZorErrorNone);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("GetRunning", "SetOwnerWindowEx", "SetCursorMode 0",
                          "OpenArchive #\\a.lzh 0x801202", "FindFirst *.*", "CloseArchive",
                          "OnAbort 0 0 0/1 0/0 '#\\a.lzh' -",
                          "CompressMem data 4:" + kOptions + " -w0 \"#\\a.lzh\" \"g.txt\"",
                          "OnAbort 0 4 0/1 0/0 '#\\a.lzh' -", "KillOwnerWindowEx"));
  archive.SetBackgroundMode(0);
  archive.SetWorkDirectory("C:\\tmp");
  EXPECT_EQ(ErrorOf(archive.CompressMem(path.c_str(), "C:\\g", nullptr, 0, 0)), ZorErrorNone);
  EXPECT_THAT(TakeCalls("CompressMem "),
              ElementsAre("null 0:" + kOptions + " -jsb \"-wC:\\tmp\\\" \"#\\a.lzh\" \"C:\\g\""));
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(ArchiveMemory, RefusesToReplaceAMemberUnlessItMay) {
  EXPECT_EQ(Compress("D\\F.TXT"), ZorErrorSameName);
  EXPECT_THAT(TakeCalls("OnAbort"), IsEmpty());
  EXPECT_EQ(Compress("C:\\d\\f.txt"), ZorErrorNone);  // stored as "\d\f.txt"
  archive.SetOverwriteMode(1);
  EXPECT_EQ(Compress("d\\f.txt"), ZorErrorNone);
  archive.SetOverwriteMode(0);
  std::filesystem::remove(folder.Path("a.lzh"));
  EXPECT_EQ(Compress("g"), ZorErrorNone);  // nothing to compare with
}

TEST_F(ArchiveMemory, RefusesMoreDataThanAMemberCanHold) {
  if constexpr (sizeof(unsigned long) <= 4) GTEST_SKIP() << "`long` can't count that far here";
  const auto size = static_cast<unsigned long>(std::numeric_limits<std::uint32_t>::max());
  EXPECT_EQ(ErrorOf(archive.CompressMem(path.c_str(), "g", buffer, size + 1, 0)),
            ZorErrorFileFailure);
  EXPECT_TRUE(folder.Exists("a.lzh"));
}

TEST_F(ArchiveMemory, UnpacksOneMemberAndReportsItByName) {
  recording.reports = {{1, 2, 5, ""}};
  EXPECT_EQ(Extract(), ZorErrorNone);
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

TEST_F(ArchiveMemory, NeedsTheMember) {
  EXPECT_EQ(Extract("none"), ZorErrorArchiveOpen);
  EXPECT_THAT(TakeCalls("CloseArchive"), ElementsAre(""));
  unsigned long size = 77;
  EXPECT_EQ(ErrorOf(archive.GetFileInfo(path.c_str(), "none", &size, nullptr, nullptr)),
            ZorErrorArchiveOpen);
  EXPECT_EQ(size, 77U);
  recording.archivesThatOpen = 0;
  EXPECT_EQ(Extract(), ZorErrorArchiveOpen);
}

TEST_F(ArchiveMemory, TellsOfAMemberInTheTermsOfTheSystem) {
  SetTimeZone("JST-9");
  archive.SetBackgroundMode(0);
  unsigned long size = 0;
  unsigned long attribute = 0;
  FILETIME time{};
  EXPECT_EQ(GetInfo(&size, &time, &attribute), ZorErrorNone);
  std::tm local{};  // 0x2E45, 0x6000: 2003-02-05 12:00
  local.tm_year = 103;
  local.tm_mon = 1;
  local.tm_mday = 5;
  local.tm_hour = 12;
  const std::int64_t seconds = std::mktime(&local);
  SetTimeZone(nullptr);
  EXPECT_EQ(size, 5U);
  EXPECT_EQ(attribute, 0x20U);
  EXPECT_EQ(UnixOfFileTime(Ticks(time)), seconds);
  EXPECT_THAT(TakeCalls(),
              ElementsAre("GetRunning", "SetCursorMode 0", "OpenArchive #\\a.lzh 0x801006",
                          "FindFirst \"d\\f.txt\"", "GetAttribute", "CloseArchive"));
}

TEST_F(ArchiveMemory, TranslatesTheAttributesItKnows) {
  const std::pair<int, unsigned long> rows[] = {
      {0x08, 0x80}, {0, 0x80}, {0x27, 0x27}, {0xFF, 0x37}, {-1, 77}};
  for (const auto& [archivers, expected] : rows) {
    recording.members[0].attribute = archivers;
    unsigned long attribute = 77;
    EXPECT_EQ(GetInfo(nullptr, nullptr, &attribute), ZorErrorNone);
    EXPECT_EQ(attribute, expected);
  }
  recording.busy = true;
  EXPECT_EQ(GetInfo(nullptr, nullptr, nullptr), ZorErrorEngineBusy);
  std::filesystem::remove(folder.Path("a.lzh"));
  EXPECT_EQ(GetInfo(nullptr, nullptr, nullptr), ZorErrorArchiveNotFound);
}

TEST_F(ArchiveMemory, IsArchiveReturnsWhatTheArchiverSaysEvenIfItIsAtWork) {
  recording.busy = true;
  recording.checkResult = 7;
  EXPECT_EQ(archive.IsArchive("C:\\none.lzh"), 7);
  EXPECT_THAT(TakeCalls(), ElementsAre("SetCursorMode 0", "CheckArchive C:\\none.lzh 1"));
}

}  // namespace
}  // namespace kozor::test
