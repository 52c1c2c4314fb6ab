// MembersTest.cpp - single members: from memory, to memory, looked up, deleted.
#include <algorithm>
#include <chrono>
#include <ctime>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Members : public RealArchiveTest {
 protected:
  int Store(const char* name, const Bytes& bytes) {
    return archive.CompressMem(ArchivePath().c_str(), name, bytes.data(),
                               static_cast<unsigned long>(bytes.size()), 1);
  }
  // Unpacks into a buffer of that size, with a guard behind it that must stay as it is.
  int Load(const char* name, Bytes& bytes, std::size_t size) {
    constexpr std::size_t kGuardBytes = 64;
    bytes.assign(size + kGuardBytes, 0xA5);
    const int result = archive.ExtractMem(ArchivePath().c_str(), name, bytes.data(),
                                          static_cast<unsigned long>(size));
    const auto guard = bytes.begin() + static_cast<std::ptrdiff_t>(size);
    EXPECT_TRUE(std::all_of(guard, bytes.end(), [](auto byte) { return byte == 0xA5; }));
    bytes.resize(size);
    return result;
  }
  int Delete(std::initializer_list<const char*> masks) {
    ZorFind find;
    for (const char* mask : masks) find.AddTail(mask);
    return archive.Delete(find, ArchivePath().c_str());
  }
};

TEST_F(Members, ComeBackFromMemoryAtEverySize) {
  for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 1'000'000U}) {
    for (const Bytes& bytes : {TextBytes(size), RandomBytes(size)}) {
      archive.SetOverwriteMode(1);
      ASSERT_EQ(Store("m", bytes), 1) << archive.GetError();
      Bytes loaded;
      EXPECT_EQ(Load("m", loaded, size), 1) << archive.GetError();
      EXPECT_EQ(loaded, bytes);
      unsigned long found = 77;
      EXPECT_EQ(archive.GetFileInfo(ArchivePath().c_str(), "M", &found, nullptr, nullptr), 1);
      EXPECT_EQ(found, size);
    }
  }
  ExpectNoLeftovers();
}

TEST_F(Members, FillABufferThatIsTooSmallAndNotAByteMore) {
  const Bytes bytes = TextBytes(70'000);
  ASSERT_EQ(Store("m", bytes), 1);
  Bytes loaded;
  EXPECT_EQ(Load("m", loaded, bytes.size() - 1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorOutOfMemory);
  EXPECT_TRUE(std::equal(loaded.begin(), loaded.end(), bytes.begin()));
  EXPECT_EQ(Load("m", loaded, bytes.size() + 1), 1);
}

TEST_F(Members, OfTwentyMegabytesComeBack) {
  const Bytes bytes = TextBytes(20U << 20);
  ASSERT_EQ(Store("m", bytes), 1);
  Bytes loaded;
  EXPECT_EQ(Load("m", loaded, bytes.size()), 1);
  EXPECT_TRUE(loaded == bytes);
}

TEST_F(Members, FromMemoryHaveTheTimeOfTheCallAndTheArchiveAttribute) {
  const std::time_t now = std::time(nullptr);
  ASSERT_EQ(Store("d\\m", TextBytes(10)), 1);
  unsigned long attribute = 0;
  FILETIME time{};
  ASSERT_EQ(archive.GetFileInfo(ArchivePath().c_str(), "d\\m", nullptr, &time, &attribute), 1);
  EXPECT_EQ(attribute, 0x20U);
  const std::uint64_t ticks =
      (std::uint64_t{time.dwHighDateTime} << 32U) | time.dwLowDateTime;  // 100 ns since 1601
  const auto seconds = static_cast<std::int64_t>(ticks / 10'000'000) - 11'644'473'600;
  EXPECT_NEAR(static_cast<double>(seconds), static_cast<double>(now), 60.0);
}

TEST_F(Members, AreFoundAndDeletedByOddNames) {
  const char* const names[] = {"-x", "@y", "a b.txt", "dir\\\x83\x5C.txt", "\x95\x5C\\z", "keep"};
  for (const char* name : names) ASSERT_EQ(Store(name, TextBytes(10)), 1) << name;
  EXPECT_THAT(Members::RealArchiveTest::Members(), testing::ElementsAreArray(names));
  for (const char* name : names) {
    Bytes loaded;
    EXPECT_EQ(Load(name, loaded, 10), 1) << name;
  }
  EXPECT_EQ(Delete({"-x", "@y"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"a b.txt"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"dir\\\x83\x5C.txt", "\x95\x5C\\"}), 1) << archive.GetError();
  EXPECT_THAT(RealArchiveTest::Members(), ElementsAre("keep"));
}

TEST_F(Members, AreDeletedWhereverTheyStandAndTheRestStaysAsItWas) {
  const char* const names[] = {"a.txt", "b.txt", "c.tmp", "d.txt"};
  for (const char* name : names) ASSERT_EQ(Store(name, TextBytes(1000)), 1);
  EXPECT_EQ(Delete({"none.txt"}), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorEngine800F);
  EXPECT_EQ(Delete({"b.txt"}), 1);
  EXPECT_THAT(RealArchiveTest::Members(), ElementsAre("a.txt", "c.tmp", "d.txt"));
  EXPECT_EQ(Delete({"a.txt"}), 1);
  EXPECT_EQ(Delete({"d.txt"}), 1);
  EXPECT_THAT(RealArchiveTest::Members(), ElementsAre("c.tmp"));
  Bytes loaded;
  EXPECT_EQ(Load("c.tmp", loaded, 1000), 1);
  EXPECT_EQ(loaded, TextBytes(1000));
  EXPECT_EQ(Delete({"*.*"}), 1);
  EXPECT_FALSE(folder.Exists("a.lzh"));
  EXPECT_THAT(folder.List(), IsEmpty());
}

TEST_F(Members, AreDeletedByMasksAndExclusions) {
  for (const char* name : {"a.txt", "sub\\b.txt", "sub\\c.tmp"}) {
    ASSERT_EQ(Store(name, TextBytes(10)), 1);
  }
  EXPECT_EQ(Delete({"*.*", ">*.tmp"}), 1);
  EXPECT_THAT(RealArchiveTest::Members(), ElementsAre("sub\\c.tmp"));
  EXPECT_EQ(Delete({">*.*", "*.*"}), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
}

}  // namespace
}  // namespace kozor::test
