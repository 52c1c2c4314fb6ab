// MembersTest.cpp - single members: from memory, to memory, looked up, deleted, selected.
#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class ArchiveMembers : public ArchiveReal {
 protected:
  int Store(const std::string& name, const Bytes& bytes) {
    return archive.CompressMem(path.c_str(), name.c_str(), bytes.data(),
                               static_cast<unsigned long>(bytes.size()), 1);
  }
  int Delete(std::initializer_list<std::string> masks) {
    return archive.Delete(Selection("", masks), path.c_str());
  }
  std::vector<std::string> Names() const { return ArchiveReal::Members(); }
};

TEST_F(ArchiveMembers, AreStoredFoundAndDeletedByOddNames) {
  const char* const names[] = {"-x", "@y", "a b.txt", "dir\\\x83\x5C.txt", "\x95\x5C\\z", "keep"};
  const Bytes text = TextBytes(100'000);
  for (const char* name : names) ASSERT_EQ(Store(name, text), 1) << name;
  EXPECT_THAT(Names(), testing::ElementsAreArray(names));
  for (const char* name : names) {
    Bytes loaded(text.size());
    unsigned long size = 0;
    EXPECT_EQ(archive.GetFileInfo(path.c_str(), name, &size, nullptr, nullptr), 1) << name;
    EXPECT_EQ(size, text.size());
    EXPECT_EQ(archive.ExtractMem(path.c_str(), name, loaded.data(), size), 1) << name;
    EXPECT_TRUE(loaded == text);
    EXPECT_EQ(archive.ExtractMem(path.c_str(), name, loaded.data(), size - 1), 0);
    EXPECT_EQ(archive.GetError(), ZorErrorOutOfMemory);
  }
  EXPECT_EQ(Delete({"-x", "@y"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"a b.txt"}), 1) << archive.GetError();
  EXPECT_EQ(Delete({"dir\\\x83\x5C.txt", "\x95\x5C\\"}), 1) << archive.GetError();
  EXPECT_THAT(Names(), ElementsAre("keep"));
  ExpectNoLeftovers();
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
