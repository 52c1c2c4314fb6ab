// RoundTripTest.cpp - trees go into an archive and come back, in both code pages.
#include <sys/stat.h>

#include "ZorFileServices.h"
#include "platform/win32/PosixAdmin.h"
#include "real/RealArchive.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

// A tree of the sizes and names that go wrong: nothing, one byte, the limits of a window, blanks, a
// leading '-' and '@', characters with the trail byte 0x5C (U+8868, U+30BD).
void MakeOddTree(const TestFolder& folder) {
  MakeTree(folder, "src",
           {{"a.txt", 10},
            {"empty", 0},
            {"sub/one byte.bin", 1},
            {"sub/window", 65'536},
            {"sub/more", 300'001},
            {"-dash", 20},
            {"@at", 30},
            {"deep/er/and/deeper/x.y.z", 99},
            {"\xE8\xA1\xA8/\xE3\x82\xBD.txt", 40},
            {"\xE6\x97\xA5\xE6\x9C\xAC \xE8\xA1\xA8", 50}});
}

class RoundTrip : public RealArchiveTest, public testing::WithParamInterface<unsigned int> {
 protected:
  RoundTrip() {
    KzSetActiveCodePage(GetParam());
    MakeOddTree(folder);
  }
};

INSTANTIATE_TEST_SUITE_P(CodePage, RoundTrip, testing::Values(932U, 65001U));

TEST_P(RoundTrip, GivesTheSameTreeByOneLinePerFile) {
  EXPECT_EQ(Compress(), 1) << archive.GetError();
  EXPECT_EQ(Extract(), 1) << archive.GetError();
  EXPECT_EQ(Difference(), "");
  ExpectNoLeftovers();
}

TEST_P(RoundTrip, GivesTheSameTreeByAResponseFile) {
  folder.WriteFile("work/keep", "");
  archive.SetWorkDirectory(Lib("work").c_str());
  EXPECT_EQ(Compress(), 1) << archive.GetError();
  EXPECT_EQ(Extract(), 1) << archive.GetError();
  EXPECT_EQ(Difference(), "");
  EXPECT_THAT(folder.List("work"), ElementsAre("keep"));
}

TEST_P(RoundTrip, GivesTheSameTreeWithDirectoriesByCompressDir) {
  std::filesystem::create_directories(folder.Path("src/empty directory"));
  EXPECT_EQ(archive.CompressDir(Lib("src").c_str(), ArchivePath().c_str(), 0), 1);
  EXPECT_EQ(Extract(), 1) << archive.GetError();
  EXPECT_EQ(Difference(), "");
  // Adding it again replaces what is there.
  const std::vector<std::string> before = Members();
  EXPECT_EQ(archive.CompressDir(Lib("src").c_str(), ArchivePath().c_str(), 1), 1);
  EXPECT_THAT(Members(), testing::UnorderedElementsAreArray(before));
}

class RealArchive : public RealArchiveTest {};

TEST_F(RealArchive, KeepsNamesThatOnlyUtf8CanExpress) {
  KzSetActiveCodePage(65001);
  MakeTree(folder, "src", {{"\xC3\x9C\xE2\x82\xAC \xF0\x9F\x98\x80.txt", 10}, {"plain", 10}});
  EXPECT_EQ(Compress(), 1) << archive.GetError();
  EXPECT_EQ(Extract(), 1) << archive.GetError();
  EXPECT_EQ(Difference(), "");
}

TEST_F(RealArchive, GivesFilesBackTheirAttributes) {
  MakeTree(folder, "src", {{"r.txt", 10}, {"h.txt", 10}});
  ZorSetFileAttribute(Lib("src/r.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
  ZorSetFileAttribute(Lib("src/h.txt").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  EXPECT_EQ(Compress(), 1);
  EXPECT_EQ(Extract(), 1);
  for (const char* name : {"r.txt", "h.txt"}) {
    unsigned int before = 0;
    unsigned int after = 1;
    ZorGetFileAttribute(Lib(std::string("src/") + name).c_str(), before);
    ZorGetFileAttribute(Lib(std::string("out/") + name).c_str(), after);
    EXPECT_EQ(before, after) << name;
  }
  // A read-only file is in the way of the next extraction.
  EXPECT_EQ(Extract("r.txt"), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorFileFailure);
  EXPECT_EQ(Difference(), "");
}

TEST_F(RealArchive, StoresNamesWithARootAndPlacesThemBelowTheRootOfTheDestination) {
  MakeTree(folder, "src", {{"a.txt", 10}});
  ZorFind find;
  find.AddTail((Lib("src") + "\\a.txt").c_str());
  ASSERT_EQ(archive.Compress(find, ArchivePath().c_str(), 0, 0), 1);
  EXPECT_THAT(Members(), ElementsAre((Lib("src") + "\\a.txt").substr(2)));
  std::filesystem::create_directories(folder.Path("drive"));
  ASSERT_NE(DefineDosDeviceA(0, "D:", folder.Path("drive").c_str()), 0);
  EXPECT_EQ(archive.Extract(ArchivePath().c_str(), "D:\\out", nullptr), 1);
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, "D:", nullptr);
  EXPECT_EQ(CompareTrees(folder.Path("src"), folder.Path("drive" + folder.Path("src").string())),
            "");
}

TEST_F(RealArchive, ExtractsWhatMasksSelectToWhereTheHookSays) {
  MakeTree(folder, "src", {{"a.txt", 10}, {"b.tmp", 10}, {"sub/c.txt", 10}, {"sub/d.tmp", 10}});
  ASSERT_EQ(Compress(), 1);
  ZorFind find;
  find.AddTail("*.txt");
  find.AddTail("*.tmp");
  find.AddTail(">d.*");
  archive.makeName = [this](const char*, const char* name) {
    return *name == 'a' ? CString()
                        : CString((Lib("else\\new ") + (strrchr(name, '.') - 1)).c_str());
  };
  EXPECT_EQ(archive.Extract(find, ArchivePath().c_str(), Lib("out").c_str()), 1);
  EXPECT_THAT(folder.List("else"), UnorderedElementsAre("new b.tmp", "new c.txt"));
  EXPECT_FALSE(folder.Exists("out"));
  EXPECT_EQ(Extract("none.*"), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorCanceled);
}

TEST_F(RealArchive, AddsReplacesAndRefusesByTheOverwriteMode) {
  MakeTree(folder, "src", {{"a.txt", 10}, {"b.txt", 20}});
  ASSERT_EQ(Compress({"a.txt"}), 1);
  EXPECT_EQ(Compress(1), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorSameName);
  EXPECT_THAT(Members(), ElementsAre("a.txt"));
  EXPECT_EQ(Compress({"b.txt"}, 1), 1);
  folder.WriteFile("src/a.txt", "changed");
  archive.SetOverwriteMode(1);
  EXPECT_EQ(Compress(1), 1);
  EXPECT_EQ(Members().size(), 2U);
  EXPECT_EQ(Extract(), 1);
  EXPECT_EQ(Difference(), "");
}

TEST_F(RealArchive, KnowsWhatAnArchiveIs) {
  MakeTree(folder, "src", {{"a.txt", 1000}});
  ASSERT_EQ(Compress(), 1);
  EXPECT_NE(archive.IsArchive(ArchivePath().c_str()), 0);
  EXPECT_EQ(archive.IsArchive(Lib("src/a.txt").c_str()), 0);
  EXPECT_EQ(archive.IsArchive(Lib("none").c_str()), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
  EXPECT_EQ(archive.Extract(Lib("src/a.txt").c_str(), Lib("out").c_str(), nullptr), 0);
  EXPECT_THAT(archive.GetError(), testing::AnyOf(ZorErrorArchiveOpen, ZorErrorCanceled));
}

TEST_F(RealArchive, NamesWhatIsMissing) {
  EXPECT_EQ(archive.CompressDir(Lib("none").c_str(), ArchivePath().c_str(), 0), 0);
  EXPECT_GE(archive.GetError(), ZorErrorDiskFull);
  EXPECT_FALSE(folder.Exists("a.lzh"));
  EXPECT_EQ(Extract(), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveNotFound);
}

}  // namespace
}  // namespace kozor::test
