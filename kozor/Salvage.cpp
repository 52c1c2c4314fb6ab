// Salvage.cpp - see Salvage.h.
#include "Salvage.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "VolumeReader.h"
#include "volume/VolumeFormat.h"

namespace kozor::program {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHeadBytes = sizeof(ZorFileRecord);
// If a stored file is itself a volume, its records look like those of the set.
constexpr std::string_view kVolumeMark = "Morlig Filer Library Version ";

// Whether the bytes may begin with the head of a record.
bool MayBeHead(std::span<const unsigned char> bytes) {
  constexpr unsigned kAttributes = 0xA7;
  if (bytes.size() < kRecordFixedBytes + 2) return false;
  if ((bytes[0] & ~kAttributes) != 0 || bytes[1] != 0 || bytes[5] >= 0x80) return false;
  const auto nameWord = static_cast<std::uint16_t>(bytes[10] | bytes[11] << 8);
  const std::uint32_t nameBytes = ZorNameBytes(nameWord);
  if (nameWord < 2 || nameBytes > kNameAreaBytes || kRecordFixedBytes + nameBytes > bytes.size()) {
    return false;
  }
  if (ZorIsWideName(nameWord)) {
    return bytes[kRecordFixedBytes + nameBytes - 1] == 0 &&
           bytes[kRecordFixedBytes + nameBytes - 2] == 0;
  }
  const auto name = bytes.subspan(kRecordFixedBytes, nameBytes - 1);
  return bytes[kRecordFixedBytes + nameBytes - 1] == 0 &&
         std::all_of(name.begin(), name.end(), [](unsigned char byte) { return byte >= ' '; });
}

// One volume of the set, and the next one, into which its last file may go on.
class RecordFinder {
 public:
  RecordFinder(VolumeReader& wholeVolume, VolumeReader* nextVolume)
      : volume(wholeVolume), next(nextVolume) {}

  // The position of the first record that can be proven.
  std::optional<std::uint64_t> Find() {
    constexpr std::size_t kBlockBytes = 1 << 20;
    std::vector<unsigned char> block(kBlockBytes + kHeadBytes);
    for (std::uint64_t at = volume.PayloadOffset(); at < volume.Size(); at += kBlockBytes) {
      const std::span<unsigned char> piece = std::span(block).first(
          static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), volume.Size() - at)));
      volume.Read(at, piece);
      const std::string_view text(reinterpret_cast<const char*>(piece.data()), piece.size());
      const std::size_t mark = text.find(kVolumeMark);
      for (std::size_t i = 0; i < std::min(piece.size(), kBlockBytes); ++i) {
        if (i >= mark) return std::nullopt;
        if (MayBeHead(piece.subspan(i)) && Leads(at + i)) return at + i;
      }
      StopIfAsked();
    }
    return std::nullopt;
  }

 private:
  // Whether heads follow one another from here to the end.  Checks each position only once.
  bool Leads(std::uint64_t at) {
    for (int heads = 0;; ++heads) {
      if (at == volume.Size()) return true;
      if (at > volume.Size()) return GoesOn(at - volume.Size(), heads);
      if (!seen.insert(at).second) return false;
      const std::optional<std::uint64_t> end = EndOfRecord(volume, at);
      if (!end) return false;
      at = *end;
    }
  }

  // Whether a file of which so many bytes are carried over ends in front of another head.
  bool GoesOn(std::uint64_t carried, int heads) {
    if (next == nullptr) return heads > 1;
    const std::uint64_t at = next->PayloadOffset() + carried;
    return at > next->Size() ? heads > 1 : at == next->Size() || EndOfRecord(*next, at).has_value();
  }

  static std::optional<std::uint64_t> EndOfRecord(VolumeReader& reader, std::uint64_t at) {
    std::vector<unsigned char> head(
        static_cast<std::size_t>(std::min<std::uint64_t>(kHeadBytes, reader.Size() - at)));
    reader.Read(at, head);
    if (!MayBeHead(head)) return std::nullopt;
    const VolumeRecord record = reader.RecordAt(at);
    const std::uint64_t end = record.offset + record.size;
    // Unless the file is empty, some of its data follows the head on the same volume.
    if (record.size > 0 && record.offset >= reader.Size()) return std::nullopt;
    return end;
  }

  VolumeReader& volume;
  VolumeReader* const next;
  std::unordered_set<std::uint64_t> seen;
};

// The volumes of the set that can be read, by number; null for the others.
std::vector<std::unique_ptr<VolumeReader>> OpenVolumes(const VolumeName& name) {
  std::vector<std::unique_ptr<VolumeReader>> volumes;
  const VolumeReader* first = nullptr;
  for (int number = 1; number <= name.LastNumber(); ++number) {
    auto& volume = volumes.emplace_back();
    const fs::path path = name.Path(number);
    try {
      volume = std::make_unique<VolumeReader>(path);
      if (first == nullptr) first = volume.get();
      if (volume->Header().number == number && first->Header().IsOfSameSet(volume->Header())) {
        continue;
      }
      Complain(Visible(path.string()) + ": another volume of the set, or of another set");
      if (first == volume.get()) first = nullptr;
      volume.reset();
    } catch (const Failure& failure) {
      Complain(failure.what());
    }
  }
  if (first == nullptr) throw Failure(Visible(name.Word()) + ": no volume of the set was found");
  return volumes;
}

}  // namespace

Catalogue SalvageCatalogue(const VolumeName& name) {
  const auto volumes = OpenVolumes(name);
  Catalogue catalogue;
  std::int64_t filesOfSet = 0;
  std::optional<std::uint64_t> carried = 0;  // of a file that goes on; none when nothing is known
  for (std::size_t i = 0; i < volumes.size(); ++i) {
    VolumeReader* const volume = volumes[i].get();
    if (volume == nullptr) {
      carried.reset();
      continue;
    }
    catalogue.identity = IdentityOf(volume->Header());
    filesOfSet = volume->Header().files;
    const std::uint64_t payload = volume->PayloadOffset();
    std::optional<std::uint64_t> at;
    if (carried) {
      at = payload + *carried;
    } else {
      at = RecordFinder(*volume, i + 1 < volumes.size() ? volumes[i + 1].get() : nullptr).Find();
    }
    if (!at) {
      Complain(Visible(name.Path(static_cast<int>(i) + 1).string()) +
               ": no file on it can be identified for certain");
      continue;
    }
    while (*at < volume->Size() && static_cast<std::int64_t>(catalogue.files.size()) < filesOfSet) {
      const VolumeRecord record = volume->RecordAt(*at);
      catalogue.files.push_back({.name = record.name,
                                 .bytes = record.size,
                                 .time = record.time,
                                 .attribute = record.attribute,
                                 .volume = static_cast<int>(i) + 1,
                                 .offset = record.offset});
      at = record.offset + record.size;
    }
    carried = *at - volume->Size();
  }
  const auto lost = filesOfSet - static_cast<std::int64_t>(catalogue.files.size());
  if (lost > 0) {
    Complain(std::to_string(lost) + (lost == 1 ? " file of the set is" : " files of the set are") +
             " lost with the missing volumes; their names are unknown");
  }
  return catalogue;
}

}  // namespace kozor::program
