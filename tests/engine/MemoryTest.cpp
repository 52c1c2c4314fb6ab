// MemoryTest.cpp - members into memory and out of it, sizes, times and buffers.
#include <gmock/gmock.h>

#include <chrono>

#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;

class MemoryTest : public EngineTest {
 protected:
  std::string Line(const std::string& archive, const std::string& name) {
    return Quoted(archive) + " \"" + name + '"';
  }
};

TEST_F(MemoryTest, EverySizeComesBack) {
  for (const std::size_t size :
       {0U, 1U, 2U, 3U, 255U, 65535U, 65536U, 262144U, 262145U, 2000000U}) {
    const std::string name = "text" + std::to_string(size);
    ASSERT_EQ(Compress("x.lzh", name, TextBytes(size)), 0);
    ASSERT_EQ(Compress("x.lzh", "noise" + std::to_string(size), RandomBytes(size)), 0);
    const Extracted text = Extract("x.lzh", name);
    EXPECT_EQ(text.code, 0);
    EXPECT_EQ(text.written, size);
    EXPECT_TRUE(SameBytes(text.bytes, TextBytes(size)));
    EXPECT_TRUE(
        SameBytes(Extract("x.lzh", "noise" + std::to_string(size)).bytes, RandomBytes(size)));
  }
}

TEST_F(MemoryTest, NullOutputsAndInputsAreFine) {
  ASSERT_EQ(engine.CompressMem(nullptr, Line("x.lzh", "empty").c_str(), nullptr, 0, nullptr,
                               nullptr, nullptr),
            0);
  EXPECT_EQ(engine.ExtractMem(nullptr, Line("x.lzh", "empty").c_str(), nullptr, 0, nullptr, nullptr,
                              nullptr),
            0);
  EXPECT_EQ(engine.CompressMem(nullptr, Line("x.lzh", "bad").c_str(), nullptr, 5, nullptr, nullptr,
                               nullptr),
            0x801A);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("empty"));
}

TEST_F(MemoryTest, BufferThatIsTooSmallGetsWhatFits) {
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

TEST_F(MemoryTest, TimeAndAttributeAreThePresentOnesOrAsGiven) {
  const auto seconds = [] {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
  };
  const auto before = seconds();
  ASSERT_EQ(Compress("x.lzh", "now", {}), 0);
  const Extracted now = Extract("x.lzh", "now");
  EXPECT_GE(now.time, before);
  EXPECT_LE(now.time, seconds());
  EXPECT_EQ(now.attribute, 0x20);

  const std::int32_t time = 1000000001;
  const std::uint16_t attribute = 0x21;
  ASSERT_EQ(engine.CompressMem(nullptr, Line("x.lzh", "then").c_str(), nullptr, 0, &time,
                               &attribute, nullptr),
            0);
  EXPECT_EQ(Extract("x.lzh", "then").time, time);
  EXPECT_EQ(Extract("x.lzh", "then").attribute, attribute);
}

TEST_F(MemoryTest, TimesStayInsideThe31Bits) {
  folder.WriteFile("x.lzh", RawArchive({{.name = "late", .contents = "", .time = 0xFFFFFFFF},
                                        {.level = 0, .name = "none", .contents = "", .time = 0}}));
  EXPECT_EQ(Extract("x.lzh", "late").time, 0x7FFFFFFF);
  EXPECT_GT(Extract("x.lzh", "none").time, 0);
}

TEST_F(MemoryTest, SameNameIsReplacedWhateverItsCase) {
  ASSERT_EQ(Compress("x.lzh", "a.txt", ToBytes("old")), 0);
  ASSERT_EQ(Compress("x.lzh", "b.txt", ToBytes("other")), 0);
  ASSERT_EQ(Compress("x.lzh", "A.txt", ToBytes("new")), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("b.txt", "A.txt"));
  EXPECT_EQ(Extract("x.lzh", "a.TXT").bytes, ToBytes("new"));
}

TEST_F(MemoryTest, NamesAreStoredWithoutRootAndRefusedWhenTheyCannotBe) {
  ASSERT_EQ(Compress("x.lzh", "C:\\d\\f.txt", ToBytes("f")), 0);
  EXPECT_THAT(Names("x.lzh"), ElementsAre("\\d\\f.txt"));
  EXPECT_EQ(Extract("x.lzh", "\\D\\f.txt").bytes, ToBytes("f"));
  EXPECT_EQ(Compress("x.lzh", "a*b", {}), 0x800D);
  EXPECT_EQ(Compress("x.lzh", "..", {}), 0x800D);
  EXPECT_EQ(Compress("x.lzh", std::string(534, 'n'), {}), 0x8026);
  ASSERT_EQ(Compress("x.lzh", std::string(533, 'n'), ToBytes("long")), 0);
  EXPECT_EQ(Extract("x.lzh", std::string(533, 'n')).bytes, ToBytes("long"));
}

TEST_F(MemoryTest, MembersThatCannotBeDelivered) {
  RawMember wrongCrc{.level = 0, .name = "crc", .contents = "text"};
  Bytes bytes = RawHeader(wrongCrc);
  folder.WriteFile("crc.lzh", Join({bytes, ToBytes("TEXT"), Bytes(1)}));
  folder.WriteFile(
      "x.lzh",
      RawArchive({{.name = "unknown", .contents = "123", .method = "-lh9-"},
                  {.name = "dir", .contents = "", .method = "-lhd-"},
                  {.name = "nonsense", .contents = "\xFF\xFF\xFF\xFF", .method = "-lh5-"}}));
  EXPECT_EQ(Extract("crc.lzh", "crc").code, 0x800C);
  EXPECT_EQ(Extract("x.lzh", "unknown").code, 0x8009);
  EXPECT_EQ(Extract("x.lzh", "nonsense").code, 0x8014);
  EXPECT_EQ(ExtractInto("x.lzh", "dir\\", 10).code, 0x800F);
  EXPECT_EQ(ExtractInto("x.lzh", "missing", 10).code, 0x800F);
  EXPECT_EQ(ExtractInto("none.lzh", "missing", 10).code, 0x8029);
}

}  // namespace
}  // namespace kozor::test
