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

}  // namespace

std::ostream& operator<<(std::ostream& out, const Report& r) {
  return out << "{" << r.phase << ", " << r.volumeResult << ", " << r.filesDone << ", "
             << r.bytesDone << ", " << r.bytesTotal << ", " << r.volume << ", \"" << r.fileName
             << "\"}";
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
