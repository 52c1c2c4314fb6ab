// BindingTest.cpp - the entry points themselves: handles, records, callbacks, one run at a time.
#include <thread>

#include "platform/win32/CodePages.h"
#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class EngineBinding : public EngineTest {
 protected:
  EngineBinding() {
    folder.WriteFile("x.lzh", RawArchive({{.name = "a.txt", .contents = "12345"},
                                          {.name = "b.txt", .extensions = {{0x02, "sub\xFF"}}}}));
  }
};

TEST(EngineModule, ModuleIsReallyUnloaded) {
  for (int i = 0; i < 2; ++i) {
    const Engine once;
    EXPECT_EQ(once.SetCursorMode(17), 0);  // a module that stayed loaded would remember
    const Engine counted;
    EXPECT_EQ(counted.SetCursorMode(18), 17);
  }
}

TEST_F(EngineBinding, RecordIsFilledWhole) {
  UnlhaMemberRecord record;
  std::fill_n(reinterpret_cast<std::uint8_t*>(&record), sizeof(record), std::uint8_t{0xEE});
  const HARC handle = Open("x.lzh");
  ASSERT_EQ(engine.FindFirst(handle, "a.txt", &record), 0);
  EXPECT_EQ(record.size, 5U);
  EXPECT_STREQ(record.name, "a.txt");
  EXPECT_EQ(record.name[533], 0);
  FILETIME local;
  FILETIME utc;
  ASSERT_TRUE(DosDateTimeToFileTime(record.date, record.time, &local));
  ASSERT_TRUE(LocalFileTimeToFileTime(&local, &utc));
  const std::uint64_t ticks =
      static_cast<std::uint64_t>(utc.dwHighDateTime) << 32 | utc.dwLowDateTime;
  EXPECT_EQ(ticks / 10000000 - 11644473600, 0x4B3D3B00U);
  EXPECT_EQ(engine.GetAttribute(handle), 0x20);
  EXPECT_EQ(engine.FindNext(handle, &record), -1);
  EXPECT_EQ(engine.GetAttribute(handle), -1);
  EXPECT_EQ(engine.CloseArchive(handle), 0);
}

TEST_F(EngineBinding, SeveralHandlesSearchOnTheirOwn) {
  const HARC below = Open("x.lzh");
  const HARC here = Open("x.lzh", kSearchHere);
  UnlhaMemberRecord record;
  EXPECT_EQ(engine.FindNext(below, &record), -1);  // nothing has been searched for
  EXPECT_EQ(engine.FindFirst(below, "*.txt", &record), 0);
  EXPECT_EQ(engine.FindFirst(here, "*.txt", &record), 0);
  EXPECT_EQ(engine.FindNext(here, &record), -1);
  EXPECT_EQ(engine.FindNext(below, &record), 0);
  EXPECT_STREQ(record.name, "sub\\b.txt");
  engine.CloseArchive(below);
  EXPECT_EQ(engine.FindFirst(here, "a.txt", &record), 0);
  engine.CloseArchive(here);
}

// A handle keeps the archive's file open, and calls by the same name use that.
TEST_F(EngineBinding, ArchiveIsReadAnewWhenItsNameMeansAnotherFile) {
  const HARC handle = Open("x.lzh");
  EXPECT_EQ(Extract("x.lzh", "a.txt").bytes, ToBytes("12345"));
  folder.WriteFile("y.lzh", RawArchive({{.name = "a.txt", .contents = "67890"}}));
  ASSERT_TRUE(MoveFileExA(folder.Lib("x.lzh").c_str(), folder.Lib("old.lzh").c_str(), 0));
  ASSERT_TRUE(MoveFileExA(folder.Lib("y.lzh").c_str(), folder.Lib("x.lzh").c_str(), 0));
  EXPECT_EQ(Extract("x.lzh", "a.txt").bytes, ToBytes("67890"));
  EXPECT_EQ(Delete("x.lzh", {"a.txt"}), 0);
  EXPECT_FALSE(Opens("x.lzh"));
  engine.CloseArchive(handle);
}

