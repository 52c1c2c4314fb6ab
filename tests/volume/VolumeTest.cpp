// VolumeTest.cpp - see VolumeTest.h.
#include "tests/volume/VolumeTest.h"

#include <algorithm>

namespace kozor::test {

namespace {

// Every write to a volume is flushed; in memory the suite takes seconds.
class InMemory : public ::testing::Environment {
 public:
  void SetUp() override { UseMemory(); }
};
[[maybe_unused]] const auto* const kInMemory =
    ::testing::AddGlobalTestEnvironment(new InMemory);  // owned by the framework

const unsigned char* Data(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string BareName(const char* path) {
  if (path == nullptr) return "-";
  const std::string text(path);
  return text.substr(text.rfind('\\') + 1);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Report& r) {
  return out << "{" << r.phase << ", " << r.volumeResult << ", " << r.filesDone << ", "
             << r.bytesDone << ", " << r.bytesTotal << ", " << r.volume << ", \"" << r.fileName
             << "\"}";
}

void ScriptedVolumes::SetIdentity(const std::string& id, const std::string& label,
                                  const std::string& text) {
  SetAppricationID(Data(id), static_cast<int>(id.size()));
  SetVolume(Data(label), static_cast<int>(label.size()));
  SetMemo(Data(text), static_cast<int>(text.size()));
}

int ScriptedVolumes::OnAbort(const ONABORTPARAM& p) {
  reports.push_back({p.phase, p.volumeResult, p.filesDone, p.bytesDone, p.bytesTotal, p.volume,
                     BareName(p.fileName)});
  if (abort) return abort(p);
  return p.phase == PhaseVolume && p.volumeResult != VolumeFirstAsk ? 1 : 0;
}

int ScriptedVolumes::OnCheckVolume(int kind, const unsigned char* data, int length) {
  identity.push_back(data == nullptr ? "null"
                                     : std::string(reinterpret_cast<const char*>(data),
                                                   static_cast<std::size_t>(length)));
  return checkVolume ? checkVolume(kind, data, length) : 1;
}

VolumeTest::VolumeTest() {
  volumes.nameVolume = [this](int number) {
    return CString(folder.Lib(VolumeName(number)).c_str());
  };
}

ZorError VolumeTest::Backup(unsigned long volumeBytes, const std::string& mask) {
  volumes.space = [volumeBytes](const char*) { return volumeBytes; };
  return BackupToMedia(mask);
}

ZorError VolumeTest::BackupToMedia(const std::string& mask) {
  volumes.reports.clear();
  ZorFind find;
  find.SetCurrentDirectoryA(folder.Lib("source").c_str());
  find.AddTail(mask.c_str());
  return ErrorOf(volumes.Backup(find, nullptr));
}

ZorError VolumeTest::Restore(const char* destination) {
  volumes.reports.clear();
  volumes.identity.clear();
  return ErrorOf(volumes.Restore(nullptr, destination));
}

ZorError VolumeTest::ErrorOf(int result) const {
  EXPECT_EQ(result, volumes.GetError() == ZorErrorNone ? 1 : 0);
  if (!volumes.reports.empty()) {
    EXPECT_EQ(volumes.reports.back().phase, ZorMultiVolume::PhaseEnd);
  }
  return volumes.GetError();
}

void VolumeTest::StartAnew() {
  std::filesystem::remove_all(folder.Path("set"));
  std::filesystem::remove_all(folder.Path("target"));
}

std::vector<Bytes> VolumeTest::ReadVolumes() const {
  std::vector<Bytes> set;
  for (int number = 1; folder.Exists(VolumeName(number)); ++number) {
    set.push_back(folder.ReadFile(VolumeName(number)));
  }
  return set;
}

std::string VolumeTest::Differences() const {
  return CompareTrees(folder.Path("source"), folder.Path("target"));
}

void AppendNumber(Bytes& bytes, std::uint32_t value, int width) {
  for (int i = 0; i < width; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

Bytes Start(const Bytes& bytes, std::size_t count) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
}

Bytes RecordHead(const StoredFile& file) {
  Bytes head = {file.attribute, 0};
  AppendNumber(head, static_cast<std::uint32_t>(file.time), 4);
  AppendNumber(head, static_cast<std::uint32_t>(file.bytes.size()), 4);
  AppendNumber(head, static_cast<std::uint32_t>(file.name.size()) * 2, 2);
  head.insert(head.end(), file.name.begin(), file.name.end());
  head.push_back(0);
  return head;
}

Bytes SetLayout::Header(int number, std::size_t files) const {
  const std::string text = "Morlig Filer Library Version 1.0" + std::to_string(version - 100);
  Bytes bytes(text.begin(), text.end());
  bytes.resize(64);
  for (char digit = '0'; digit <= '9'; ++digit) bytes.push_back(static_cast<std::uint8_t>(digit));
  bytes.resize(96);
  const int width = version == 100 ? 2 : 4;
  for (const std::string* area : {&id, &label, &memo}) {
    AppendNumber(bytes, static_cast<std::uint32_t>(area->size()), width);
  }
  AppendNumber(bytes, static_cast<std::uint32_t>(number), width);
  AppendNumber(bytes, static_cast<std::uint32_t>(files), 4);
  for (const std::string* area : {&id, &label, &memo}) {
    bytes.insert(bytes.end(), area->begin(), area->end());
  }
  return bytes;
}

std::vector<Bytes> SetLayout::Volumes(const std::vector<StoredFile>& files) const {
  std::vector<Bytes> set;
  const auto append = [&](const Bytes& piece, std::size_t wanted) {
    if (set.empty() || set.back().size() + wanted > volumeBytes) {
      set.push_back(Header(static_cast<int>(set.size()) + 1, files.size()));
    }
    set.back().insert(set.back().end(), piece.begin(), piece.end());
  };
  for (const StoredFile& file : files) {
    const Bytes head = RecordHead(file);
    append(head, head.size() + 1);
    for (const std::uint8_t byte : file.bytes) append({byte}, 1);
  }
  return set;
}

}  // namespace kozor::test
