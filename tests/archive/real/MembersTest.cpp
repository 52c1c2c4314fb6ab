// MembersTest.cpp - single members: from memory, to memory, looked up, deleted, selected.
#include <algorithm>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;

class ArchiveMembers : public ArchiveReal {
 protected:
  int Store(const std::string& name, const Bytes& bytes) {
    return archive.CompressMem(path.c_str(), name.c_str(), bytes.data(),
                               static_cast<unsigned long>(bytes.size()), 1);
  }
  // Unpacks into a buffer of that size, with a guard behind it that must stay as it is.
  int Load(const std::string& name, Bytes& bytes, std::size_t size) {
    constexpr std::size_t kGuardBytes = 64;
    bytes.assign(size + kGuardBytes, 0xA5);
    const int result = archive.ExtractMem(path.c_str(), name.c_str(), bytes.data(),
                                          static_cast<unsigned long>(size));
    const auto guard = bytes.begin() + static_cast<std::ptrdiff_t>(size);
    EXPECT_TRUE(std::all_of(guard, bytes.end(), [](auto byte) { return byte == 0xA5; }));
    bytes.resize(size);
    return result;
  }
  int Delete(std::initializer_list<std::string> masks) {
    return archive.Delete(Selection("", masks), path.c_str());
  }
  std::vector<std::string> Names() const { return ArchiveReal::Members(); }
};

TEST_F(ArchiveMembers, ComeBackFromMemoryAtEverySize) {
  archive.SetOverwriteMode(1);
  for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 20U << 20}) {
    SCOPED_TRACE(size);
    const Bytes bytes = TextBytes(size);
    ASSERT_EQ(Store("m", bytes), 1) << archive.GetError();
    unsigned long found = 77;
    EXPECT_EQ(archive.GetFileInfo(path.c_str(), "M", &found, nullptr, nullptr), 1);
    EXPECT_EQ(found, size);
    Bytes loaded;
    EXPECT_EQ(Load("m", loaded, size), 1) << archive.GetError();
    EXPECT_TRUE(loaded == bytes);
    if (size == 0) continue;
    // A buffer that is too small is filled, and not a byte more.
    EXPECT_EQ(Load("m", loaded, size - 1), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorOutOfMemory);
    EXPECT_TRUE(std::equal(loaded.begin(), loaded.end(), bytes.begin()));
  }
  ExpectNoLeftovers();
}

TEST_F(ArchiveMembers, AreFoundAndDeletedByOddNames) {
  const char* const names[] = {"-x", "@y", "a b.txt", "dir\\\x83\x5C.txt", "\x95\x5C\\z", "keep"};
  for (const char* name : names) ASSERT_EQ(Store(name, TextBytes(10)), 1) << name;
  EXPECT_THAT(Names(), testing::ElementsAreArray(names));
  for (const char* name : names) {
    Bytes loaded;
    EXPECT_EQ(Load(name, loaded, 10), 1) << name;
  }
  EXPECT_EQ(Delete({"-x", "@y"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"a b.txt"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"dir\\\x83\x5C.txt", "\x95\x5C\\"}), 1) << archive.GetError();
  EXPECT_THAT(Names(), ElementsAre("keep"));
}

TEST_F(ArchiveMembers, AreSelectedByMasksAndExclusions) {
  for (const char* name : {"a.txt", "b.tmp", "sub\\c.txt", "sub\\d.tmp"}) {
    ASSERT_EQ(Store(name, TextBytes(10)), 1);
  }
  const ZorFind find = Selection("", {"*.txt", "*.tmp", ">d.*"});
  EXPECT_EQ(archive.Extract(find, path.c_str(), Lib("out").c_str()), 1);
  EXPECT_THAT(folder.List("out"), ElementsAre("a.txt", "b.tmp", "sub/", "sub/c.txt"));
  EXPECT_EQ(Delete({"*.*", ">*.tmp"}), 1);
  EXPECT_THAT(Names(), ElementsAre("b.tmp", "sub\\d.tmp"));
  EXPECT_EQ(Delete({"*.*"}), 1);
  EXPECT_FALSE(folder.Exists("a.lzh"));
}

TEST_F(ArchiveMembers, AreNotFoundInWhatIsNoArchive) {
  folder.WriteFile("a.lzh", TextBytes(1000));
  EXPECT_EQ(archive.IsArchive(path.c_str()), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
  EXPECT_EQ(Extract(), 0);
  EXPECT_THAT(archive.GetError(), testing::AnyOf(ZorErrorArchiveOpen, ZorErrorCanceled));
}

}  // namespace
}  // namespace kozor::test
