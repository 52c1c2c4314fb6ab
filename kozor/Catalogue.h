// Catalogue.h - the catalogue of a backup set: checksums, and metadata for which the volume format
// has no field.  Format: docs/catalogue.md.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Sha256.h"
#include "VolumeReader.h"
#include "Volumes.h"

namespace kozor::program {

struct CatalogueVolume {
  int number = 0;
  std::string file = {};  // file name without directories
  std::uint64_t bytes = 0;
  std::string sha256 = {};
};

struct CatalogueFile {
  std::string name;  // library name
  std::uint64_t bytes = 0;
  std::int64_t time = 0;  // last write, seconds since 1970
  unsigned int mode = 0;  // permission bits, 0 if unknown
  std::uint8_t attribute = 0;
  int volume = 0;            // on which its data begins
  std::uint64_t offset = 0;  // of its data on that volume
  std::string sha256 = {};
};

struct CatalogueFolder {
  std::string name;
  std::int64_t time = 0;
  unsigned int mode = 0;
};

struct CatalogueLink {
  std::string name;
  std::string target;
  std::int64_t time = 0;
};

struct Catalogue {
  std::string identity;  // checksum of the set's three areas
  std::vector<CatalogueVolume> volumes;
  std::vector<CatalogueFile> files;  // in the order of the set
  std::vector<CatalogueFolder> folders;
  std::vector<CatalogueLink> links;

  std::uint64_t TotalBytes() const;
};

// The checksum that identifies a set.
std::string IdentityOf(const VolumeHeader& header);

// Reads the volumes of a set in order and catalogues their contents.
class SetScanner {
 public:
  // Throws Failure if the volume isn't the next one of the set, or is damaged.
  void Scan(const std::filesystem::path& path);
  void Scan(const std::filesystem::path& path, VolumeReader& volume);
  // Whether the last file of the set has been read completely.
  bool AtEnd() const { return !isFirst && recordsLeft == 0 && bytesLeft == 0; }
  Catalogue& Result() { return catalogue; }
  const Catalogue& Result() const { return catalogue; }

 private:
  Catalogue catalogue;
  VolumeHeader first;
  bool isFirst = true;
  std::int64_t recordsLeft = 0;
  std::uint64_t bytesLeft = 0;  // of the current file
  Sha256 fileSum;
};

// The paths of the catalogue of a set and of the checksum file of a volume.
std::filesystem::path CataloguePath(const VolumeName& name);
std::filesystem::path ChecksumPath(const std::filesystem::path& volume);

// These throw Failure if a file can't be written or is malformed.
void WriteCatalogue(const Catalogue& catalogue, const std::filesystem::path& path);
void WriteChecksum(const CatalogueVolume& volume, const std::filesystem::path& volumePath);
// Nothing if there is no such file.
std::optional<Catalogue> ReadCatalogue(const std::filesystem::path& path);
std::optional<std::string> ReadChecksum(const std::filesystem::path& volume);

}  // namespace kozor::program
