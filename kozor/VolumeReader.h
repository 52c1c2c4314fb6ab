// VolumeReader.h - what the header of a backup volume says, the files that begin on it, and its
// bytes.  The format is laid open in docs/volume-format.md.
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

// Everything here throws Failure, with the volume's name, when the bytes can't be read or make no
// sense.
class VolumeReader {
 public:
  explicit VolumeReader(const std::filesystem::path& path);

  const VolumeHeader& Header() const { return header; }
  // Where the areas end and the payload begins, and where the volume ends.
  std::uint64_t PayloadOffset() const { return payload; }
  std::uint64_t Size() const { return end; }

  // Leaves out bytes at the start of the payload that belong to a file of the volume before.
  void Skip(std::uint64_t bytes) { at += bytes; }
  // The next record that begins on the volume; nothing after the last one.
  std::optional<VolumeRecord> Next();
  // How many bytes of the last file stand on the volumes that follow.
  std::uint64_t BytesCarriedOver() const { return at > end ? at - end : 0; }

  // Reads bytes of the volume.  Short pieces come from a buffer, which is good for reading on.
  void Read(std::uint64_t offset, std::span<unsigned char> bytes);

 private:
  std::string ReadText(std::uint64_t offset, std::size_t size);
  void ReadFile(std::uint64_t offset, std::span<unsigned char> bytes);
  // Does it, and throws Failure where the file fails.
  template <typename Work>
  void Guarded(const Work& work) const;

  std::filesystem::path path;
  CFile file;
  VolumeHeader header;
  std::uint64_t payload = 0;
  std::uint64_t at = 0;   // where the next record begins
  std::uint64_t end = 0;  // length of the file
  std::vector<unsigned char> buffer;
  std::uint64_t bufferBegin = 0;
};

}  // namespace kozor::program
