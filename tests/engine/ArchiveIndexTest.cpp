// ArchiveIndexTest.cpp - where archives begin and end, and the contents of an index.
#include <tuple>

#include "engine/container/ArchiveIndex.h"

#include <gmock/gmock.h>

#include "engine/container/Failure.h"
#include "engine/container/MemberName.h"
#include "tests/engine/RawArchive.h"
#include "tests/support/Host.h"

namespace kozor::container {
namespace {

using test::Bytes;
using test::Join;
using test::RawArchive;
using test::RawMember;
using test::ToBytes;
using testing::ElementsAre;
using testing::StartsWith;

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

TEST(EngineArchiveIndex, EndsThatAreNoDamage) {
  const Bytes padding(100, 0x1A);
  const Bytes garbage = ToBytes("garbage behind the end mark");
  for (const Bytes& bytes :
       {WithoutEndMark(), Join({WithoutEndMark(), padding}), Join({TwoMembers(), padding}),
        Join({TwoMembers(), garbage}), Join({TwoMembers(), TwoMembers()})}) {
    EXPECT_THAT(NamesIn(bytes), ElementsAre("a", "bb"));
  }
  EXPECT_THAT(NamesIn({0}), ElementsAre());
}

TEST(EngineArchiveIndex, WhatIsNoArchiveOrAllDamageIsRefused) {
  EXPECT_EQ(CodeOf({}), ResultCode::NotAnArchive);
  EXPECT_EQ(CodeOf(ToBytes("a text about -lh5- and nothing else, long enough to be scanned")),
            ResultCode::NotAnArchive);
  EXPECT_EQ(CodeOf(test::RandomBytes(100000)), ResultCode::NotAnArchive);
  Bytes bytes = RawArchive({{.level = 0, .name = "a"}});
  bytes[22] ^= 1;
  EXPECT_EQ(CodeOf(bytes), ResultCode::HeaderChecksum);
  bytes[6] ^= 1;
  EXPECT_EQ(CodeOf(bytes), ResultCode::HeaderDamaged);
}

TEST(EngineArchiveIndex, DamageCostsOneMemberAndIsListed) {
  // What is changed, where in the member, and the fault.
  const std::tuple<const char*, std::size_t, ResultCode> rows[] = {
      {"the time", 16, ResultCode::HeaderChecksum},
      {"the packed size", 8, ResultCode::HeaderChecksum},
      {"the method", 2, ResultCode::HeaderDamaged},
      {"the level", 20, ResultCode::HeaderDamaged},
  };
  for (const int level : {0, 1, 2, 3}) {
    const Bytes inner = RawArchive({{.name = "inner"}});
    const RawMember second = {
        .level = level, .name = "second", .contents = std::string(inner.begin(), inner.end())};
    const RawMember third = {.name = "third"};
    const std::size_t begin = test::RawHeader({.name = "first"}).size();
    const std::size_t again = begin + RawArchive({second, third}).size() - 1;
    for (const auto& [what, at, fault] : rows) {
      SCOPED_TRACE(what + std::to_string(level));
      Bytes bytes = Join({RawArchive({{.name = "first"}, second, third, second, {.name = "fifth"}}),
                          ToBytes("after the end mark")});
      bytes[begin + at] ^= 0x40;
      bytes[again + at] ^= 0x40;
      const ArchiveIndex index = IndexOf(bytes);
      ASSERT_EQ(index.Members().size(), 5U);
      EXPECT_TRUE(index.Damage());
      for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(index.Members()[i].fault, i == 1 || i == 3 ? std::optional(fault) : std::nullopt);
      }
      EXPECT_TRUE(index.Find("fifth"));
    }
  }
}

// Beyond some megabytes the table of members is in a file, or in memory if there can't be one.
TEST(EngineArchiveIndex, LargeTablesAreTheSameInAFileAndInMemory) {
  constexpr std::size_t kCount = 40'000;
  const auto nameOf = [](std::size_t i) { return std::string(180, 'n') + std::to_string(i); };
  std::vector<RawMember> members(kCount, {.level = 0});
  for (std::size_t i = 0; i < kCount; ++i) members[i].name = nameOf(i);
  const Bytes bytes = RawArchive(members);
  const Bytes more = RawArchive({{.name = "last"}});
  MemorySource source(bytes);
  const Bytes longer = Join({Bytes(bytes.begin(), bytes.end() - 1), more});
  MemorySource appended(longer);
  for (const char* temporaries :
       {"/there/is/no/such/directory", static_cast<const char*>(nullptr)}) {
    test::SetEnvironment("TMPDIR", temporaries);
    const ArchiveIndex index(source, 932);
    ArchiveIndex copy = index;
    copy.ReadOn(appended);
    ASSERT_EQ(copy.Members().size(), kCount + 1);
    EXPECT_EQ(copy.Find("last"), kCount);
    for (std::size_t step = 0; step < kCount; ++step) {
      const std::size_t i = step * 7919 % kCount;
      const Member member = index.Members()[i];
      ASSERT_EQ(member.name, nameOf(i));
      ASSERT_EQ(copy.Members()[i].offset, member.offset);
      if (step % 100 == 0) {
        ASSERT_EQ(index.Find(nameOf(i)), i);
      }
    }
  }
}

TEST(EngineArchiveIndex, CutOrUnknownEndIsAMemberWithAFault) {
  for (Bytes cut : {RawArchive({{.name = "bb", .contents = "contents"}}), TwoMembers()}) {
    cut.resize(cut.size() - 3);
    const ArchiveIndex index = IndexOf(cut);
    const Member last = index.Members()[index.Members().size() - 1];
    EXPECT_EQ(last.name, "bb");
    EXPECT_EQ(last.fault, ResultCode::PackedDataDamaged);
    EXPECT_EQ(index.Damage(), ResultCode::PackedDataDamaged);
  }
  for (const Bytes& end : {ToBytes("x"), Join({Bytes(40, 0x1A), ToBytes("x")})}) {
    const Bytes bytes = Join({WithoutEndMark(), end});
    EXPECT_THAT(NamesIn(bytes), ElementsAre("a", "bb", "damaged"));
    EXPECT_EQ(IndexOf(bytes).Members()[2].fault, ResultCode::HeaderDamaged);
  }
}

TEST(EngineArchiveIndex, ClaimsBeyondWhatTheDataCanHoldAreFaults) {
  RawMember liar{.name = "liar", .contents = "ab", .method = "-lh5-"};
  const auto fault = [&] {
    const ArchiveIndex index = IndexOf(RawArchive({liar, {.name = "b", .contents = "x"}}));
    EXPECT_FALSE(index.Damage());
    return index.Members()[0].fault;
  };
  EXPECT_FALSE(fault());
  liar.originalBytes = 0xFFFFFFFF;
  EXPECT_EQ(fault(), ResultCode::PackedDataDamaged);
  for (const char* const unknown : {"-lh9-", "-zzz-"}) {
    liar.method = unknown;
    EXPECT_EQ(fault(), ResultCode::MethodNotSupported);
  }
}

TEST(EngineArchiveIndex, FindsTheArchiveBehindAPrefix) {
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
                            bait,
                            Join({program, bait}),
                            Bytes((1 << 20) - 1, 'x'),
                            Join({Bytes(50, 'A'), inner, Bytes(1)})};
  for (const Bytes& prefix : prefixes) {
    const ArchiveIndex index = IndexOf(Join({prefix, TwoMembers()}));
    EXPECT_EQ(index.PrefixBytes(), prefix.size());
    EXPECT_EQ(index.Members().size(), 2U);
  }
}

