// PackingTest.cpp - how members are packed: on several threads, by switches and by default switches
// of the environment.
#include <cstdlib>
#include <tuple>

#include "tests/engine/EngineFixture.h"

namespace kozor::test {
namespace {

class EnginePacking : public EngineTest {
 protected:
  EnginePacking() { SetDefaults(""); }
  ~EnginePacking() override { SetEnvironment("KOZOR_ARCHIVER", nullptr); }

  static void SetDefaults(const char* switches) { SetEnvironment("KOZOR_ARCHIVER", switches); }

  // Enough for segments and threads: one file of several segments, one that does not pack, empty
  // ones, and many small ones around them.
  void MakeManyFiles() {
    for (std::uint32_t i = 0; i < 60; ++i) {
      names.push_back("small" + std::to_string(i));
      folder.WriteFile("src/" + names.back(), TextBytes(i * 300U, i + 1));
    }
    folder.WriteFile("src/large", TextBytes(1900000));
    folder.WriteFile("src/noise", RandomBytes(1300000));
    folder.WriteFile("src/exact", TextBytes(2 * 524288, 9));
    names.insert(names.begin() + 20, {"large", "noise", "exact"});
  }

  Bytes Packed(const std::string& switches) {
    std::filesystem::remove(folder.Path("x.lzh"));
    EXPECT_EQ(Add("x.lzh", "src", names, switches), 0) << switches;
    return folder.ReadFile("x.lzh");
  }

  std::vector<std::string> names;
};

TEST_F(EnginePacking, NumberOfThreadsChangesNoByteAndNoReport) {
  MakeManyFiles();
  using Report = std::tuple<UINT, std::string, std::uint32_t>;
  std::vector<Report> reports;
  Listen([&](UINT state, const UnlhaProgressRecord& record) {
    reports.emplace_back(state, record.name, record.done);
    return 1;
  });
  for (const std::string method : {"-o5", "-o7 -ol2", "-o6 -ol7", "-z1"}) {
    reports.clear();
    const Bytes expected = Packed(method + " -j1");
    const std::vector<Report> expectedReports = std::exchange(reports, {});
    EXPECT_GT(expectedReports.size(), 3 * names.size());
    for (const char* threads : {" -j2", " -j7", ""}) {
      EXPECT_TRUE(SameBytes(Packed(method + threads), expected)) << method << threads;
      EXPECT_EQ(std::exchange(reports, {}), expectedReports) << method << threads;
    }
    for (const std::string& name : names) {
      EXPECT_TRUE(SameBytes(Extract("x.lzh", name).bytes, folder.ReadFile("src/" + name))) << name;
    }
  }
  const Bytes data = folder.ReadFile("src/large");
  ASSERT_EQ(Compress("memory.lzh", "large", data), 0);
  EXPECT_TRUE(SameBytes(Extract("memory.lzh", "large").bytes, data));
}

TEST_F(EnginePacking, CancelAndFailureComeInTheirTurn) {
  MakeManyFiles();
  ASSERT_EQ(Compress("x.lzh", "old", TextBytes(5000)), 0);
  const Bytes before = folder.ReadFile("x.lzh");
  std::size_t reports = 0;
  std::size_t stopAt = 0;
  std::string lastName;
  Listen([&](UINT, const UnlhaProgressRecord& record) {
    lastName = record.name;
    return ++reports == stopAt ? 0 : 1;
  });
  for (stopAt = 1; stopAt < 200; stopAt += 17) {
    reports = 0;
    EXPECT_EQ(Add("x.lzh", "src", names, "-w0 -j3"), 0x8020);
    EXPECT_EQ(reports, stopAt);
    ASSERT_TRUE(SameBytes(folder.ReadFile("x.lzh"), before)) << stopAt;
  }
  stopAt = 0;

  // A file locked by others: all files before it are reported, none after it.
  const HANDLE held = CreateFileA(folder.Lib("src/small40").c_str(), GENERIC_READ, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_EQ(Add("x.lzh", "src", names, "-w0 -j3"), 0x800D);
  EXPECT_EQ(lastName, "small39");
  CloseHandle(held);
  EXPECT_TRUE(SameBytes(folder.ReadFile("x.lzh"), before));
  EXPECT_THAT(Temporaries(), IsEmpty());
}

TEST_F(EnginePacking, SwitchesChooseMethodAndLevel) {
  names = {"noise"};
  folder.WriteFile("src/noise", RandomBytes(1300000));
  Packed("-o5");
  EXPECT_EQ(MethodOfFirstMember(), "-lh0-");  // it doesn't pack
  names = {"text"};
  folder.WriteFile("src/text", TextBytes(200000));
  for (const std::string digit : {"1", "5", "6", "7"}) {
    Packed("-o" + digit);
    EXPECT_EQ(MethodOfFirstMember(), "-lh" + digit + "-");
  }
  const std::size_t fastest = Packed("-ol1").size();
  const std::size_t byDefault = Packed("").size();
  const std::size_t smallest = Packed("-ol9").size();
  EXPECT_LT(byDefault, fastest);
  EXPECT_LT(smallest, byDefault);
  for (const char* nonsense :
       {"-ol0", "-ol10", "-olx", "-ol", "-j0", "-j-1", "-jx", "-j9999999999"}) {
    EXPECT_EQ(Packed(nonsense).size(), byDefault) << nonsense;
  }
}

TEST_F(EnginePacking, EnvironmentHoldsDefaultSwitches) {
  names = {"text"};
  folder.WriteFile("src/text", TextBytes(200000));
  SetDefaults(" -o7  -ol9 -x -ol0 -w/nowhere a \"b c");
  const std::size_t smallest = Packed("").size();
  EXPECT_EQ(MethodOfFirstMember(), "-lh7-");
  EXPECT_GT(Packed("-ol1").size(), smallest);
  EXPECT_EQ(MethodOfFirstMember(), "-lh7-");
  Packed("-o1");
  EXPECT_EQ(MethodOfFirstMember(), "-lh1-");
  EXPECT_TRUE(SameBytes(Extract("x.lzh", "text").bytes, folder.ReadFile("src/text")));
  SetDefaults("-z1");
  ASSERT_EQ(Compress("memory.lzh", "text", TextBytes(100)), 0);
  EXPECT_GT(folder.ReadFile("memory.lzh").size(), 100U);
}

}  // namespace
}  // namespace kozor::test
