// ScaleTest.cpp - many members: the cost of each call must not grow with what the archive holds.
#include <gmock/gmock.h>
#include <time.h>

#include "tests/engine/EngineFixture.h"

namespace kozor::test {
namespace {

// Processor time of this thread in seconds.
double ThreadSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

std::string NameOf(int i) {
  return "dir" + std::to_string(i % 100) + "\\member" + std::to_string(i);
}

class ScaleTest : public EngineTest {
 protected:
  // Seconds for `count` calls beginning with the call of number `first`.
  template <typename Call>
  double Time(int first, int count, Call call) {
    const double start = ThreadSeconds();
    for (int i = first; i < first + count; ++i) call(i);
    return ThreadSeconds() - start;
  }
};

TEST_F(ScaleTest, OneCallPerMemberCostsTheSameAtTheEndAsAtTheBegin) {
  constexpr int kMembers = 4000;
  constexpr int kPart = kMembers / 10;
  const auto add = [&](int i) { ASSERT_EQ(Compress("x.lzh", NameOf(i), TextBytes(50)), 0); };
  const double firstPart = Time(0, kPart, add);
  Time(kPart, kMembers - 2 * kPart, add);
  const double lastPart = Time(kMembers - kPart, kPart, add);
  EXPECT_LT(lastPart, firstPart * 4 + 0.2);
  EXPECT_EQ(Names("x.lzh").size(), std::size_t{kMembers});

  const auto extract = [&](int i) { ASSERT_EQ(Extract("x.lzh", NameOf(i)).code, 0); };
  EXPECT_LT(Time(kMembers - kPart, kPart, extract), firstPart * 4 + 0.2);
}

TEST_F(ScaleTest, TenThousandMembersInOneCall) {
  constexpr int kMembers = 10000;
  std::vector<std::string> names;
  std::string response;
  for (int i = 0; i < kMembers; ++i) {
    const std::string name = "f" + std::to_string(i);
    folder.WriteFile("src/" + name, name);
    names.push_back(name);
    response += '"' + name + "\"\n";
  }
  folder.WriteFile("names.rsp", response);
  const std::string operand = "@" + folder.Lib("names.rsp");
  const double start = ThreadSeconds();
  ASSERT_EQ(Add("x.lzh", "src", {operand}), 0);
  const double added = ThreadSeconds() - start;
  EXPECT_EQ(Names("x.lzh"), names);
  ASSERT_EQ(Add("x.lzh", "src", {operand}), 0);  // all of them replaced
  EXPECT_EQ(Names("x.lzh"), names);
  ASSERT_EQ(Delete("x.lzh", std::vector<std::string>(names.begin() + 1, names.end())), 0);
  EXPECT_THAT(Names("x.lzh"), testing::ElementsAre("f0"));
  EXPECT_LT(ThreadSeconds() - start, added * 6 + 1);
}

}  // namespace
}  // namespace kozor::test
