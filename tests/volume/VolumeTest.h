// VolumeTest.h - the vocabulary of the tests of backup sets: an object whose hooks follow a script
// and record their arguments, and a folder with a tree to store, its volumes, and the restored
// tree.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <ostream>

#include "ZorMultiVolume.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;

// A call of OnAbort.
struct Report {
  int phase;
  int volumeResult;
  int filesDone;
  std::uint32_t bytesDone;
  std::uint32_t bytesTotal;
  int volume;
  std::string fileName;  // without directories; "-" for null

  bool operator==(const Report&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Report& report);

class ScriptedVolumes : public ZorMultiVolume {
 public:
  // The script.  Volumes are named by `nameVolume` unless a run is given a path.
  std::function<int(const ONABORTPARAM&)> abort;
  std::function<int(int kind, const unsigned char*, int)> checkVolume;
  std::function<CString(const char* destination, const char* name)> makeFileName;
  std::function<CString(int)> nameVolume;
  std::function<unsigned long(const char*)> space;

  // The recorded calls.
  std::vector<Report> reports;
  std::vector<std::string> identity;  // the arguments of OnCheckVolume

  int Check(const char* path) { return CheckVolume(path); }
  unsigned long DefaultSpace(const char* path) { return ZorMultiVolume::OnQueryDiskSpace(path); }
  void SetIdentity(const std::string& id, const std::string& label, const std::string& text) {
    SetAppricationID(Data(id), static_cast<int>(id.size()));
    SetVolume(Data(label), static_cast<int>(label.size()));
    SetMemo(Data(text), static_cast<int>(text.size()));
  }

 protected:
  // Without a script a run stops if a volume is asked for again, so that no test waits forever.
  int OnAbort(const ONABORTPARAM& p) override {
    reports.push_back({p.phase, p.volumeResult, p.filesDone, p.bytesDone, p.bytesTotal, p.volume,
                       BareName(p.fileName)});
    if (abort) return abort(p);
    return p.phase == PhaseVolume && p.volumeResult != VolumeFirstAsk ? 1 : 0;
  }
  int OnCheckVolume(int kind, const unsigned char* data, int length) override {
    identity.push_back(data == nullptr ? "null"
                                       : std::string(reinterpret_cast<const char*>(data),
                                                     static_cast<std::size_t>(length)));
    return checkVolume ? checkVolume(kind, data, length) : 1;
  }
  CString OnMakeFileName(const char* destination, const char* name) override {
    return makeFileName ? makeFileName(destination, name)
                        : ZorMultiVolume::OnMakeFileName(destination, name);
  }
  CString OnMakeVolumeName(int number) override {
    return nameVolume ? nameVolume(number) : ZorMultiVolume::OnMakeVolumeName(number);
  }
  unsigned long OnQueryDiskSpace(const char* path) override {
    return space ? space(path) : ZorMultiVolume::OnQueryDiskSpace(path);
  }

 private:
  static const unsigned char* Data(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
  }
  static std::string BareName(const char* path) {
    const std::string text(path != nullptr ? path : "-");
    return text.substr(text.rfind('\\') + 1);
  }
};

// Files are stored from "source" and restored to "target"; the volumes are "set/1", "set/2"...
class VolumeTest : public ::testing::Test {
 protected:
  VolumeTest() {
    volumes.nameVolume = [this](int number) {
      return CString(folder.Lib(VolumeName(number)).c_str());
    };
  }

  // Stores what the mask selects; a volume takes this many bytes, or as many as the object returns.
  ZorError Backup(unsigned long volumeBytes = 0xFFFFFFFF, const std::string& mask = "*.*") {
    volumes.space = [volumeBytes](const char*) { return volumeBytes; };
    return BackupToMedia(mask);
  }
  ZorError BackupToMedia(const std::string& mask = "*.*") {
    volumes.reports.clear();
    ZorFind find;
    find.SetCurrentDirectoryA(folder.Lib("source").c_str());
    find.AddTail(mask.c_str());
    return ErrorOf(volumes.Backup(find, nullptr));
  }
  ZorError Restore() { return Restore(folder.Lib("target").c_str()); }
  ZorError Restore(const char* destination) {
    volumes.reports.clear();
    volumes.identity.clear();
    return ErrorOf(volumes.Restore(nullptr, destination));
  }
  // Two files: the first takes two slices, and the second continues on a second volume.
  void MakeTwoFiles() { MakeTree(folder, "source", {{"a", 65'540}, {"b", 100}}); }
  static constexpr std::uintmax_t kHeader = 116;
  static constexpr std::uintmax_t kHead = 14;  // of a record whose name has one character
  static constexpr unsigned long kTwoVolumes = kHeader + kHead + 65'540 + kHead + 60;
  // An empty "set" and an empty "target" again.
  void StartAnew() {
    std::filesystem::remove_all(folder.Path("set"));
    std::filesystem::remove_all(folder.Path("target"));
  }

  static std::string VolumeName(int number) { return "set/" + std::to_string(number); }
  std::uintmax_t VolumeBytes() const {
    return std::filesystem::file_size(folder.Path(VolumeName(1)));
  }
  std::vector<Bytes> ReadVolumes() const {
    std::vector<Bytes> set;
    for (int number = 1; folder.Exists(VolumeName(number)); ++number) {
      set.push_back(folder.ReadFile(VolumeName(number)));
    }
    return set;
  }
  void WriteVolume(int number, const Bytes& bytes) { folder.WriteFile(VolumeName(number), bytes); }
  // The differences between source and target; empty if there are none.
  std::string Differences() const {
    return CompareTrees(folder.Path("source"), folder.Path("target"));
  }

  TestFolder folder;
  ScriptedVolumes volumes;

 private:
  // The outcome of a run with this result.  Its last report must be that of its end.
  ZorError ErrorOf(int result) const {
    EXPECT_EQ(result, volumes.GetError() == ZorErrorNone ? 1 : 0);
    if (!volumes.reports.empty()) {
      EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
    }
    return volumes.GetError();
  }
};

// The reference: a set as written by a slow and obvious writer.
struct StoredFile {
  std::string name;
  Bytes bytes;
  std::int32_t time = 0;
  std::uint8_t attribute = 0x20;
};
struct SetLayout {
  int version = 101;
  std::string id{};
  std::string label{};
  std::string memo{};
  std::size_t volumeBytes = 0xFFFFFFFF;

  Bytes Header(int number, std::size_t files) const;
  std::size_t PayloadStart() const { return Header(1, 1).size(); }
  std::vector<Bytes> Volumes(const std::vector<StoredFile>& files) const;
};
Bytes RecordHead(const StoredFile& file);
// The first `count` of the bytes.
Bytes Start(const Bytes& bytes, std::size_t count);
// Appends the lowest `width` bytes of `value`, low byte first.
void AppendNumber(Bytes& bytes, std::uint32_t value, int width);

}  // namespace kozor::test
