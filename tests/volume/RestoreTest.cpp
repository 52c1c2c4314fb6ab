// RestoreTest.cpp - restoring sets of both versions and other writers, wrong media, existing
// targets; and refusals.

#include "ZorFileServices.h"
#include "tests/support/Ability.h"
#include "tests/volume/VolumeTest.h"

namespace kozor::test {
namespace {

class VolumeRestore : public VolumeTest {
 protected:
  // A set of one volume with this record stream.
  void WriteSet(const Bytes& payload, std::size_t files = 1) {
    WriteVolume(1, Join({SetLayout{101, "identity", "", ""}.Header(1, files), payload}));
  }
  // The reasons given in requests for volumes.
  std::vector<int> Prompts() const {
    std::vector<int> results;
    for (const Report& report : volumes.reports) {
      if (report.phase == ZorMultiVolume::PhaseVolume) results.push_back(report.volumeResult);
    }
    return results;
  }
  unsigned int Attribute(const std::string& name) const {
    unsigned int attribute = 0xFFFF;
    EXPECT_NE(ZorGetFileAttribute(folder.Lib(name).c_str(), attribute), 0);
    return attribute;
  }
};

TEST_F(VolumeRestore, TakesVolumesOfBothVersionsInOneSet) {
  MakeTree(folder, "source", {{"a", 100}});
  ASSERT_EQ(Backup(191), ZorErrorNone);
  const std::vector<Bytes> newer = ReadVolumes();
  volumes.SetBackupVersion(100);
  ASSERT_EQ(Backup(183), ZorErrorNone);
  WriteVolume(1, newer.at(0));
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");
}

TEST_F(VolumeRestore, PassesOverVolumesWithoutPayload) {
  WriteVolume(1, SetLayout{}.Header(1, 1));
  WriteVolume(2, SetLayout{}.Header(2, 1));
  WriteVolume(3, Join({SetLayout{}.Header(3, 1), RecordHead({"a", {}})}));
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_TRUE(folder.ReadFile("target/a").empty());
}

// "w" and a character that code page 932 has in two bytes, the second of them 0x5C.
TEST_F(VolumeRestore, TakesWideNames) {
  Bytes head = {0x20, 0};
  AppendNumber(head, 1'000'000'000, 4);
  AppendNumber(head, 1, 4);
  AppendNumber(head, 2 * 2 + 1, 2);
  for (const std::uint32_t character : {0x77U, 0x8868U, 0U}) AppendNumber(head, character, 2);
  WriteSet(Join({head, {'!'}}));
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(folder.ReadFile("target/w\u8868"), Bytes{'!'});
}

TEST_F(VolumeRestore, GivesBackTimesAndAttributes) {
  MakeTree(folder, "source", {{"readonly", 10}, {"plain", 10}});
  SetReadOnly(folder.Path("source/readonly"));
  ASSERT_EQ(Backup(), ZorErrorNone);
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");
  for (const std::string name : {"readonly", "plain"}) {
    EXPECT_EQ(Attribute("target/" + name), Attribute("source/" + name));
  }
  EXPECT_EQ(Restore(), ZorErrorFileOpen);  // the read-only file is in the way now
}

// Rooted masks store complete paths, and those go back to where they came from.
TEST_F(VolumeRestore, CompletePathsIgnoreTheDestination) {
  MakeTree(folder, "source", {{"sub/a", 10}});
  ASSERT_EQ(Backup(0xFFFFFFFF, folder.Lib("source/*.*")), ZorErrorNone);
  folder.WriteFile("source/sub/a", "changed");
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(folder.ReadFile("source/sub/a").size(), 10U);
  EXPECT_FALSE(folder.Exists("target"));
}

TEST_F(VolumeRestore, AFileWithoutATargetIsReadAndLeftOut) {
  MakeTree(folder, "source", {{"a", 300}, {"b", 300}, {"c", 300}});
  ASSERT_EQ(Backup(250), ZorErrorNone);
  volumes.makeFileName = [](const char* destination, const char* name) {
    return CString(name) == "b" ? CString() : CString(destination) + name;
  };
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_THAT(folder.List("target"), ElementsAre("a", "c"));
  EXPECT_EQ(volumes.reports.back().filesDone, 3);
}

TEST_F(VolumeRestore, EndsByCountingFiles) {
  const StoredFile file{"a", Bytes(10, 'x')};
  const Bytes record = Join({RecordHead(file), file.bytes});
  WriteSet(Join({record, Bytes(500, 'x')}));  // followed by extra bytes
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(folder.ReadFile("target/a"), file.bytes);

  WriteSet({}, 0);
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(volumes.reports.size(), 3U);
  EXPECT_EQ(volumes.reports.back().volume, 0);

  StartAnew();
  WriteSet(record, 2);  // as a stopped backup leaves it
  EXPECT_EQ(Restore(), ZorErrorCanceled);
  EXPECT_EQ(folder.ReadFile("target/a"), file.bytes);
}

TEST_F(VolumeRestore, TargetsThatCannotBeMade) {
  WriteSet(RecordHead({"sub\\a", {}}));
  EXPECT_EQ(Restore(nullptr), ZorErrorMakeDirectory);
  folder.WriteFile("target/sub", "a file");
  EXPECT_EQ(Restore(), ZorErrorMakeDirectory);
  WriteSet(RecordHead({"sub", {}}));
  const CFile inUse(folder.Lib("target/sub").c_str(), CFile::modeRead);
  EXPECT_EQ(Restore(), ZorErrorFileOpen);
}

// First there is no medium, then each wrong one once, then the right one.
TEST_F(VolumeRestore, AsksAgainAndSaysWhy) {
  MakeTree(folder, "source", {{"a", 300}});
  volumes.SetIdentity("mine", "", "");
  ASSERT_EQ(Backup(350), ZorErrorNone);
  const std::vector<Bytes> set = ReadVolumes();
  Bytes foreign = set.at(0);
  foreign[116] = 'M';
  const Bytes media[] = {Bytes(115, 'x'), Bytes(200, 'x'), foreign, set.at(1), set.at(0)};
  volumes.nameVolume = [&](int number) {
    return CString(folder.Lib(number == 1 ? "medium" : VolumeName(number)).c_str());
  };
  volumes.checkVolume = [](int kind, const unsigned char* data, int) {
    return kind != 0 || *data == 'm';
  };
  std::size_t asked = 0;
  volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
    if (p.phase != ZorMultiVolume::PhaseVolume || p.volume > 0) return 0;
    if (asked > std::size(media)) return 1;
    if (asked > 1) CFile(folder.Lib("medium").c_str(), CFile::modeReadWrite);  // closed again
    if (asked > 0) folder.WriteFile("medium", media[asked - 1]);
    ++asked;
    return 0;
  };
  EXPECT_EQ(Restore(), ZorErrorNone);
  EXPECT_THAT(Prompts(), ElementsAre(0, 4, 4, 5, 5, 6, 0));
  EXPECT_EQ(Differences(), "");
}

// Impossible lengths are refused before anything is allocated or passed to a hook.
TEST_F(VolumeRestore, RefusesImpossibleAreaLengths) {
  constexpr std::uint32_t kHuge = 0x7FFFFFFF;
  constexpr std::uint32_t kNegative = 0xFFFFFFFF;
  const std::array<std::uint32_t, 3> rows[] = {{kHuge, kHuge, 2},
                                               {0, 201, 0},
                                               {kNegative, 1, 0},
                                               {300, kNegative - 299, 0},
                                               {0, 0, kNegative}};
  for (const auto& lengths : rows) {
    Bytes volume = Start(SetLayout{}.Header(1, 1), 96);
    for (const std::uint32_t length : lengths) AppendNumber(volume, length, 4);
    AppendNumber(volume, 1, 4);
    AppendNumber(volume, 1, 4);
    WriteVolume(1, Join({volume, Bytes(200)}));
    EXPECT_EQ(Restore(), ZorErrorCanceled);
    EXPECT_THAT(Prompts(), ElementsAre(0, 5));
    EXPECT_TRUE(volumes.identity.empty());
  }
}

TEST_F(VolumeRestore, RefusesHeadsThatCannotBe) {
  const StoredFile first{"first", {'1'}};
  const auto expectDamage = [&](const Bytes& head) {
    WriteSet(Join({RecordHead(first), first.bytes, head}), 2);
    EXPECT_EQ(Restore(), ZorErrorFileFailure);
    EXPECT_EQ(folder.ReadFile("target/first"), first.bytes);
  };
  const Bytes head = RecordHead({"name", {}});
  for (std::size_t size = 1; size < head.size(); ++size) {  // a volume cut inside the head
    expectDamage(Start(head, size));
  }
  for (const std::uint32_t nameWord : {2 * 524U, 0xFFFEU, 2 * 262U + 1, 0xFFFFU}) {
    Bytes bad = Start(head, 10);
    AppendNumber(bad, nameWord, 2);
    expectDamage(Join({bad, Bytes(70'000, 'n')}));
  }
}

TEST_F(VolumeRestore, AVolumeThatShrinksWhileItIsReadIsDamage) {
  if (!Can(Ability::ChangingOpenFiles)) GTEST_SKIP() << "the system keeps open files from it";
  MakeTree(folder, "source", {{"a", 200'000}});
  ASSERT_EQ(Backup(), ZorErrorNone);
  volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
    if (p.phase == ZorMultiVolume::PhaseFileRunning) folder.Truncate(VolumeName(1), 100'000);
    return 0;
  };
  EXPECT_EQ(Restore(), ZorErrorFileFailure);
  EXPECT_EQ(folder.ReadFile("target/a").size(), 65'536U);
}

}  // namespace
}  // namespace kozor::test
