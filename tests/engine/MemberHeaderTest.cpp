// MemberHeaderTest.cpp - valid and invalid headers of all levels, and those that we write.
#include "engine/container/MemberHeader.h"

#include <gmock/gmock.h>

#include <numeric>
#include <tuple>

#include "engine/container/Failure.h"
#include "engine/container/HeaderWriter.h"
#include "engine/container/MemberTime.h"
#include "tests/engine/RawArchive.h"

namespace kozor::container {
namespace {

using test::Bytes;
using test::FromHex;
using test::RawExtension;
using test::RawHeader;
using test::RawMember;

// Directory "dir", file "a.txt", contents "hello" and a line feed, stored, 2010-01-01 00:00:00.
const char* const kExamples[] = {
    "1f 08 2d 6c 68 30 2d 06 00 00 00 06 00 00 00 00 00 21 3c 20 00 09 64 69 72 5c 61 2e 74 78 74"
    "34 5a",
    "1e c5 2d 6c 68 30 2d 0d 00 00 00 06 00 00 00 00 00 21 3c 20 01 05 61 2e 74 78 74 34 5a 4d 07"
    "00 02 64 69 72 ff 00 00",
    "2e 00 2d 6c 68 30 2d 06 00 00 00 06 00 00 00 00 3b 3d 4b 20 02 34 5a 4d 05 00 00 8c 43 07 00"
    "02 64 69 72 ff 08 00 01 61 2e 74 78 74 00 00",
    "04 00 2d 6c 68 30 2d 06 00 00 00 06 00 00 00 00 3b 3d 4b 20 03 34 5a 4d 3a 00 00 00 07 00 00"
    "00 00 8b 8c 09 00 00 00 02 64 69 72 ff 0a 00 00 00 01 61 2e 74 78 74 00 00 00 00"};

HeaderStatus Parse(const Bytes& bytes) {
  MemberHeader header;
  return ParseMemberHeader(bytes, header);
}

MemberHeader Parsed(const Bytes& bytes) {
  MemberHeader header;
  EXPECT_EQ(ParseMemberHeader(bytes, header), HeaderStatus::Complete);
  return header;
}

TEST(EngineMemberHeader, ReadsTheSameFactsInEveryLevel) {
  for (std::uint8_t level = 0; level < 4; ++level) {
    SCOPED_TRACE(int{level});
    const Bytes bytes = FromHex(kExamples[level]);
    const MemberHeader header = Parsed(bytes);
    EXPECT_EQ(header.level, level);
    EXPECT_EQ(header.headerBytes, bytes.size());
    EXPECT_EQ(header.packedBytes, 6U);
    EXPECT_EQ(header.originalBytes, 6U);
    EXPECT_EQ(header.crc, 0x5A34);
    EXPECT_EQ(header.method, kStoredMethod);
    if (level < 2) {
      EXPECT_EQ(header.dosDate, 0x3C21);
    } else {
      EXPECT_EQ(UnixOfFileTime(header.utcTime), 0x4B3D3B00);
    }
    EXPECT_EQ(header.name.base, level == 0 ? "dir\\a.txt" : level == 1 ? "a.txt" : "");
    EXPECT_EQ(header.name.directory, level == 0 ? std::nullopt : std::optional("dir\xFF"));
  }
}

TEST(EngineMemberHeader, NoticesEveryChangedByteThatASumCovers) {
  for (std::size_t level = 0; level < 4; ++level) {
    Bytes bytes = FromHex(kExamples[level]);
    // Level 1 has no header CRC here, so its extensions are not covered.
    const std::size_t covered = level == 1 ? 32 : bytes.size();
    for (std::size_t i = 0; i < covered; ++i) {
      bytes[i] ^= 0x04;
      EXPECT_NE(Parse(bytes), HeaderStatus::Complete) << "level " << level << ", byte " << i;
      bytes[i] ^= 0x04;
    }
  }
}

TEST(EngineMemberHeader, AsksForMoreBytesWhereverItIsCut) {
  for (const char* hex : kExamples) {
    for (Bytes bytes = FromHex(hex); !bytes.empty();) {
      bytes.pop_back();
      EXPECT_EQ(Parse(bytes), HeaderStatus::Incomplete) << hex << " cut at " << bytes.size();
    }
  }
}

TEST(EngineMemberHeader, RefusesSizesThatContradictEachOther) {
  const std::tuple<const char*, int, std::size_t, std::uint8_t> rows[] = {
      {"level 0 header shorter than its name", 0, 0, 20},
      {"level 1 header shorter than its name", 1, 0, 24},
      {"level 1 skip size smaller than the chain", 1, 7, 2},
      {"extension of 2 bytes", 2, 24, 2},
      {"extension that leaves the header", 2, 24, 200},
      {"level 2 total below the base", 2, 0, 25},
      {"level 2 total that looks like an end mark", 2, 0, 0},
      {"level 3 word size", 3, 0, 8},
      {"level 3 total above the limit", 3, 27, 1},
      {"level 4", 2, 20, 4},
      {"no method id", 2, 2, '+'},
  };
  for (const auto& [what, level, offset, value] : rows) {
    Bytes bytes = FromHex(kExamples[level]);
    bytes[offset] = value;
    bytes.resize(bytes.size() + 300);
    EXPECT_THAT(Parse(bytes), testing::AnyOf(HeaderStatus::Broken, HeaderStatus::ChecksumWrong))
        << what;
  }
}

TEST(EngineMemberHeader, TakesOldHeadersWithoutCrc) {
  // 20 + N bytes after the size: the CRC field is missing.
  Bytes bytes = RawHeader({.level = 0, .name = "a.txt"});
  bytes.resize(bytes.size() - 2);
  bytes[0] = static_cast<std::uint8_t>(bytes.size() - 2);
  EXPECT_FALSE(Parsed(bytes).crc.has_value());
}

TEST(EngineMemberHeader, BelievesTheBestTime) {
  const auto number = [](std::uint64_t value, std::size_t width) {
    std::string text(width, '\0');
    WriteNumber(reinterpret_cast<std::uint8_t*>(text.data()), value, width);
    return text;
  };
  const std::string fileTimes =
      number(0, 8) + number(FileTimeOfUnix(1000), 8) + number(FileTimeOfUnix(5), 8);
  const std::tuple<int, std::vector<RawExtension>, std::int64_t> rows[] = {
      {2, {}, 0x4B3D3B00},
      {1, {{0x54, number(1, 4)}, {0x54, number(2000, 4)}}, 2000},
      {1, {{0x41, fileTimes}, {0x54, number(2000, 4)}}, 1000},
      {2, {{0x41, std::string(24, '\0')}}, 0x4B3D3B00},
  };
  for (const auto& [level, extensions, seconds] : rows) {
    const MemberHeader header =
        Parsed(RawHeader({.level = level, .name = "a", .extensions = extensions}));
    EXPECT_EQ(UnixOfFileTime(header.utcTime), seconds);
  }
}

TEST(EngineMemberHeader, SizesOfMoreThan32BitsCountInLevels2And3Only) {
  std::string sizes(16, '\0');
  sizes[4] = 1;   // packed 4 GiB
  sizes[13] = 2;  // original 2 TiB
  for (const int level : {1, 2, 3}) {
    const MemberHeader header =
        Parsed(RawHeader({.level = level, .name = "a", .extensions = {{0x42, sizes}}}));
    EXPECT_EQ(header.packedBytes, level == 1 ? 0 : std::uint64_t{1} << 32);
    EXPECT_EQ(header.originalBytes, level == 1 ? 0 : std::uint64_t{2} << 40);
  }
}

TEST(EngineMemberHeader, Os9HeaderMayCountTwoBytesTooFew) {
  Bytes bytes = RawHeader({.name = "a.txt", .osId = 'K', .hasHeaderCrc = false});
  const std::size_t size = bytes.size();
  bytes[0] = static_cast<std::uint8_t>(size - 2);
  EXPECT_EQ(Parsed(bytes).headerBytes, size);
  bytes[23] = 'M';
  EXPECT_EQ(Parse(bytes), HeaderStatus::Broken);
}

TEST(EngineMemberHeader, TakesTheModesOfOs9) {
  const std::string os9(std::string("\x18\x07\x09\x03\x01\x16\x00\x0B\x00\0\0\0", 12));
  const std::tuple<char, RawExtension, unsigned> rows[] = {
      {'9', {0xCC, os9}, 0100644},                       // rw-, r--
      {'K', {0x50, std::string("\x27\0", 2)}, 0100711},  // rwe, --e
      {'K', {0x50, "\xBF\xFF"}, 0040777},
      {'K', {0x50, std::string(2, '\0')}, 0},
      {'U', {0x50, "\xA4\x81"}, 0100644},
  };
  for (const auto& [osId, extension, mode] : rows) {
    const RawMember member{.name = "a", .extensions = {extension}, .osId = osId};
    EXPECT_EQ(Parsed(RawHeader(member)).unixMode, mode);
  }
  // After the CRC of level 0: OS-9, and OS-9/68K with the time.
  const std::pair<const char*, unsigned> areas[] = {
      {"39 0b 00 00 c3 16 00 0f 00 cc 18 07 09 03 01 16 00 0b 00 00 00 00", 0100644},
      {"4b 00 d0 20 2c 4c d0 20 2c 4c bf ff 00 00 00 00", 0040777},
  };
  for (const auto& [area, mode] : areas) {
    Bytes bytes = FromHex(kExamples[0] + std::string(area));
    const std::size_t added = FromHex(area).size();
    bytes[0] = static_cast<std::uint8_t>(bytes[0] + added);
    bytes[1] = static_cast<std::uint8_t>(std::accumulate(bytes.begin() + 2, bytes.end(), 0U));
    EXPECT_EQ(Parsed(bytes).unixMode, mode);
  }
}

TEST(EngineMemberHeader, EmptyStoredMemberWithADirectoryAloneIsADirectory) {
  const std::pair<RawMember, bool> rows[] = {
      {{.level = 1, .extensions = {{0x02, "work\xFF"}}}, true},
      {{.level = 1, .contents = "x", .extensions = {{0x02, "work\xFF"}}}, false},
      {{.level = 0, .name = "work/"}, true},
      {{.level = 0, .name = "work\\", .attribute = 0x10}, true},
      {{.level = 0, .name = "\x95\x5C"}, false},  // one character
  };
  for (const auto& [member, isDirectory] : rows) {
    EXPECT_EQ(Parsed(RawHeader(member)).IsDirectoryMethod(), isDirectory) << member.name;
  }
}

TEST(EngineMemberHeader, TakesCommentsFromWhereWritersPutThem) {
  for (const RawMember& member : {RawMember{.level = 0, .name = std::string("a\0note", 6)},
                                  {.level = 1, .name = "a", .extensions = {{0x71, "note"}}},
                                  {.level = 2, .name = "a", .extensions = {{0x3F, "note"}}},
                                  {.level = 0, .name = "a", .method = "-pm0-", .extra = "note"}}) {
    const Bytes bytes = RawHeader(member);
    const DataPart comment = Parsed(bytes).comment;
    EXPECT_EQ(std::string(&bytes[comment.offset], &bytes[comment.offset + comment.bytes]), "note");
  }
}

TEST(EngineMemberHeader, WhatFollowsTheChainCountsOnlyWithoutAHeaderCrc) {
  EXPECT_EQ(Parsed(RawHeader({.name = "a", .extra = "junk"})).name.file, "a");
  EXPECT_EQ(Parse(RawHeader({.name = "a", .hasHeaderCrc = false, .extra = "junk"})),
            HeaderStatus::Broken);
}

NewMember Example() {
  return {.name = {.directory = "dir\xFF", .file = "a.txt", .codePage = 0},
          .method = kStoredMethod,
          .packedBytes = 6,
          .originalBytes = 6,
          .crc = 0x5A34,
          .utcTime = FileTimeOfUnix(0x4B3D3B00),
          .attribute = 0x20};
}

TEST(EngineNewHeader, HasTheDocumentedBytes) {
  EXPECT_EQ(BuildHeader(Example()),
            FromHex("2e 00 2d 6c 68 30 2d 06 00 00 00 06 00 00 00 00 3b 3d 4b 20 02 34 5a 57"
                    "05 00 00 65 2a 08 00 01 61 2e 74 78 74 07 00 02 64 69 72 ff 00 00"));
}

TEST(EngineNewHeader, GivesBackSizesAttributesAndTimesThatNeedAFieldOfTheirOwn) {
  const std::uint64_t kCenturies = std::uint64_t{200} * 365 * 86400 * kTicksPerSecond;
  for (const std::uint64_t time : {kFileTimeOf1970 - 1, kFileTimeOf1970 + kCenturies}) {
    NewMember member = Example();
    member.name.codePage = 932;
    member.packedBytes = 0xFFFFFFFE;
    member.originalBytes = 0xFFFFFFFF;
    member.attribute = 0x23;
    member.utcTime = time;
    const MemberHeader header = Parsed(BuildHeader(member));
    EXPECT_EQ(header.name.codePage, 932U);
    EXPECT_EQ(header.packedBytes, member.packedBytes);
    EXPECT_EQ(header.originalBytes, member.originalBytes);
    EXPECT_EQ(header.attribute, member.attribute);
    EXPECT_EQ(header.utcTime, time);
  }
}

TEST(EngineNewHeader, MakesAnEndMarkForNoLengthOfTheName) {
  for (const std::uint16_t attribute : {std::uint16_t{0x20}, std::uint16_t{0x21}}) {
    for (std::size_t length = 1; length < 600; ++length) {
      NewMember member = Example();
      member.name.file.assign(length, 'n');
      member.attribute = attribute;
      const Bytes bytes = BuildHeader(member);
      ASSERT_NE(bytes[0], 0) << length;
      const MemberHeader header = Parsed(bytes);
      ASSERT_EQ(header.name.file->size(), length);
      ASSERT_EQ(header.attribute, attribute);
    }
  }
}

TEST(EngineNewHeader, RefusesNamesThatReadersGiveUpOn) {
  NewMember member = Example();
  member.name.directory.assign(4093, 'd');
  EXPECT_NO_THROW(BuildHeader(member));
  member.name.directory.assign(4094, 'd');
  EXPECT_THROW(BuildHeader(member), Failure);
}

}  // namespace
}  // namespace kozor::container
