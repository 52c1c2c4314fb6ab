// HeaderWriterTest.cpp - the headers of new members.
#include "engine/container/HeaderWriter.h"

#include <gtest/gtest.h>

#include "engine/container/Failure.h"
#include "engine/container/MemberTime.h"
#include "tests/engine/RawArchive.h"

namespace kozor::container {
namespace {

NewMember Example() {
  return {.name = {.directory = "dir\xFF", .file = "a.txt", .codePage = 0},
          .method = kStoredMethod,
          .packedBytes = 6,
          .originalBytes = 6,
          .crc = 0x5A34,
          .utcTime = FileTimeOfUnix(0x4B3D3B00),
          .attribute = 0x20};
}

TEST(HeaderWriter, WritesTheDocumentedBytes) {
  EXPECT_EQ(BuildHeader(Example()),
            test::FromHex("2e 00 2d 6c 68 30 2d 06 00 00 00 06 00 00 00 00 3b 3d 4b 20 02 34 5a 57"
                          "05 00 00 65 2a 08 00 01 61 2e 74 78 74 07 00 02 64 69 72 ff 00 00"));
}

TEST(HeaderWriter, EverythingComesBack) {
  NewMember member = Example();
  member.name.codePage = 932;
  member.attribute = 0x23;
  member.packedBytes = 0xFFFFFFFE;
  member.originalBytes = 0xFFFFFFFF;
  const std::vector<std::uint8_t> bytes = BuildHeader(member);
  MemberHeader header;
  ASSERT_EQ(ParseMemberHeader(bytes, header), HeaderStatus::complete);
  EXPECT_EQ(header.headerBytes, bytes.size());
  EXPECT_EQ(header.packedBytes, member.packedBytes);
  EXPECT_EQ(header.originalBytes, member.originalBytes);
  EXPECT_EQ(header.crc, member.crc);
  EXPECT_EQ(header.attribute, member.attribute);
  EXPECT_EQ(header.utcTime, member.utcTime);
  EXPECT_EQ(header.name.codePage, 932U);
  EXPECT_EQ(header.name.file, member.name.file);
  EXPECT_EQ(header.name.directory, member.name.directory);
}

TEST(HeaderWriter, NoLengthOfTheNameMakesAnEndMark) {
  for (const std::uint16_t attribute : {std::uint16_t{0x20}, std::uint16_t{0x21}}) {
    for (std::size_t length = 1; length < 600; ++length) {
      NewMember member = Example();
      member.name.file.assign(length, 'n');
      member.attribute = attribute;
      const std::vector<std::uint8_t> bytes = BuildHeader(member);
      MemberHeader header;
      ASSERT_NE(bytes[0], 0) << length;
      ASSERT_EQ(ParseMemberHeader(bytes, header), HeaderStatus::complete) << length;
      ASSERT_EQ(header.name.file->size(), length);
      ASSERT_EQ(header.attribute, attribute);
    }
  }
}

TEST(HeaderWriter, TimesOutsideTheBaseFieldHaveAFieldOfTheirOwn) {
  const std::uint64_t kCenturies = std::uint64_t{200} * 365 * 86400 * kTicksPerSecond;
  for (const std::uint64_t time : {kFileTimeOf1970 - 1, FileTimeOfUnix(0) + kCenturies}) {
    NewMember member = Example();
    member.utcTime = time;
    MemberHeader header;
    ASSERT_EQ(ParseMemberHeader(BuildHeader(member), header), HeaderStatus::complete);
    EXPECT_EQ(header.utcTime, time);
  }
}

TEST(HeaderWriter, RefusesNamesThatReadersGiveUpOn) {
  NewMember member = Example();
  member.name.directory.assign(4093, 'd');
  EXPECT_NO_THROW(BuildHeader(member));
  member.name.directory.assign(4094, 'd');
  try {
    BuildHeader(member);
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code, Code::nameTooLong);
  }
}

}  // namespace
}  // namespace kozor::container
