// VolumeReader.h - reads a backup volume: its header, the files that begin on it, and its bytes.
// Format: docs/volume-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/classlib/ClassLib.h"

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

// All operations throw Failure, with the volume's name, if the bytes can't be read or are
// malformed.
class VolumeReader {
 public:
  explicit VolumeReader(const std::filesystem::path& path);

  const VolumeHeader& Header() const { return header; }
  // The offset at which the payload begins, and the size of the volume.
  std::uint64_t PayloadOffset() const { return payload; }
  std::uint64_t Size() const { return end; }

  // Skips bytes at the start of the payload that belong to a file from the previous volume.
  void Skip(std::uint64_t bytes) { at += bytes; }
  // The next record that begins on the volume; nothing after the last one.
  std::optional<VolumeRecord> Next();
  // The record whose head stands at this place.
  VolumeRecord RecordAt(std::uint64_t offset);
  // The bytes of the last file that continue on later volumes.
  std::uint64_t BytesCarriedOver() const { return at > end ? at - end : 0; }

  // Reads bytes of the volume.  Small reads go through a read-ahead buffer.
  void Read(std::uint64_t offset, std::span<unsigned char> bytes);

 private:
  std::string ReadText(std::uint64_t offset, std::size_t size);
  void ReadFile(std::uint64_t offset, std::span<unsigned char> bytes);
  // Runs `work` and turns the file's exceptions into Failure.
  template <typename Work>
  void Guarded(const Work& work) const;

  std::filesystem::path path;
  CFile file;
  VolumeHeader header;
  std::uint64_t payload = 0;
  std::uint64_t at = 0;   // offset of the next record
  std::uint64_t end = 0;  // length of the file
  std::vector<unsigned char> buffer;
  std::uint64_t bufferBegin = 0;
};

}  // namespace kozor::program
