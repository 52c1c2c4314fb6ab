// MemoryTest.cpp - unpacking to and packing from memory: sizes, times, buffers.
#include <ctime>

#include "engine/codec/Codec.h"
#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"

namespace kozor::test {
namespace {

class EngineMemory : public EngineTest {
 protected:
  std::string Line(const std::string& archive, const std::string& name) {
    return Quoted(archive) + " \"" + name + '"';
  }
};

TEST_F(EngineMemory, NullOutputsAndInputsAreFine) {
  const auto compressNull = [&](const char* name, std::uint32_t size) {
    return engine.CompressMem(nullptr, Line("x.lzh", name).c_str(), nullptr, size, nullptr, nullptr,
                              nullptr);
  };
  EXPECT_EQ(compressNull("empty", 0), 0);
  EXPECT_EQ(compressNull("bad", 5), 0x801A);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("empty"));
  EXPECT_EQ(engine.ExtractMem(nullptr, Line("x.lzh", "empty").c_str(), nullptr, 0, nullptr, nullptr,
                              nullptr),
            0);
}

TEST_F(EngineMemory, BufferThatIsTooSmallGetsWhatFits) {
  const Bytes text = TextBytes(100000);
  ASSERT_EQ(Compress("x.lzh", "packed", text), 0);
  ASSERT_EQ(Compress("x.lzh", "stored", RandomBytes(1000)), 0);
  for (const std::size_t capacity : {0U, 1U, 99999U}) {
    const Extracted part = ExtractInto("x.lzh", "packed", capacity);
    EXPECT_EQ(part.code, 0x801E);
    EXPECT_EQ(part.written, capacity);
    EXPECT_TRUE(std::equal(part.bytes.begin(), part.bytes.end(), text.begin()));
  }
  EXPECT_EQ(ExtractInto("x.lzh", "stored", 999).code, 0x801E);
  EXPECT_EQ(ExtractInto("x.lzh", "packed", 100001).written, 100000U);
}

TEST_F(EngineMemory, TimeAndAttributeAreThePresentOnesOrAsGiven) {
  const std::time_t before = std::time(nullptr);
  ASSERT_EQ(Compress("x.lzh", "now", {}), 0);
  const Extracted now = Extract("x.lzh", "now");
  EXPECT_GE(now.time, before);
  EXPECT_LE(now.time, std::time(nullptr));
  EXPECT_EQ(now.attribute, 0x20);

  const std::int32_t time = 1000000001;
  const std::uint16_t attribute = 0x21;
  ASSERT_EQ(engine.CompressMem(nullptr, Line("x.lzh", "then").c_str(), nullptr, 0, &time,
                               &attribute, nullptr),
            0);
  EXPECT_EQ(Extract("x.lzh", "then").time, time);
  EXPECT_EQ(Extract("x.lzh", "then").attribute, attribute);
}

TEST_F(EngineMemory, TimesStayInsideThe31Bits) {
  folder.WriteFile("x.lzh", RawArchive({{.name = "late", .time = 0xFFFFFFFF},
                                        {.level = 0, .name = "none", .time = 0},
                                        {.level = 0, .name = "nonsense", .time = 0xFFFFFFFF},
                                        {.level = 0, .name = "2107", .time = 0xFF9FBF7D}}));
  EXPECT_EQ(Extract("x.lzh", "late").time, 0x7FFFFFFF);
  EXPECT_EQ(Extract("x.lzh", "2107").time, 0x7FFFFFFF);
  EXPECT_GT(Extract("x.lzh", "none").time, 0);
  EXPECT_GT(Extract("x.lzh", "nonsense").time, 0);
  EXPECT_EQ(Search("x.lzh", "n*")[1].date, 0x21);  // 1980-01-01
}

TEST_F(EngineMemory, NamesAreStoredWithoutRootAndRefusedWhenTheyCannotBe) {
  ASSERT_EQ(Compress("x.lzh", "C:\\d\\f.txt", ToBytes("f")), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("\\d\\f.txt"));
  EXPECT_EQ(Extract("x.lzh", "\\D\\f.txt").bytes, ToBytes("f"));
  EXPECT_EQ(Compress("x.lzh", "a*b", {}), 0x800D);
  EXPECT_EQ(Compress("x.lzh", "..", {}), 0x800D);
  EXPECT_EQ(Compress("x.lzh", std::string(534, 'n'), {}), 0x8026);
  ASSERT_EQ(Compress("x.lzh", std::string(533, 'n'), ToBytes("long")), 0);
  EXPECT_EQ(Extract("x.lzh", std::string(533, 'n')).bytes, ToBytes("long"));
}

// One match of 12 initial spaces by the other scheme; by the usual one 11, and then a zero byte.
TEST_F(EngineMemory, BothSchemesOfLh7AreTried) {
  const Bytes spaces(12, ' ');
  RawMember member{.name = "a",
                   .contents = {"\x00\x01\x00\x00\x10\x80\x00\x80", 8},
                   .method = "-lh7-",
                   .originalBytes = 12,
                   .crc = codec::Crc16(spaces)};
  folder.WriteFile("x.lzh", RawArchive({member}));
  EXPECT_EQ(Extract("x.lzh", "a").code, 0);
  EXPECT_EQ(Extract("x.lzh", "a").bytes, spaces);
  member.crc = 1;
  folder.WriteFile("x.lzh", RawArchive({member}));
  EXPECT_EQ(Extract("x.lzh", "a").code, 0x8014);  // as the usual scheme has it
}

TEST_F(EngineMemory, MembersThatCannotBeDelivered) {
  const std::uint32_t large = 0xFFFFFFFF;
  folder.WriteFile(
      "x.lzh",
      RawArchive({{.name = "unknown", .contents = "123", .method = "-lx1-"},
                  {.name = "dir", .method = "-lhd-"},
                  {.name = "nonsense", .contents = "\xFF\xFF\xFF\xFF", .method = "-lh5-"},
                  {.name = "liar", .contents = "ab", .method = "-lh5-", .originalBytes = large},
                  {.name = "crc", .contents = "text", .crc = 1},
                  {.name = "good", .contents = "text"}}));
  EXPECT_EQ(Extract("x.lzh", "unknown").code, 0x8009);
  EXPECT_EQ(Extract("x.lzh", "nonsense").code, 0x8014);
  EXPECT_EQ(Extract("x.lzh", "crc").code, 0x800C);
  EXPECT_EQ(Extract("x.lzh", "good").bytes, ToBytes("text"));
  EXPECT_EQ(Search("x.lzh", "liar")[0].size, 0U);  // callers reserve that many bytes
  EXPECT_EQ(ExtractInto("x.lzh", "liar", 100000).code, 0x8014);
  EXPECT_EQ(ExtractInto("x.lzh", "dir\\", 10).code, 0x800F);
  EXPECT_EQ(ExtractInto("x.lzh", "missing", 10).code, 0x800F);
  EXPECT_EQ(ExtractInto("none.lzh", "missing", 10).code, 0x8029);
}

}  // namespace
}  // namespace kozor::test