TEST(EngineArchiveIndex, EndOfTheProgramIsBelievedBeforeTheScan) {
  // An ELF file of 64 bytes whose section headers end at 200; text that looks like a complete
  // archive is inside.
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
  EXPECT_EQ(IndexOf(bytes).PrefixBytes(), program.size());
  EXPECT_TRUE(IndexOf(bytes).Damage());
}

TEST(EngineArchiveIndex, LinksAndNamelessMembersAreKeptButNotShown) {
  RawMember link{.level = 1, .name = "link|target", .method = "-lhd-"};
  link.extensions = {{0x50, {'\xFF', '\xA1'}}};
  RawMember directory{.level = 1, .name = "", .method = "-lhd-"};
  const RawMember nameless = directory;
  directory.extensions = {{0x02, "d\xFF"}};
  const ArchiveIndex index = IndexOf(RawArchive({link, nameless, directory}));
  ASSERT_EQ(index.Members().size(), 3U);
  EXPECT_EQ(index.Members()[0].kind, MemberKind::Unlisted);
  EXPECT_EQ(index.Members()[1].kind, MemberKind::Unlisted);
  EXPECT_EQ(index.Members()[2].kind, MemberKind::Directory);
  EXPECT_EQ(index.Members()[2].name, "d\\");
}

