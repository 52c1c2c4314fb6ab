// MemberSearchTest.cpp - searches in an index.
#include "engine/container/MemberSearch.h"

#include <gmock/gmock.h>

#include "engine/container/ArchiveIndex.h"
#include "tests/engine/RawArchive.h"

namespace kozor::container {
namespace {

class EngineMemberSearch : public testing::Test {
 protected:
  std::vector<std::string> Find(const char* text, MemberSearch::Depth depth) {
    MemberSearch search(index, text, depth);
    std::vector<std::string> names;
    while (const auto position = search.Next()) names.push_back(index.Members()[*position].name);
    return names;
  }
  std::vector<std::string> Below(const char* text) {
    return Find(text, MemberSearch::Depth::AndBelow);
  }
  std::vector<std::string> Here(const char* text) {
    return Find(text, MemberSearch::Depth::ThisDirectory);
  }

  const test::Bytes bytes = test::RawArchive({{.level = 0, .name = "a.txt"},
                                              {.level = 0, .name = "sub\\", .method = "-lhd-"},
                                              {.level = 0, .name = "sub\\b.txt"},
                                              {.level = 0, .name = "sub\\deep\\C.TXT"},
                                              {.level = 0, .name = "sub2\\d.doc"},
                                              {.level = 0, .name = "\\rooted\\e.txt"},
                                              {.level = 0, .name = "A.TXT"}});
  MemorySource source{bytes};
  ArchiveIndex index{source, 932};
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(EngineMemberSearch, DirectoryPartAndDepthDecide) {
  EXPECT_THAT(Below("*.*"), ElementsAre("a.txt", "sub\\b.txt", "sub\\deep\\C.TXT", "sub2\\d.doc",
                                        "\\rooted\\e.txt", "A.TXT"));
  EXPECT_THAT(Here("*.*"), ElementsAre("a.txt", "A.TXT"));
  EXPECT_THAT(Below("sub\\*.txt"), ElementsAre("sub\\b.txt", "sub\\deep\\C.TXT"));
  EXPECT_THAT(Here("SUB/*.txt"), ElementsAre("sub\\b.txt"));
  EXPECT_THAT(Below("\\*.*"), ElementsAre("\\rooted\\e.txt"));
  EXPECT_THAT(Below("sub"), IsEmpty());
}

TEST_F(EngineMemberSearch, QuotedNameIsFoundAloneAndOtherTextIsAMask) {
  EXPECT_THAT(Below("\"A.TXT\""), ElementsAre("A.TXT"));
  EXPECT_THAT(Below("a.txt"), ElementsAre("a.txt", "A.TXT"));
  EXPECT_THAT(Below("\"*.txt\""), IsEmpty());
  EXPECT_THAT(Below("\"c.txt\""), IsEmpty());
  EXPECT_THAT(Below("\"Sub/Deep/c.txt\""), ElementsAre("sub\\deep\\C.TXT"));
  EXPECT_THAT(Below("sub\\"), IsEmpty());
  EXPECT_THAT(Below("c.txt"), ElementsAre("sub\\deep\\C.TXT"));
  EXPECT_THAT(Here("c.txt"), IsEmpty());
}

}  // namespace
}  // namespace kozor::container
