// WildCardTest.cpp - the matcher of file masks.
#include "platform/text/WildCard.h"

#include <gtest/gtest.h>

#include "platform/text/Case.h"
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

}  // namespace
}  // namespace kozor::text