TEST(EngineArchiveIndex, ExactNameComesBeforeCase) {
  const ArchiveIndex index = IndexOf(RawArchive({{.level = 0, .name = "README"},
                                                 {.level = 0, .name = "readme"},
                                                 {.level = 0, .name = "readme"}}));
  EXPECT_EQ(index.Find("README"), 0U);
  EXPECT_EQ(index.Find("readme"), 2U);  // the last one of that name
  EXPECT_EQ(index.Find("Readme"), 0U);
  EXPECT_EQ(index.FindExactly("Readme"), std::nullopt);
}

TEST(EngineArchiveIndex, NamesThatLookAlikeWhenShownStayApart) {
  const std::vector<test::RawExtension> isUtf8 = {{0x46, std::string("\xE9\xFD\0\0", 4)}};
  const Bytes bytes = RawArchive({{.name = "\xED\x95\x9C", .extensions = isUtf8},
                                  {.name = "\xEA\xB8\x80", .extensions = isUtf8},
                                  {.name = "_"}});
  const std::vector<std::string> names = NamesIn(bytes);
  EXPECT_THAT(names, ElementsAre(StartsWith("_~"), StartsWith("_~"), "_"));
  EXPECT_NE(names[0], names[1]);
  // A mark stays when other members go.
  EXPECT_THAT(NamesIn(RawArchive({{.name = "\xEA\xB8\x80", .extensions = isUtf8}, {.name = "_"}})),
              ElementsAre(names[1], "_"));
  EXPECT_THAT(NamesIn(bytes, 65001), ElementsAre("\xED\x95\x9C", "\xEA\xB8\x80", "_"));
}

TEST(EngineArchiveIndex, NamesThatAreTooLongAreCutAndMarked) {
  const std::string directory = std::string(400, 'd') + "\xFF";
  std::string file;
  while (file.size() < 200) file += "\x95\x5C";
  const Bytes bytes = RawArchive({{.name = file + "1", .extensions = {{0x02, directory}}},
                                  {.name = file + "2", .extensions = {{0x02, directory}}},
                                  {.name = "short"}});
  const ArchiveIndex index = IndexOf(bytes);
  const std::string shown = std::string(400, 'd') + "\\" + file.substr(0, 130);
  const std::vector<std::string> names = NamesIn(bytes);
  EXPECT_THAT(names, ElementsAre(StartsWith("dddd"), StartsWith("dddd"), "short"));
  EXPECT_NE(names[0], names[1]);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_LE(names[i].size(), kMaxShownBytes);
    EXPECT_EQ(names[i].substr(0, names[i].find('~')), shown.substr(0, names[i].find('~')));
    EXPECT_EQ(index.Find(names[i]), i);
  }
}

TEST(EngineArchiveIndex, CodePagesAreRecordedChosenOrGuessedFromAllNames) {
  const auto recorded = [](char low, char high) {
    return std::vector<test::RawExtension>{{0x46, std::string{low, high, 0, 0}}};
  };
  const auto shown = [](const std::vector<RawMember>& members, unsigned int page = 0) {
    const Bytes bytes = RawArchive(members);
    MemorySource source(bytes);
    const ArchiveIndex index(source, 65001, page);
    std::vector<std::string> names;
    for (const Member& member : index.Members()) names.push_back(member.name);
    return names;
  };
  EXPECT_THAT(shown({{.name = "\xE4\xA0", .extensions = recorded('\x62', '\x03')},    // 866
                     {.name = "caf\x82", .extensions = recorded('\x52', '\x03')},     // 850
                     {.name = "\xB0\xA1", .extensions = recorded('\xB5', '\x03')}}),  // 949
              ElementsAre("\u0444\u0430", "caf\u00E9", "\uAC00"));
  EXPECT_THAT(shown({{.level = 1, .name = "ab:c", .osId = 'm'}, {.level = 1, .name = "ab:c"}}),
              ElementsAre("ab\\c", "ab_c"));
  EXPECT_THAT(shown({{.name = "caf\xE9"}}, 1252), ElementsAre("caf\u00E9"));
  EXPECT_THAT(shown({{.name = "caf\xE9", .extensions = {{0x02, "\xE9\xFF"}}}}, 28591),
              ElementsAre("\u00E9\\caf\u00E9"));
  // Both names are EUC; one of them alone could also be code page 932.
  EXPECT_THAT(shown({{.name = "\xB4\xC1"}, {.name = "\xE1\xFE"}}),
              ElementsAre("\u6F22", testing::_));
  EXPECT_THAT(shown({{.name = "\xB4\xC1"}}), ElementsAre("\uFF74\uFF81"));
}

TEST(EngineArchiveIndex, AttributesComeFromWhereTheWriterPutThem) {
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