TEST_F(EngineBinding, HandlesThatAreNotOpenAreRefused) {
  const HARC handle = Open("x.lzh");
  engine.CloseArchive(handle);
  UnlhaMemberRecord record;
  for (const HARC bad : {handle, HARC{}, reinterpret_cast<HARC>(&record)}) {
    EXPECT_EQ(engine.FindFirst(bad, "*.*", &record), 0x8021);
    EXPECT_EQ(engine.FindNext(bad, &record), 0x8021);
    EXPECT_EQ(engine.GetAttribute(bad), -1);
    EXPECT_EQ(engine.CloseArchive(bad), 0x8021);
  }
  EXPECT_EQ(engine.OpenArchive(nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(engine.CheckArchive(nullptr, 1), 0);
  EXPECT_EQ(engine.Command(nullptr, nullptr, nullptr, 0), 0x801C);
}

TEST_F(EngineBinding, OpenHandleKeepsWhatItSawWhileTheArchiveChanges) {
  const HARC handle = Open("x.lzh");
  ASSERT_EQ(Compress("x.lzh", "c.txt", {}), 0);
  ASSERT_EQ(Delete("x.lzh", {"a.txt"}), 0);
  UnlhaMemberRecord record;
  EXPECT_EQ(engine.FindFirst(handle, "a.txt", &record), 0);
  EXPECT_NE(engine.FindFirst(handle, "c.txt", &record), 0);
  engine.CloseArchive(handle);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("sub\\b.txt", "c.txt"));
}

TEST_F(EngineBinding, ChangeFromOutsideIsNoticedThoughSizeAndTimeAreTheSame) {
  if (!Can(Ability::ChangingWithinATick)) GTEST_SKIP() << "too slow for two changes in one tick";
  bool isNoticed = false;
  for (int attempt = 0; attempt < 20 && !isNoticed; ++attempt) {  // the check may come too late
    const auto now = std::filesystem::file_time_type::clock::now();
    const auto namesOf = [&](const char* name) {
      folder.WriteFile("y.lzh", RawArchive({{.name = name}}));
      std::filesystem::last_write_time(folder.Path("y.lzh"), now);
      return Names("y.lzh");
    };
    const std::vector<std::string> before = namesOf("a.txt");
    isNoticed = namesOf("A.TXT") != before;
  }
  EXPECT_TRUE(isNoticed);
}

TEST_F(EngineBinding, ProgressComesInOrder) {
  MakeTree(folder, "src", {{"one", 600000}, {"two", 0}});
  std::vector<std::string> told;
  std::uint32_t lastDone = 0;
  Listen([&](UINT state, const UnlhaProgressRecord& record) {
    told.push_back(std::to_string(state) + " " + record.name);
    EXPECT_TRUE(state != 1 || record.done - lastDone <= 262144U);
    EXPECT_TRUE(state != 6 || record.done == record.size);
    lastDone = record.done;
    return 1;
  });
  ASSERT_EQ(Add("new.lzh", "src", {"one", "two"}), 0);
  EXPECT_THAT(told, ElementsAre("0 one", "1 one", "1 one", "1 one", "1 one", "6 one", "0 two",
                                "1 two", "6 two"));
  told.clear();
  ASSERT_EQ(Extract("new.lzh", "one").code, 0);
  EXPECT_EQ(told.front(), "0 one");
  EXPECT_EQ(told.back(), "6 one");
  EXPECT_GE(told.size(), 5U);
}

TEST_F(EngineBinding, LongNamesAreCutBehindAWholeCharacter) {
  std::string name = "n";
  while (name.size() < 530) name += "\x95\x5C";  // the 512th byte is a lead byte
  std::string told;
  Listen([&](UINT, const UnlhaProgressRecord& record) {
    told = record.name;
    return 1;
  });
  ASSERT_EQ(Compress("new.lzh", name, {}), 0);
  EXPECT_EQ(told, name.substr(0, 511));
}

TEST_F(EngineBinding, CancelAtAnyReportLeavesTheArchiveAsItWas) {
  MakeTree(folder, "src", {{"a.txt", 300000}, {"new", 300000}});
  const Bytes before = folder.ReadFile("x.lzh");
  const std::vector<std::string> runs[] = {{"new"}, {"a.txt", "new"}};  // in place, and rewritten
  for (const auto& names : runs) {
    for (int stopAt = 0;; ++stopAt) {
      folder.WriteFile("x.lzh", before);
      int reports = 0;
      Listen([&](UINT, const UnlhaProgressRecord&) { return reports++ == stopAt ? 0 : 1; });
      const int code = Add("x.lzh", "src", names);
      if (code == 0) {
        EXPECT_GT(stopAt, 4);
        break;
      }
      ASSERT_EQ(code, 0x8020);
      EXPECT_EQ(reports, stopAt + 1);
      ASSERT_TRUE(SameBytes(folder.ReadFile("x.lzh"), before)) << stopAt;
      EXPECT_THAT(Temporaries(), ElementsAre());
    }
  }
  Listen([&](UINT state, const UnlhaProgressRecord& record) {
    return state == 1 && record.done != 0 ? 0 : 1;
  });
  EXPECT_EQ(Delete("x.lzh", {"new"}), 0x8020);
  EXPECT_EQ(Extract("x.lzh", "new").code, 0x8020);
}

int WINAPI AlwaysGoOn(HWND, UINT, UINT, void*) {
  return 1;
}

TEST_F(EngineBinding, OneRunAtATime) {
  int inside = 0;
  std::thread::id thread;
  Listen([&](UINT state, const UnlhaProgressRecord&) {
    if (state != 0) return 1;
    thread = std::this_thread::get_id();
    EXPECT_NE(engine.GetRunning(), 0);
    EXPECT_EQ(engine.SetOwnerWindowEx(nullptr, AlwaysGoOn), 0);
    inside = Delete("x.lzh", {"a.txt"});
    return 1;
  });
  ASSERT_EQ(Compress("new.lzh", "n", {}), 0);
  EXPECT_EQ(inside, 0x801F);
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(engine.GetRunning(), 0);
}

TEST_F(EngineBinding, NamesInBothCodePages) {
  // The same character in 932 and in UTF-8; its second byte in 932 is 0x5C.
  ASSERT_EQ(Compress("j.lzh", "\x95\x5C\\\x95\x5C.txt", ToBytes("text")), 0);
  EXPECT_THAT(Names("j.lzh"), ElementsAre("\x95\x5C\\\x95\x5C.txt"));
  ASSERT_EQ(KzSetActiveCodePage(65001), 1);
  EXPECT_THAT(Names("j.lzh"), ElementsAre("\xE8\xA1\xA8\\\xE8\xA1\xA8.txt"));
  EXPECT_EQ(Extract("j.lzh", "\xE8\xA1\xA8\\\xE8\xA1\xA8.TXT").bytes, ToBytes("text"));
  EXPECT_EQ(Compress("j.lzh", "\xED\x95\x9C", ToBytes("hangul")), 0);
  EXPECT_EQ(Extract("j.lzh", "\xED\x95\x9C").bytes, ToBytes("hangul"));
  ASSERT_EQ(KzSetActiveCodePage(932), 1);
  EXPECT_THAT(Names("j.lzh"), ElementsAre("\x95\x5C\\\x95\x5C.txt", "_"));
  EXPECT_EQ(Extract("j.lzh", "_").bytes, ToBytes("hangul"));
}

TEST_F(EngineBinding, LinesOfEveryShape) {
  const std::string path = folder.Lib("x.lzh");
  std::uint8_t buffer[5];
  std::uint32_t written = 0;
  const std::string lines[] = {
      path + " a.txt",
      "  -+ -gm1 -n  \"" + path + "\"   \"a.txt\"  ",
      "\"-wC:\\with blank\\\" -unknown -o7 " + path + " a\".t\"xt",
      "\t" + path + "\ta.txt",
  };
  for (const std::string& line : lines) {
    EXPECT_EQ(engine.ExtractMem(nullptr, line.c_str(), buffer, 5, nullptr, nullptr, &written), 0)
        << line;
    EXPECT_EQ(written, 5U);
  }
  EXPECT_EQ(engine.ExtractMem(nullptr, path.c_str(), buffer, 5, nullptr, nullptr, nullptr), 0x802B);
  EXPECT_EQ(engine.ExtractMem(nullptr, "-n", buffer, 5, nullptr, nullptr, nullptr), 0x802B);
  EXPECT_EQ(Command("l " + path), 0x801C);
}

}  // namespace
}  // namespace kozor::test
