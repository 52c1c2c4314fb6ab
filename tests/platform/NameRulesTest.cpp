// NameRulesTest.cpp - which names a mask means, and which Windows can't create.
#include <gtest/gtest.h>

#include "platform/text/Case.h"
#include "platform/text/WildCard.h"
#include "platform/text/WindowsName.h"
#include "tests/platform/WildCardRows.h"

namespace kozor::text {
namespace {

TEST(PlatformWildCard, FollowsTheRulesOfTheFindCalls) {
  for (const test::WildCardRow& row : test::kWildCardRows) {
    const WildCard mask(UpperKey(row.mask));
    for (const auto name : test::Words(row.matches)) {
      EXPECT_TRUE(mask.Matches(UpperKey(name))) << row.mask << " means " << name;
    }
    for (const auto name : test::Words(row.others)) {
      EXPECT_FALSE(mask.Matches(UpperKey(name))) << row.mask << " doesn't mean " << name;
    }
  }
}

TEST(PlatformWildCard, ManyStarsCostNoMoreThanLengthTimesLength) {
  const std::u16string name(1000, u'a');
  std::u16string mask;
  for (int i = 0; i < 250; ++i) mask += u"*a";
  EXPECT_TRUE(WildCard(mask).Matches(name));
  EXPECT_FALSE(WildCard(mask + u"b").Matches(name));
}

TEST(PlatformWindowsName, DevicesAndLostEndingsAreForbidden) {
  for (const std::string_view name :
       {"nul",     "NUL",    "con.txt", "aux.tar.gz", "prn ",  "com1",      "COM9.a",
        "lpt1 .x", "conin$", "x.",      "x ",         ".",     "..",        "",
        "a:b",     "a?",     "a\\b",    "a/b",        "tab\t", "\"quoted\""}) {
    EXPECT_TRUE(IsNameForbiddenByWindows(name)) << name;
  }
  for (const std::string_view name : {"null", "con1", "com0", "com", "com10", "lpt", "a.nul",
                                      ".nul", " nul", "x. y", ".x", "\xE8\xA1\xA8"}) {
    EXPECT_FALSE(IsNameForbiddenByWindows(name)) << name;
  }
  EXPECT_TRUE(IsNameForbiddenByWindows(std::wstring_view(L"Nul.txt")));
  EXPECT_FALSE(IsNameForbiddenByWindows(std::wstring_view(L"\u8868.txt")));
}

}  // namespace
}  // namespace kozor::text
