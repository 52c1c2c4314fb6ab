// MaskTest.cpp - the rules of file masks, and searches in an index.
#include "engine/container/Mask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/MemberSearch.h"
#include "tests/engine/RawArchive.h"

namespace kozor::container {
namespace {

TEST(Mask, FollowsTheRulesOfWindows) {
  struct Row {
    const char16_t* mask;
    const char16_t* name;
    bool matches;
  };
  const Row rows[] = {
      {u"*.*", u"readme", true},      {u"*", u"a.b", true},           {u"*.", u"readme", true},
      {u"*.", u"a.b", false},         {u"*.txt", u"a.txt", true},     {u"*.txt", u"a.b.txt", true},
      {u"*.txt", u"a.txt2", false},   {u"*.txt", u"txt", false},      {u"a*.txt", u"abc.txt", true},
      {u"a*.txt", u"bac.txt", false}, {u"a??", u"a", true},           {u"a??", u"abc", true},
      {u"a??", u"abcd", false},       {u"?a", u"a", false},           {u"a?.txt", u"a.txt", true},
      {u"a?.txt", u"ab.txt", true},   {u"a?.txt", u"abc.txt", false}, {u"a.?", u"a", true},
      {u"a.?", u"a.b", true},         {u"a.?", u"a.bc", false},       {u"a.*", u"a", true},
      {u"a.*", u"a.b.c", true},       {u"*a*b*", u"xaxxbx", true},    {u"*a*b*", u"xbxxax", false},
      {u"abc", u"abc", true},         {u"abc", u"abcd", false},       {u"", u"a", false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Mask(row.mask).Matches(row.name), row.matches)
        << std::string(row.mask, row.mask + std::u16string_view(row.mask).size()) << " "
        << std::string(row.name, row.name + std::u16string_view(row.name).size());
  }
}

TEST(Mask, ManyStarsCostNoMoreThanLengthTimesLength) {
  const std::u16string name(1000, u'a');
  std::u16string mask;
  for (int i = 0; i < 250; ++i) mask += u"*a";
  EXPECT_FALSE(Mask(mask + u"b").Matches(name));
}

class MemberSearchTest : public testing::Test {
 protected:
  std::vector<std::string> Find(const char* text, MemberSearch::Depth depth) {
    MemberSearch search(index, text, depth);
    std::vector<std::string> names;
    while (const auto position = search.Next()) names.push_back(index.Members()[*position].name);
    return names;
  }
  std::vector<std::string> Below(const char* text) {
    return Find(text, MemberSearch::Depth::andBelow);
  }
  std::vector<std::string> Here(const char* text) {
    return Find(text, MemberSearch::Depth::thisDirectory);
  }

  const test::Bytes bytes =
      test::RawArchive({{.level = 0, .name = "a.txt", .contents = "1"},
                        {.level = 0, .name = "sub\\", .contents = "", .method = "-lhd-"},
                        {.level = 0, .name = "sub\\b.txt", .contents = "2"},
                        {.level = 0, .name = "sub\\deep\\C.TXT", .contents = "3"},
                        {.level = 0, .name = "sub2\\d.doc", .contents = "4"},
                        {.level = 0, .name = "\\rooted\\e.txt", .contents = "5"},
                        {.level = 0, .name = "A.TXT", .contents = "6"}});
  MemorySource source{bytes};
  ArchiveIndex index{source, 932};
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(MemberSearchTest, DirectoryPartAndDepthDecide) {
  EXPECT_THAT(Below("*.*"), ElementsAre("a.txt", "sub\\b.txt", "sub\\deep\\C.TXT", "sub2\\d.doc",
                                        "\\rooted\\e.txt", "A.TXT"));
  EXPECT_THAT(Here("*.*"), ElementsAre("a.txt", "A.TXT"));
  EXPECT_THAT(Below("sub\\*.txt"), ElementsAre("sub\\b.txt", "sub\\deep\\C.TXT"));
  EXPECT_THAT(Here("SUB/*.txt"), ElementsAre("sub\\b.txt"));
  EXPECT_THAT(Below("\\*.*"), ElementsAre("\\rooted\\e.txt"));
  EXPECT_THAT(Below("sub"), IsEmpty());
}

TEST_F(MemberSearchTest, WholeNameIsFoundAlone) {
  EXPECT_THAT(Below("\"A.TXT\""), ElementsAre("A.TXT"));
  EXPECT_THAT(Below("a.txt"), ElementsAre("a.txt"));
  EXPECT_THAT(Below("\"Sub/Deep/c.txt\""), ElementsAre("sub\\deep\\C.TXT"));
  EXPECT_THAT(Below("sub\\"), IsEmpty());
}

TEST_F(MemberSearchTest, NameWithoutWildCardsIsAMaskAsWell) {
  EXPECT_THAT(Below("c.txt"), ElementsAre("sub\\deep\\C.TXT"));
  EXPECT_THAT(Here("c.txt"), IsEmpty());
}

}  // namespace
}  // namespace kozor::container
