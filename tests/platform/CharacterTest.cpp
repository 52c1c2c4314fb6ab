// CharacterTest.cpp - stepping through and comparing text of the active code page.
#include <tuple>

#include "tests/platform/Contract.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

int Sign(int value) {
  return (value > 0) - (value < 0);
}

TEST(PlatformCharacter, WalksByWholeCharacters) {
  const std::tuple<UINT, const char*, std::vector<int>> rows[] = {{932, "a\x95\x5Cz", {1, 2, 1}},
                                                                  {932, "\xB1\x5C", {1, 1}},
                                                                  {932, "\x81", {1}},
                                                                  {932, "\x81\x81\x81", {2, 1}},
                                                                  {CP_UTF8, "\x95\x5C", {1, 1}}};
  for (const auto& [codePage, text, expected] : rows) {
    const CodePageScope page(codePage);
    std::vector<int> steps;
    LPCSTR p = text;
    for (LPCSTR next = CharNextA(p); next != p; p = next, next = CharNextA(p)) {
      EXPECT_EQ(CharPrevA(text, next), p);
      steps.push_back(static_cast<int>(next - p));
    }
    EXPECT_EQ(steps, expected);
  }
}

TEST(PlatformCharacter, LeadBytesExistInCodePage932Only) {
  int count = 0;
  for (int byte = 0; byte < 256; ++byte) count += IsDBCSLeadByte(static_cast<BYTE>(byte));
  EXPECT_EQ(count, 60);
  const CodePageScope utf8(CP_UTF8);
  EXPECT_FALSE(IsDBCSLeadByte(0x81));
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !KzSetActiveCodePage(1252));
}

TEST(PlatformCharacter, ComparisonsTakeCharactersWhole) {
  const std::tuple<const char*, const char*, int, int> rows[] = {
      {"abc", "abc", 0, 0},
      {"abc", "ABC", 1, 0},
      {"ab", "abc", -1, -1},
      {"a_", "aB", 1, -1},
      {"\x82\x60", "\x82\x81", -1, 0},   // full-width A and a
      {"\x83\x41", "\x83\x61", -1, -1},  // trail bytes that look like A and a
      {"\x84\x40", "\x84\x70", -1, -1},  // Cyrillic isn't folded
      {"\xB1", "\x82\x60", -1, -1},      // a single byte sorts before every pair
      {"\x81", "", 1, 1},
  };
  for (const auto& [a, b, exact, folded] : rows) {
    SCOPED_TRACE(testing::Message() << a << ' ' << b);
    EXPECT_EQ(Sign(_mbscmp(Mbs(a), Mbs(b))), exact);
    EXPECT_EQ(Sign(_mbsicmp(Mbs(a), Mbs(b))), folded);
    EXPECT_EQ(Sign(_mbsicmp(Mbs(b), Mbs(a))), -folded);
  }
  EXPECT_EQ(_mbsnbcmp(Mbs("abX"), Mbs("abY"), 2), 0);
  EXPECT_EQ(Sign(_mbsnbcmp(Mbs("abX"), Mbs("abY"), 3)), -1);
  EXPECT_EQ(_mbsnbcmp(Mbs("a\x81\x40"), Mbs("a\x81\x41"), 2), 0) << "half a character each";
}

}  // namespace
}  // namespace kozor::test
