// VolumeReader.h - what the header of a backup volume says, and the files that begin on it.  The
// format is laid open in docs/volume-format.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace kozor::program {

struct VolumeHeader {
  int formatVersion = 0;  // 100 or 101
  std::int64_t number = 0;
  std::int64_t files = 0;
  std::string id;
  std::string label;
  std::string memo;
};

struct VolumeRecord {
  std::string name;
  std::uint32_t size = 0;  // in bytes
  std::int32_t time = 0;   // seconds since 1970, UTC
  std::uint8_t attribute = 0;
};

class VolumeReader {
 public:
  // Throws Failure when `path` can't be read or isn't a volume.
  explicit VolumeReader(const std::filesystem::path& path);

  const VolumeHeader& Header() const { return header; }
  // Leaves out bytes at the start of the payload that belong to a file of the volume before.
  void Skip(std::uint64_t bytes) { at += bytes; }
  // The next record that begins on the volume; nothing behind the last one.  Throws Failure when
  // the bytes there are no record.
  std::optional<VolumeRecord> Next();
  // How many bytes of the last file stand on the volumes that follow.
  std::uint64_t BytesCarriedOver() const { return at > end ? at - end : 0; }

 private:
  std::string Read(std::uint64_t offset, std::size_t size);

  std::filesystem::path path;
  std::ifstream file;
  VolumeHeader header;
  std::uint64_t at = 0;   // where the next record begins
  std::uint64_t end = 0;  // length of the file
};

}  // namespace kozor::program
