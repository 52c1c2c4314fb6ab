// RestoreTest.cpp - sets as they may come: both versions, other writers' names, wrong media,
// targets in the way; and what is refused.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "ZorFileServices.h"
#include "tests/volume/VolumeTest.h"

namespace kozor::test {
namespace {

using ::testing::ElementsAre;

class VolumeRestore : public VolumeTest {
 protected:
  // A set of one volume with this record stream.
  void WriteSet(const Bytes& payload, std::size_t files = 1, int version = 101) {
    Bytes volume = SetLayout{version, "identity", "", ""}.Header(1, files);
    volume.insert(volume.end(), payload.begin(), payload.end());
    WriteVolume(1, volume);
  }
  // The reasons with which volumes were asked for.
  std::vector<int> Prompts() const {
    std::vector<int> results;
    for (const Report& report : volumes.reports) {
      if (report.phase == ZorMultiVolume::PhaseVolume) results.push_back(report.volumeResult);
    }
    return results;
  }
  void ExpectFailure(ZorError error) {
    EXPECT_EQ(Restore(), 0);
    EXPECT_EQ(volumes.GetError(), error);
  }
};

TEST_F(VolumeRestore, TakesVolumesOfBothVersionsInOneSet) {
  MakeTree(folder, "source", {{"a", 100}});
  ASSERT_EQ(Backup(191), 1);
  const std::vector<Bytes> newer = ReadVolumes();
  volumes.SetBackupVersion(100);
  ASSERT_EQ(Backup(183), 1);
  WriteVolume(1, newer.at(0));
  EXPECT_EQ(Restore(), 1);
  EXPECT_EQ(Differences(), "");
}

TEST_F(VolumeRestore, PassesOverVolumesWithoutPayload) {
  WriteSet({});
  WriteVolume(2, SetLayout{}.Header(2, 1));
  Bytes volume = SetLayout{}.Header(3, 1);
  const Bytes head = RecordHead({"a", {}});
  volume.insert(volume.end(), head.begin(), head.end());
  WriteVolume(3, volume);
  EXPECT_EQ(Restore(), 1);
  EXPECT_TRUE(folder.ReadFile("target/a").empty());
}

// "w" and a character that code page 932 has in two bytes, the second of them 0x5C.
TEST_F(VolumeRestore, TakesWideNames) {
  Bytes head = {0x20, 0};
  AppendNumber(head, 1'000'000'000, 4);
  AppendNumber(head, 1, 4);
  AppendNumber(head, 2 * 2 + 1, 2);
  for (const std::uint32_t character : {0x77U, 0x8868U, 0U}) AppendNumber(head, character, 2);
  head.push_back('!');
  WriteSet(head);
  ASSERT_EQ(Restore(), 1);
  EXPECT_EQ(folder.ReadFile("target/w\u8868"), Bytes{'!'});
}

TEST_F(VolumeRestore, GivesBackTimesAndAttributes) {
  MakeTree(folder, "source", {{"readonly", 10}, {"plain", 10}});
  chmod(folder.Path("source/readonly").c_str(), 0444);
  ASSERT_EQ(Backup(), 1);
  ASSERT_EQ(Restore(), 1);
  EXPECT_EQ(Differences(), "");
  for (const char* name : {"readonly", "plain"}) {
    unsigned int stored = 0;
    unsigned int restored = 1;
    ZorGetFileAttribute(folder.Lib(std::string("source/") + name).c_str(), stored);
    ZorGetFileAttribute(folder.Lib(std::string("target/") + name).c_str(), restored);
    EXPECT_EQ(restored, stored) << name;
  }
  ExpectFailure(ZorErrorFileOpen);  // the read-only file is in the way now
}

// Rooted masks store complete paths, and those go back to where they came from.
TEST_F(VolumeRestore, CompletePathsIgnoreTheDestination) {
  MakeTree(folder, "source", {{"sub/a", 10}});
  ASSERT_EQ(Backup(0xFFFFFFFF, folder.Lib("source\\*.*").c_str()), 1);
  folder.WriteFile("source/sub/a", "changed");
  ASSERT_EQ(Restore(), 1);
  EXPECT_EQ(folder.ReadFile("source/sub/a").size(), 10U);
  EXPECT_FALSE(folder.Exists("target"));
}

TEST_F(VolumeRestore, AFileWithoutATargetIsReadAndLeftOut) {
  MakeTree(folder, "source", {{"a", 300}, {"b", 300}, {"c", 300}});
  ASSERT_EQ(Backup(250), 1);
  volumes.makeFileName = [](const char* destination, const char* name) {
    return CString(name) == "b" ? CString() : CString(destination) + name;
  };
  ASSERT_EQ(Restore(), 1);
  EXPECT_THAT(folder.List("target"), ElementsAre("a", "c"));
  EXPECT_EQ(volumes.reports.back().filesDone, 3);
}

TEST_F(VolumeRestore, EndsByCountingFiles) {
  const StoredFile file{"a", Bytes(10, 'x')};
  Bytes payload = RecordHead(file);
  payload.insert(payload.end(), 10 + 500, 'x');  // and bytes that belong to nobody
  WriteSet(payload);
  EXPECT_EQ(Restore(), 1);
  EXPECT_EQ(folder.ReadFile("target/a"), file.bytes);

  WriteSet({}, 0);
  EXPECT_EQ(Restore(), 1);
  EXPECT_EQ(volumes.reports.size(), 3U);
  EXPECT_EQ(volumes.reports.back().volume, 0);

  payload.resize(RecordHead(file).size() + 10);
  WriteSet(payload, 2);  // as a stopped backup leaves it
  ExpectFailure(ZorErrorCanceled);
  EXPECT_EQ(folder.ReadFile("target/a"), file.bytes);
}

TEST_F(VolumeRestore, TargetsThatCannotBeMade) {
  WriteSet(RecordHead({"sub\\a", {}}));
  EXPECT_EQ(volumes.Restore(nullptr, nullptr), 0);
  EXPECT_EQ(volumes.GetError(), ZorErrorMakeDirectory);
  folder.WriteFile("target/sub", "a file");
  ExpectFailure(ZorErrorMakeDirectory);
  WriteSet(RecordHead({"sub", {}}));
  const CFile inUse(folder.Lib("target/sub").c_str(), CFile::modeRead);
  ExpectFailure(ZorErrorFileOpen);
}

// Each wrong medium is offered once, then the right one.
TEST_F(VolumeRestore, AsksAgainAndSaysWhy) {
  MakeTree(folder, "source", {{"a", 300}});
  volumes.SetIdentity("mine", "", "");
  ASSERT_EQ(Backup(350), 1);
  const Bytes good = ReadVolumes().at(0);
  folder.WriteFile("offered/2", Bytes(115, 'x'));
  folder.WriteFile("offered/3", Bytes(200, 'x'));
  Bytes foreign = good;
  foreign[116] = 'M';
  folder.WriteFile("offered/4", foreign);
  folder.WriteFile("offered/5", ReadVolumes().at(1));
  folder.WriteFile("offered/6", good);
  std::filesystem::create_directories(folder.Path("offered/1"));
  int attempt = 0;
  volumes.nameVolume = [&](int number) {
    return CString(folder.Lib(number == 1 ? "medium" : VolumeName(number)).c_str());
  };
  volumes.checkVolume = [](int kind, const unsigned char* data, int) {
    return kind != 0 || *data == 'm';
  };
  volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
    if (p.phase != ZorMultiVolume::PhaseVolume || p.volume > 0) return 0;
    if (attempt > 2) CFile(folder.Lib("medium").c_str(), CFile::modeReadWrite);  // closed again
    std::filesystem::remove_all(folder.Path("medium"));
    if (attempt > 6) return 1;
    if (attempt > 0) {
      std::filesystem::copy(folder.Path("offered/" + std::to_string(attempt)),
                            folder.Path("medium"));
    }
    ++attempt;
    return 0;
  };
  EXPECT_EQ(Restore(), 1);
  EXPECT_THAT(Prompts(), ElementsAre(0, 4, 4, 4, 5, 5, 6, 0));
  EXPECT_EQ(Differences(), "");
}

// Lengths that no volume can have are refused before anything is allocated or shown.
TEST_F(VolumeRestore, RefusesImpossibleAreaLengths) {
  constexpr std::uint32_t kHuge = 0x7FFFFFFF;
  constexpr std::uint32_t kNegative = 0xFFFFFFFF;
  for (const auto& lengths : std::vector<std::array<std::uint32_t, 3>>{{kHuge, kHuge, 2},
                                                                       {kHuge, 0, 0},
                                                                       {0, 201, 0},
                                                                       {kNegative, 1, 0},
                                                                       {300, kNegative - 299, 0},
                                                                       {0, 0, kNegative}}) {
    Bytes volume = SetLayout{}.Header(1, 1);
    volume.resize(96);
    for (const std::uint32_t length : lengths) AppendNumber(volume, length, 4);
    AppendNumber(volume, 1, 4);
    AppendNumber(volume, 1, 4);
    volume.resize(116 + 200);
    WriteVolume(1, volume);
    ExpectFailure(ZorErrorCanceled);
    EXPECT_THAT(Prompts(), ElementsAre(0, 5));
    EXPECT_TRUE(volumes.identity.empty());
  }
}

TEST_F(VolumeRestore, RefusesHeadsThatCannotBe) {
  const StoredFile first{"first", {'1'}};
  Bytes before = RecordHead(first);
  before.push_back('1');
  const auto expectDamage = [&](const Bytes& head) {
    Bytes payload = before;
    payload.insert(payload.end(), head.begin(), head.end());
    WriteSet(payload, 2);
    ExpectFailure(ZorErrorFileFailure);
    EXPECT_EQ(folder.ReadFile("target/first"), first.bytes);
  };
  const Bytes head = RecordHead({"name", {}});
  for (std::size_t size = 1; size < head.size(); ++size) {  // a volume cut inside the head
    expectDamage(Bytes(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(size)));
  }
  for (const std::uint32_t nameWord : {2 * 524U, 0xFFFEU, 2 * 262U + 1, 0xFFFFU}) {
    Bytes bad(head.begin(), head.begin() + 10);
    AppendNumber(bad, nameWord, 2);
    bad.resize(bad.size() + 70'000, 'n');
    expectDamage(bad);
  }
}

TEST_F(VolumeRestore, AVolumeThatShrinksWhileItIsReadIsDamage) {
  MakeTree(folder, "source", {{"a", 200'000}});
  ASSERT_EQ(Backup(), 1);
  volumes.abort = [&](const ZorMultiVolume::ONABORTPARAM& p) {
    if (p.phase == ZorMultiVolume::PhaseFileRunning) folder.Truncate(VolumeName(1), 100'000);
    return 0;
  };
  ExpectFailure(ZorErrorFileFailure);
  EXPECT_EQ(folder.ReadFile("target/a").size(), 65'536U);
}

// Nothing that a damaged byte says may crash, loop or write outside the target.  Run it under the
// sanitizers.
TEST_F(VolumeRestore, SurvivesDamageToEveryByteAndEveryCut) {
  MakeTree(folder, "source", {{"a.txt", 30}, {"empty", 0}, {"sub/b", 100}});
  for (const int version : {100, 101}) {
    volumes.SetBackupVersion(version);
    volumes.SetIdentity("id", "label", "memo");
    StartAnew();
    ASSERT_EQ(Backup(270), 1);
    const std::vector<Bytes> set = ReadVolumes();
    ASSERT_EQ(set.size(), 2U);
    const auto restore = [&](const Bytes& volume) {
      WriteVolume(1, volume);
      std::filesystem::remove_all(folder.Path("target"));
      const int result = Restore();
      EXPECT_EQ(result, volumes.GetError() == ZorErrorNone ? 1 : 0);
      EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
    };
    for (std::size_t offset = 0; offset < set[0].size(); ++offset) {
      for (const int flip : {0x01, 0x80, 0xFF}) {
        Bytes damaged = set[0];
        damaged[offset] = static_cast<std::uint8_t>(damaged[offset] ^ flip);
        restore(damaged);
      }
      restore(Bytes(set[0].begin(), set[0].begin() + static_cast<std::ptrdiff_t>(offset)));
      EXPECT_NE(volumes.GetError(), ZorErrorNone) << offset;
    }
    EXPECT_THAT(folder.List(), ::testing::Each(::testing::AnyOf(::testing::StartsWith("set/"),
                                                                ::testing::StartsWith("source/"),
                                                                ::testing::StartsWith("target/"))));
  }
}

}  // namespace
}  // namespace kozor::test
