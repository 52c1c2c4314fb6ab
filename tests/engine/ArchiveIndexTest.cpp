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
using test::RawHeader;
using test::ToBytes;
using testing::ElementsAre;

std::vector<std::string> NamesIn(const Bytes& bytes, unsigned int codePage = 932) {
  MemorySource source(bytes);
  const ArchiveIndex index(source, codePage);
  std::vector<std::string> names;
  for (const Member& member : index.Members()) {
    if (member.kind == MemberKind::file) names.push_back(member.name);
  }
  return names;
}

Code CodeOf(const Bytes& bytes) {
  try {
    NamesIn(bytes);
  } catch (const Failure& failure) {
    return failure.code;
  }
  return Code::ok;
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

TEST(ArchiveIndex, MixesLevels) {
  const Bytes bytes = RawArchive({{.level = 0, .name = "a", .contents = "0"},
                                  {.level = 1, .name = "b", .contents = "1"},
                                  {.level = 2, .name = "c", .contents = "2"},
                                  {.level = 3, .name = "d", .contents = "3"}});
  EXPECT_THAT(NamesIn(bytes), ElementsAre("a", "b", "c", "d"));
}

TEST(ArchiveIndex, EndsThatAreNoDamage) {
  const Bytes padding(100, 0x1A);
  const Bytes garbage = ToBytes("garbage behind the end mark");
  EXPECT_THAT(NamesIn(WithoutEndMark()), ElementsAre("a", "bb"));
  EXPECT_THAT(NamesIn(Join({WithoutEndMark(), padding})), ElementsAre("a", "bb"));
  EXPECT_THAT(NamesIn(Join({TwoMembers(), padding})), ElementsAre("a", "bb"));
  EXPECT_THAT(NamesIn(Join({TwoMembers(), garbage})), ElementsAre("a", "bb"));
  EXPECT_THAT(NamesIn(Join({TwoMembers(), TwoMembers()})), ElementsAre("a", "bb"));
  EXPECT_THAT(NamesIn({0}), ElementsAre());
}

TEST(ArchiveIndex, EndsThatAreDamage) {
  EXPECT_EQ(CodeOf(Join({WithoutEndMark(), ToBytes("x")})), Code::headerDamaged);
  EXPECT_EQ(CodeOf(Join({WithoutEndMark(), Bytes(40, 0x1A), ToBytes("x")})), Code::headerDamaged);
  Bytes bytes = TwoMembers();
  const std::size_t second = RawHeader({.name = "a", .contents = "first"}).size() + 5;
  bytes[second + 22] ^= 1;  // a letter of the second name, covered by the sum
  EXPECT_EQ(CodeOf(bytes), Code::headerChecksum);
}

TEST(ArchiveIndex, CutAnywhereIsAnErrorButBetweenMembers) {
  const Bytes bytes = TwoMembers();
  const std::size_t afterFirst = RawHeader({.name = "a", .contents = "first"}).size() + 5;
  for (std::size_t size = 0; size < bytes.size() - 1; ++size) {
    const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(CodeOf(cut) == Code::ok, size == afterFirst) << size;
  }
}

TEST(ArchiveIndex, DamagedFirstHeaderIsNotTakenForAStub) {
  const Bytes bytes = TwoMembers();
  const std::size_t headerBytes = RawHeader({.name = "a", .contents = "first"}).size();
  for (std::size_t i = 0; i < headerBytes; ++i) {
    Bytes damaged = bytes;
    damaged[i] ^= 0x08;
    EXPECT_NE(CodeOf(damaged), Code::ok) << i;
  }
}

TEST(ArchiveIndex, FindsTheArchiveBehindAPrefix) {
  const Bytes archive = TwoMembers();
  Bytes program(5000, 0x90);
  program[0] = 'M';
  program[1] = 'Z';
  const Bytes bait = Join({Bytes(2), ToBytes("-lhd-"), Bytes(100)});
  const Bytes fake = Join({{0x18, 0x79}, ToBytes("-pms-"), Bytes(100, 0xEE)});
  const Bytes inner = RawArchive({{.level = 0, .name = "usage", .contents = "text"}});
  const Bytes prefixes[] = {Bytes(128),
                            program,
                            Join({program, bait}),
                            fake,
                            Bytes(300000, 'x'),
                            Join({Bytes(50, 'A'), inner, Bytes(1)})};
  for (const Bytes& prefix : prefixes) {
    const Bytes bytes = Join({prefix, archive});
    MemorySource source(bytes);
    const ArchiveIndex index(source, 932);
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
  EXPECT_THAT(NamesIn(Join({program, TwoMembers()})), ElementsAre("a", "bb"));
  Bytes damaged = Join({program, TwoMembers()});
  damaged[program.size() + 30] ^= 1;
  EXPECT_EQ(CodeOf(damaged), Code::headerDamaged);
}

TEST(ArchiveIndex, WhatIsNoArchiveIsRefused) {
  EXPECT_EQ(CodeOf({}), Code::notAnArchive);
  EXPECT_EQ(CodeOf(ToBytes("a text about -lh5- and nothing else, long enough to be scanned")),
            Code::notAnArchive);
  EXPECT_EQ(CodeOf(test::RandomBytes(100000)), Code::notAnArchive);
}

TEST(ArchiveIndex, LinksAndNamelessMembersAreKeptButNotShown) {
  const std::string linkMode = {'\xFF', '\xA1'};
  const Bytes bytes = RawArchive({{.level = 1,
                                   .name = "link|target",
                                   .contents = "",
                                   .extensions = {{0x50, linkMode}},
                                   .method = "-lhd-"},
                                  {.level = 1, .name = "", .contents = "", .method = "-lhd-"},
                                  {.level = 1,
                                   .name = "",
                                   .contents = "",
                                   .extensions = {{0x02, "d\xFF"}},
                                   .method = "-lhd-"}});
  MemorySource source(bytes);
  const ArchiveIndex index(source, 932);
  ASSERT_EQ(index.Members().size(), 3U);
  EXPECT_EQ(index.Members()[0].kind, MemberKind::hidden);
  EXPECT_EQ(index.Members()[1].kind, MemberKind::hidden);
  EXPECT_EQ(index.Members()[2].kind, MemberKind::directory);
  EXPECT_EQ(index.Members()[2].name, "d\\");
}

TEST(ArchiveIndex, ExactNameComesBeforeCase) {
  const Bytes bytes = RawArchive({{.level = 0, .name = "README", .contents = "1"},
                                  {.level = 0, .name = "readme", .contents = "2"},
                                  {.level = 0, .name = "readme", .contents = "3"}});
  MemorySource source(bytes);
  const ArchiveIndex index(source, 932);
  EXPECT_EQ(index.Find("README"), 0U);
  EXPECT_EQ(index.Find("readme"), 2U);  // the last of one name
  EXPECT_EQ(index.Find("Readme"), 0U);
  EXPECT_EQ(index.FindExactly("Readme"), std::nullopt);
}

TEST(ArchiveIndex, NamesThatLookAlikeWhenShownStayApart) {
  const std::vector<test::RawExtension> isUtf8 = {{0x46, std::string("\xE9\xFD\0\0", 4)}};
  const Bytes bytes = RawArchive({{.name = "\xED\x95\x9C", .contents = "", .extensions = isUtf8},
                                  {.name = "\xEA\xB8\x80", .contents = "", .extensions = isUtf8},
                                  {.name = "_", .contents = ""}});
  EXPECT_THAT(NamesIn(bytes), ElementsAre("_~1", "_~2", "_"));
  EXPECT_THAT(NamesIn(bytes, 65001), ElementsAre("\xED\x95\x9C", "\xEA\xB8\x80", "_"));
}

TEST(ArchiveIndex, AttributesComeFromWhereTheWriterPutThem) {
  const std::string readOnlyMode = {'\x24', '\x81'};  // a file, r--r--r--
  const Bytes bytes = RawArchive(
      {{.level = 0, .name = "a", .contents = "", .attribute = 0x01},
       {.level = 1, .name = "b", .contents = "", .attribute = 0x01},
       {.level = 2, .name = "c", .contents = "", .extensions = {{0x40, std::string("\x23\0", 2)}}},
       {.level = 2, .name = "d", .contents = "", .extensions = {{0x50, readOnlyMode}}}});
  MemorySource source(bytes);
  const ArchiveIndex index(source, 932);
  EXPECT_EQ(index.Members()[0].attribute, 0x01);
  EXPECT_EQ(index.Members()[1].attribute, 0x20);
  EXPECT_EQ(index.Members()[2].attribute, 0x23);
  EXPECT_EQ(index.Members()[3].attribute, 0x21);
}

TEST(ArchiveIndex, WordsThatAreNoDateGiveAFixedOne) {
  const Bytes bytes = RawArchive({{.level = 0, .name = "a", .contents = "", .time = 0xFFFFFFFF}});
  MemorySource source(bytes);
  const ArchiveIndex index(source, 932);
  const Member& member = index.Members()[0];
  EXPECT_EQ(member.localTime.date, 0x21);  // 1980-01-01
  EXPECT_EQ(member.localTime.time, 0);
}

}  // namespace
}  // namespace kozor::container
