// VolumeReader.h - reads a backup volume: its header, the files that begin on it, and its bytes.
// Format: docs/volume-format.md.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kozor::program {

struct VolumeHeader {
  int formatVersion = 0;  // 100 or 101
  std::int64_t number = 0;
  std::int64_t files = 0;
  std::string id;
  std::string label;
  std::string memo;

  bool IsOfSameSet(const VolumeHeader& other) const {
    return id == other.id && label == other.label && memo == other.memo;
  }
};

struct VolumeRecord {
  std::string name;
  std::uint32_t size = 0;  // in bytes
  std::int32_t time = 0;   // seconds since 1970, UTC
  std::uint8_t attribute = 0;
  std::uint64_t offset = 0;  // of its data on the volume
};

// The bytes of a volume: a file, or one that is still being written (VolumeFollower.h).
class VolumeBytes {
 public:
  virtual ~VolumeBytes() = default;
  // Returns how many bytes there are, at least `wanted` unless the volume ends before.
  virtual std::uint64_t Await(std::uint64_t wanted) = 0;
  // Reads bytes that are there.  Throws Failure.
  virtual void Read(std::uint64_t offset, std::span<unsigned char> bytes) = 0;
};

// All operations throw Failure, with the volume's name, if the bytes can't be read or are
// malformed.
class VolumeReader {
 public:
  explicit VolumeReader(const std::filesystem::path& path);
  VolumeReader(std::filesystem::path path, std::unique_ptr<VolumeBytes> volumeBytes);

  const VolumeHeader& Header() const { return header; }
  // The offset at which the payload begins, and the size of the volume.
  std::uint64_t PayloadOffset() const { return payload; }
  std::uint64_t Size() { return Await(std::numeric_limits<std::uint64_t>::max()); }
  // As in VolumeBytes.
  std::uint64_t Await(std::uint64_t wanted) { return bytes->Await(wanted); }

  // Skips bytes at the start of the payload that belong to a file from the previous volume.
  void Skip(std::uint64_t count) { at += count; }
  // The next record that begins on the volume; nothing after the last one.
  std::optional<VolumeRecord> Next();
  // The record whose head stands at this place.
  VolumeRecord RecordAt(std::uint64_t offset);
  // The bytes of the last file that continue on later volumes.
  std::uint64_t BytesCarriedOver() { return at - std::min(at, Size()); }

  // Reads bytes of the volume.  Small reads go through a read-ahead buffer.
  void Read(std::uint64_t offset, std::span<unsigned char> target);

 private:
  std::string ReadText(std::uint64_t offset, std::size_t size);
  void ReadHeader();
  bool Reaches(std::uint64_t size) { return Await(size) >= size; }

  std::filesystem::path path;
  std::unique_ptr<VolumeBytes> bytes;
  VolumeHeader header;
  std::uint64_t payload = 0;
  std::uint64_t at = 0;  // offset of the next record
  std::vector<unsigned char> buffer;
  std::uint64_t bufferBegin = 0;
};

}  // namespace kozor::program
