// DamageTest.cpp - truncated archives and archives with a changed byte give an error or the right
// bytes.
#include <map>

#include "tests/engine/EngineFixture.h"
#include "tests/engine/RawArchive.h"

namespace kozor::test {
namespace {

using Contents = std::map<std::string, Bytes>;

class EngineDamage : public EngineTest {
 protected:
  // Headers of all levels, and members by our own writer: packed, stored, empty, non-ASCII names.
  EngineDamage() {
    expected = {{"level0", ToBytes("zero")},        {"level1", ToBytes("one")},
                {"level3", ToBytes("three")},       {"text", TextBytes(400)},
                {"d\\noise", RandomBytes(60)},      {"empty", {}},
                {"\x95\x5C.txt", TextBytes(300, 7)}};
    folder.WriteFile("good.lzh", RawArchive({{.level = 0, .name = "level0", .contents = "zero"},
                                             {.level = 1, .name = "level1", .contents = "one"},
                                             {.level = 3, .name = "level3", .contents = "three"}}));
    for (const char* name : {"text", "d\\noise", "empty", "\x95\x5C.txt"}) {
      EXPECT_EQ(Compress("good.lzh", name, expected[name]), 0);
    }
    good = folder.ReadFile("good.lzh");
  }

  Bytes GoodUpTo(std::size_t size) const {
    return {good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)};
  }

  // Extracts everything; returns false if any step reports an error.
  bool ExtractAll(const Bytes& archive, Contents& contents) {
    folder.WriteFile("bad.lzh", archive);
    if (!Opens("bad.lzh")) return false;
    for (const UnlhaMemberRecord& record : Search("bad.lzh")) {
      if (record.size > 1000000) return false;  // wrong; a caller could not allocate that
      const Extracted extracted = ExtractInto("bad.lzh", record.name, record.size);
      if (extracted.code != 0) return false;
      contents[record.name] = extracted.bytes;
    }
    return true;
  }

  Contents expected;
  Bytes good;
};

TEST_F(EngineDamage, CutAnywhere) {
  std::size_t successes = 0;
  for (std::size_t size = 0; size < good.size(); ++size) {
    Contents contents;
    if (!ExtractAll(GoodUpTo(size), contents)) continue;
    ++successes;  // an archive may also end exactly after a member
    EXPECT_EQ(contents.size(), successes);
    for (const auto& [name, bytes] : contents)
      EXPECT_TRUE(SameBytes(bytes, expected[name])) << size;
  }
  EXPECT_EQ(successes, expected.size());
}

TEST_F(EngineDamage, AnyByteChanged) {
  // An end mark in place of a header's first byte is the only change that the format can't detect:
  // an uncommitted append looks the same.
  std::vector<std::size_t> passed;
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const int value : {0x00, 0xFF, good[at] ^ 0x41}) {
      Bytes bad = good;
      bad[at] = static_cast<std::uint8_t>(value);
      Contents contents;
      if (ExtractAll(bad, contents) && contents != expected) passed.push_back(at);
    }
  }
  for (const std::size_t at : passed)
    EXPECT_EQ(std::string(&good[at + 2], &good[at + 5]), "-lh") << at;
  EXPECT_LT(passed.size(), expected.size());
}

TEST_F(EngineDamage, ChangeRefusesADamagedArchiveAndLeavesItAlone) {
  for (const std::size_t size : {good.size() - 5, std::size_t{30}}) {
    const Bytes cut = GoodUpTo(size);
    folder.WriteFile("bad.lzh", cut);
    EXPECT_NE(Compress("bad.lzh", "new", {}), 0);
    EXPECT_NE(Delete("bad.lzh", {"text"}), 0);
    EXPECT_TRUE(SameBytes(folder.ReadFile("bad.lzh"), cut));
  }
}

}  // namespace
}  // namespace kozor::test
