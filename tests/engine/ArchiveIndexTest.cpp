// ArchiveIndexTest.cpp - where archives begin and end, and what an index holds.
#include "engine/container/ArchiveIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/container/Failure.h"
#include "tests/engine/RawArchive.h"

namespace kozor::container {
namespace {

using test::Bytes;
using test::Join;
using test::RawArchive;
using test::ToBytes;
using testing::ElementsAre;

ArchiveIndex IndexOf(const Bytes& bytes, unsigned int codePage = 932) {
  MemorySource source(bytes);
  return {source, codePage};
}

std::vector<std::string> NamesIn(const Bytes& bytes, unsigned int codePage = 932) {
  const ArchiveIndex index = IndexOf(bytes, codePage);
  std::vector<std::string> names;
  for (const Member& member : index.Members()) {
    if (member.kind == MemberKind::File) names.push_back(member.name);
  }
  return names;
}

ResultCode CodeOf(const Bytes& bytes) {
  try {
    IndexOf(bytes);
  } catch (const Failure& failure) {
    return failure.code;
  }
  return ResultCode::Ok;
}

Bytes TwoMembers() {
  return RawArchive({{.level = 2, .name = "a", .contents = "first"},
                     {.level = 1, .name = "bb", .contents = "second"}});
}

Bytes WithoutEndMark() {
  Bytes bytes = TwoMembers();
  bytes.pop_back();
  return bytes;
}

TEST(ArchiveIndex, EndsThatAreNoDamage) {
  const Bytes padding(100, 0x1A);
  const Bytes garbage = ToBytes("garbage behind the end mark");
  for (const Bytes& bytes :
       {WithoutEndMark(), Join({WithoutEndMark(), padding}), Join({TwoMembers(), padding}),
        Join({TwoMembers(), garbage}), Join({TwoMembers(), TwoMembers()})}) {
    EXPECT_THAT(NamesIn(bytes), ElementsAre("a", "bb"));
  }
  EXPECT_THAT(NamesIn({0}), ElementsAre());
}

TEST(ArchiveIndex, WhatIsNoArchiveOrEndsInDamageIsRefused) {
  EXPECT_EQ(CodeOf({}), ResultCode::NotAnArchive);
  EXPECT_EQ(CodeOf(ToBytes("a text about -lh5- and nothing else, long enough to be scanned")),
            ResultCode::NotAnArchive);
  EXPECT_EQ(CodeOf(test::RandomBytes(100000)), ResultCode::NotAnArchive);
  EXPECT_EQ(CodeOf(Join({WithoutEndMark(), ToBytes("x")})), ResultCode::HeaderDamaged);
  EXPECT_EQ(CodeOf(Join({WithoutEndMark(), Bytes(40, 0x1A), ToBytes("x")})),
            ResultCode::HeaderDamaged);
  Bytes bytes = RawArchive({{.level = 0, .name = "a"}, {.level = 0, .name = "b"}});
  bytes[bytes.size() - 4] ^= 1;  // the second name, in front of a CRC and the end mark
  EXPECT_EQ(CodeOf(bytes), ResultCode::HeaderChecksum);
}

TEST(ArchiveIndex, FindsTheArchiveBehindAPrefix) {
  Bytes program(5000, 0x90);
  program[0] = 'M';
  program[1] = 'Z';
  const Bytes texts = Join({Bytes(2), ToBytes("-lhd-"), Bytes(100), ToBytes("-lhs-"), Bytes(100)});
  const Bytes fake = Join({{0x18, 0x79}, ToBytes("-pms-"), Bytes(100, 0xEE)});
  const Bytes bait = RawArchive({{.level = 0, .name = "b", .contents = "", .method = "-lhs-"}});
  const Bytes inner = RawArchive({{.level = 0, .name = "usage", .contents = "text"}});
  const Bytes prefixes[] = {Bytes(128),
                            program,
                            Join({program, texts}),
                            fake,
                            Join({program, bait}),
                            Bytes(300000, 'x'),
                            Join({Bytes(50, 'A'), inner, Bytes(1)})};
  for (const Bytes& prefix : prefixes) {
    const ArchiveIndex index = IndexOf(Join({prefix, TwoMembers()}));
    EXPECT_EQ(index.PrefixBytes(), prefix.size());
    EXPECT_EQ(index.Members().size(), 2U);
  }
}

TEST(ArchiveIndex, EndOfTheProgramIsBelievedBeforeTheScan) {
  // An ELF file of 64 bytes whose section headers end at 200; text that reads as a whole archive
  // stands inside.
  Bytes program(200);
  const Bytes magic = {0x7F, 'E', 'L', 'F', 2, 1, 1};
  std::copy(magic.begin(), magic.end(), program.begin());
  program[40] = 136;
  program[58] = 64;
  program[60] = 1;
  const Bytes inner = RawArchive({{.level = 0, .name = "bait", .contents = ""}});
  std::copy(inner.begin(), inner.end(), program.begin() + 70);
  Bytes bytes = Join({program, TwoMembers()});
  EXPECT_THAT(NamesIn(bytes), ElementsAre("a", "bb"));
  bytes[program.size() + 30] ^= 1;
  EXPECT_EQ(CodeOf(bytes), ResultCode::HeaderDamaged);
}

TEST(ArchiveIndex, LinksAndNamelessMembersAreKeptButNotShown) {
  const std::string linkMode = {'\xFF', '\xA1'};
  const ArchiveIndex index = IndexOf(RawArchive({{.level = 1,
                                                  .name = "link|target",
                                                  .contents = "",
                                                  .extensions = {{0x50, linkMode}},
                                                  .method = "-lhd-"},
                                                 {.level = 1, .name = "", .method = "-lhd-"},
                                                 {.level = 1,
                                                  .name = "",
                                                  .contents = "",
                                                  .extensions = {{0x02, "d\xFF"}},
                                                  .method = "-lhd-"}}));
  ASSERT_EQ(index.Members().size(), 3U);
  EXPECT_EQ(index.Members()[0].kind, MemberKind::Unlisted);
  EXPECT_EQ(index.Members()[1].kind, MemberKind::Unlisted);
  EXPECT_EQ(index.Members()[2].kind, MemberKind::Directory);
  EXPECT_EQ(index.Members()[2].name, "d\\");
}

TEST(ArchiveIndex, ExactNameComesBeforeCase) {
  const ArchiveIndex index = IndexOf(RawArchive({{.level = 0, .name = "README"},
                                                 {.level = 0, .name = "readme"},
                                                 {.level = 0, .name = "readme"}}));
  EXPECT_EQ(index.Find("README"), 0U);
  EXPECT_EQ(index.Find("readme"), 2U);  // the last of one name
  EXPECT_EQ(index.Find("Readme"), 0U);
  EXPECT_EQ(index.FindExactly("Readme"), std::nullopt);
}

TEST(ArchiveIndex, NamesThatLookAlikeWhenShownStayApart) {
  const std::vector<test::RawExtension> isUtf8 = {{0x46, std::string("\xE9\xFD\0\0", 4)}};
  const Bytes bytes = RawArchive({{.name = "\xED\x95\x9C", .extensions = isUtf8},
                                  {.name = "\xEA\xB8\x80", .extensions = isUtf8},
                                  {.name = "_"}});
  EXPECT_THAT(NamesIn(bytes), ElementsAre("_~1", "_~2", "_"));
  EXPECT_THAT(NamesIn(bytes, 65001), ElementsAre("\xED\x95\x9C", "\xEA\xB8\x80", "_"));
}

TEST(ArchiveIndex, AttributesComeFromWhereTheWriterPutThem) {
  const std::string readOnlyMode = {'\x24', '\x81'};  // a file, r--r--r--
  const ArchiveIndex index = IndexOf(
      RawArchive({{.level = 0, .name = "a", .attribute = 0x01},
                  {.level = 1, .name = "b", .attribute = 0x01},
                  {.level = 2, .name = "c", .extensions = {{0x40, std::string("\x23\0", 2)}}},
                  {.level = 2, .name = "d", .extensions = {{0x50, readOnlyMode}}}}));
  const std::uint16_t expected[] = {0x01, 0x20, 0x23, 0x21};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(index.Members()[i].attribute, expected[i]) << i;
}

}  // namespace
}  // namespace kozor::container
