// FormatTest.cpp - the bytes on the media, written and read.
#include <algorithm>

#include "tests/support/Ability.h"
#include "tests/volume/VolumeTest.h"
#include "volume/VolumeFormat.h"

namespace kozor::test {
namespace {

class VolumeFormat : public VolumeTest {
 protected:
  // Puts the files into "source" and returns them in the order in which they are stored.
  std::vector<StoredFile> MakeSource(
      std::initializer_list<std::pair<const char*, std::size_t>> all) {
    std::vector<StoredFile> files;
    for (const auto& [name, size] : all) {
      files.push_back({name, RandomBytes(size, static_cast<std::uint32_t>(size) + 1),
                       1'700'000'000 + static_cast<std::int32_t>(files.size())});
      const std::string path = "source/" + files.back().name;
      folder.WriteFile(path, files.back().bytes);
      folder.SetTime(path, files.back().time);
    }
    return files;
  }
};

// The example of docs/volume-format.md, byte for byte.
TEST_F(VolumeFormat, AVolumeIsHeaderAreasHeadAndData) {
  folder.WriteFile("source/note.txt", "hello");
  folder.SetTime("source/note.txt", 0x65430000);
  volumes.SetIdentity("DEMO", "DISK", "hi");
  volumes.SetBackupVersion(102);  // any but 100 means 1.01
  ASSERT_EQ(Backup(), ZorErrorNone);

  std::string expected = "Morlig Filer Library Version 1.01";
  expected.resize(64);
  expected += "0123456789";
  expected.resize(96);
  expected += std::string("\4\0\0\0\4\0\0\0\2\0\0\0\1\0\0\0\1\0\0\0DEMODISKhi", 30);
  expected += std::string("\x20\0\0\0\x43\x65\5\0\0\0\x10\0note.txt\0hello", 26);
  EXPECT_THAT(ReadVolumes(), ElementsAre(Bytes(expected.begin(), expected.end())));
}

// Every possible cut: the model and the library produce the same sets, in both versions, from
// volumes slightly larger than the longest head to one that holds everything; and each set can be
// restored.
TEST_F(VolumeFormat, SetsOfEveryVolumeSizeAreLaidOutByTheRuleAndComeBack) {
  const auto files =
      MakeSource({{"a", 1}, {"b.bin", 75}, {"c.txt", 0}, {"d", 20}, {"e0000000", 33}, {"f", 0}});
  for (SetLayout layout :
       {SetLayout{101, "", "", ""}, SetLayout{100, std::string("i\0d", 3), "L", "memo"}}) {
    volumes.SetBackupVersion(layout.version);
    volumes.SetIdentity(layout.id, layout.label, layout.memo);
    const std::size_t smallest = layout.PayloadStart() + RecordHead(files[4]).size() + 1;
    EXPECT_EQ(Backup(static_cast<unsigned long>(smallest - 1)), ZorErrorCanceled);
    const std::size_t all = layout.Volumes(files)[0].size();
    for (layout.volumeBytes = smallest; layout.volumeBytes <= all; ++layout.volumeBytes) {
      SCOPED_TRACE(std::to_string(layout.version) + ", " + std::to_string(layout.volumeBytes));
      StartAnew();
      ASSERT_EQ(Backup(static_cast<unsigned long>(layout.volumeBytes)), ZorErrorNone);
      ASSERT_EQ(ReadVolumes(), layout.Volumes(files));
      ASSERT_EQ(Restore(), ZorErrorNone);
      ASSERT_EQ(Differences(), "");
      if (!layout.id.empty()) {
        const std::vector<std::string> areas = {layout.id, layout.label, layout.memo};
        ASSERT_TRUE(std::equal(areas.begin(), areas.end(), volumes.identity.begin()));
      }
    }
  }
}

// The second character of the name ends in 0x5C, the byte of a backslash.
TEST_F(VolumeFormat, ADoubleByteNameCountsItsBytes) {
  folder.WriteFile("source/\u65e5\u8868.txt", "x");
  ASSERT_EQ(Backup(), ZorErrorNone);
  const Bytes volume = ReadVolumes().at(0);
  EXPECT_EQ(volume[126], 16);
  EXPECT_EQ(std::string(volume.begin() + 128, volume.begin() + 136), "\x93\xfa\x95\x5c.txt");
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");
}

TEST_F(VolumeFormat, NamesOfUpTo523BytesAreStored) {
  if (!Can(Ability::LongPaths)) GTEST_SKIP() << "std::filesystem takes no such paths here";
  const std::string directories = std::string(200, 'd') + "/" + std::string(200, 'e') + "/";
  const std::string fits(523 - directories.size(), 'f');
  folder.WriteFile("source/" + directories + fits, "x");
  ASSERT_EQ(Backup(), ZorErrorNone);
  EXPECT_EQ(ReadVolumes().at(0).size(), 116U + 12 + 524 + 1);
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_EQ(Differences(), "");

  folder.WriteFile("source/" + directories + fits + "f", "x");
  EXPECT_EQ(Backup(), ZorErrorFileFailure);
}

TEST_F(VolumeFormat, NoAreasMeanThreeNullPointers) {
  MakeTree(folder, "source", {{"a", 10}});
  ASSERT_EQ(Backup(), ZorErrorNone);
  ASSERT_EQ(Restore(), ZorErrorNone);
  EXPECT_THAT(volumes.identity, ElementsAre("null", "null", "null"));
}

class VolumeHeader : public VolumeTest {
 protected:
  int Read(const Bytes& bytes, std::int64_t at = 0) {
    folder.WriteFile("volume", bytes);
    CFile file(folder.Lib("volume").c_str(), CFile::modeRead);
    file.Seek(at, CFile::begin);
    const int result = ZorReadVolumeHeader(file, &header);
    position = file.Seek(0, CFile::current);
    return result;
  }
  ZorVolumeHeader header{};
  std::uint64_t position = 0;
};

TEST_F(VolumeHeader, IsReadWithoutSignOrTheFileStaysWhereItStood) {
  Bytes narrow = SetLayout{100}.Header(0xFFFF, 0x12345678);
  std::fill(narrow.begin() + 96, narrow.begin() + 102, std::uint8_t{0xFF});
  ASSERT_EQ(Read(narrow), 1);
  EXPECT_EQ(position, 108U);
  EXPECT_EQ(header.applicationIdBytes, 65535);
  EXPECT_EQ(header.memoBytes, 65535);
  EXPECT_EQ(header.volumeNumber, 65535);
  EXPECT_EQ(header.numberOfFiles, 0x12345678);

  const Bytes good = SetLayout{}.Header(1, 1);
  for (std::size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(Read(Start(good, size)), 0) << size;
    EXPECT_EQ(position, 0U);
  }
  EXPECT_EQ(Read(good, 3), 0);
  EXPECT_EQ(position, 3U);
}

// Changes that are accepted in the two texts; version 1.00 ignores the digits.
TEST_F(VolumeHeader, TextsCountUpToTheirTerminators) {
  for (const int version : {100, 101}) {
    for (std::size_t offset = 0; offset < 96; ++offset) {
      Bytes bytes = SetLayout{version}.Header(1, 1);
      bytes.resize(200);
      bytes[offset] ^= 0x55;
      const bool identification = offset < 34;
      const bool digits = offset >= 64 && offset < 75 && version == 101;
      folder.WriteFile("volume", bytes);
      EXPECT_EQ(volumes.Check(folder.Lib("volume").c_str()), identification || digits ? 0 : 1)
          << version << ", " << offset;
    }
  }
}

}  // namespace
}  // namespace kozor::test
