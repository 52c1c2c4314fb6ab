// DamageTest.cpp - archives cut short and archives with a changed byte: an error or the right
// bytes.
#include <gmock/gmock.h>

#include <map>

#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"

namespace kozor::test {
namespace {

using Contents = std::map<std::string, Bytes>;

class DamageTest : public EngineTest {
 protected:
  // An archive of our own writing: packed, stored, empty, in a directory, beyond ASCII.
  DamageTest() {
    expected = {{"text", TextBytes(400)},
                {"d\\noise", RandomBytes(60)},
                {"empty", {}},
                {"\x95\x5C.txt", TextBytes(300, 7)}};
    for (const auto& [name, bytes] : expected) EXPECT_EQ(Compress("good.lzh", name, bytes), 0);
    good = folder.ReadFile("good.lzh");
  }

  // What a caller gets who extracts all: false when any step reports an error.
  bool ExtractAll(Contents& contents) {
    const HARC handle = engine.OpenArchive(nullptr, folder.Lib("bad.lzh").c_str(), kSearchBelow);
    if (handle == nullptr) return false;
    std::vector<std::pair<std::string, std::uint32_t>> members;
    UnlhaMemberRecord record{};
    for (int found = engine.FindFirst(handle, "*.*", &record); found == 0;
         found = engine.FindNext(handle, &record)) {
      members.emplace_back(record.name, record.size);
    }
    engine.CloseArchive(handle);
    for (const auto& [name, size] : members) {
      if (size > 1000000) return false;  // a lie; a caller's memory would end here
      const Extracted extracted = ExtractInto("bad.lzh", name, size);
      if (extracted.code != 0) return false;
      contents[name] = extracted.bytes;
    }
    return true;
  }

  Contents expected;
  Bytes good;
};

TEST_F(DamageTest, CutAnywhere) {
  int successes = 0;
  for (std::size_t size = 0; size < good.size(); ++size) {
    folder.WriteFile("bad.lzh",
                     Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
    Contents contents;
    if (!ExtractAll(contents)) continue;
    ++successes;  // the exact end of a member is an end of an archive as well
    for (const auto& [name, bytes] : contents)
      EXPECT_TRUE(SameBytes(bytes, expected[name])) << size;
  }
  EXPECT_EQ(successes, static_cast<int>(expected.size()));
}

TEST_F(DamageTest, AnyByteChanged) {
  // An end mark in the place of a header's first byte is the one change that the format has no
  // check over: an append that never committed looks the same.
  std::vector<std::size_t> passed;
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const std::uint8_t value :
         {std::uint8_t{0x00}, std::uint8_t{0xFF}, static_cast<std::uint8_t>(good[at] ^ 0x41)}) {
      if (value == good[at]) continue;
      Bytes bad = good;
      bad[at] = value;
      folder.WriteFile("bad.lzh", bad);
      Contents contents;
      if (ExtractAll(contents) && contents != expected) passed.push_back(at);
    }
  }
  for (const std::size_t at : passed) {
    EXPECT_EQ(std::string(good.begin() + static_cast<std::ptrdiff_t>(at) + 2,
                          good.begin() + static_cast<std::ptrdiff_t>(at) + 5),
              "-lh")
        << at;
  }
  EXPECT_LT(passed.size(), expected.size());
}

TEST_F(DamageTest, ChangeRefusesADamagedArchiveAndLeavesItAlone) {
  for (const std::size_t size : {good.size() - 5, std::size_t{30}}) {
    const Bytes cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    folder.WriteFile("bad.lzh", cut);
    EXPECT_NE(Compress("bad.lzh", "new", {}), 0);
    EXPECT_NE(Delete("bad.lzh", {"text"}), 0);
    EXPECT_TRUE(SameBytes(folder.ReadFile("bad.lzh"), cut));
  }
}

TEST_F(DamageTest, SizesThatLieCostNothing) {
  // A member that says it is 4 GiB - 1 long, with two bytes of data.
  RawMember liar{.name = "liar", .contents = "ab", .method = "-lh5-"};
  Bytes header = RawHeader(liar);
  for (std::size_t i = 11; i < 15; ++i) header[i] = 0xFF;
  // The header CRC is the first extension.
  header[27] = header[28] = 0;
  folder.WriteFile("bad.lzh", Join({header, ToBytes("ab"), Bytes(1)}));
  EXPECT_FALSE(Opens("bad.lzh"));  // its CRC tells

  liar.hasHeaderCrc = false;
  header = RawHeader(liar);
  for (std::size_t i = 11; i < 15; ++i) header[i] = 0xFF;
  folder.WriteFile("bad.lzh", Join({header, ToBytes("ab"), Bytes(1)}));
  ASSERT_TRUE(Opens("bad.lzh"));
  EXPECT_NE(ExtractInto("bad.lzh", "liar", 100000).code, 0);
}

}  // namespace
}  // namespace kozor::test
