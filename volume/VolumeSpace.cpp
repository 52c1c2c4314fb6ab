// VolumeSpace.cpp - the default of ZorMultiVolume::OnQueryDiskSpace: how many bytes a file at a
// path may have.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "ZorFileServices.h"
#include "ZorMultiVolume.h"
#include "files/Path.h"

namespace {

// The cluster size assumed if the medium reports none.
constexpr std::uint64_t kSectorBytes = 512;

std::uint64_t ClusterBytes(const char* rootDirectory) {
  DWORD sectorsPerCluster = 0;
  DWORD bytesPerSector = 0;
  DWORD freeClusters = 0;
  DWORD totalClusters = 0;
  if (GetDiskFreeSpaceA(rootDirectory, &sectorsPerCluster, &bytesPerSector, &freeClusters,
                        &totalClusters) == 0) {
    return kSectorBytes;
  }
  const std::uint64_t bytes = std::uint64_t{sectorsPerCluster} * bytesPerSector;
  return bytes != 0 ? bytes : kSectorBytes;
}

bool GetFreeBytes(const char* rootDirectory, std::uint64_t* bytes) {
  SetLastError(0);
  *bytes = ZorGetDiskSpace(rootDirectory, 1, nullptr);
  // With 0 bytes the last error tells a full disk (none) from a missing one.
  return *bytes != 0 || GetLastError() == 0;
}

std::uint64_t CountMissingDirectories(const char* path, const char* directory,
                                      const char* fileName) {
  std::uint64_t missing = 0;
  CFileStatus status;
  for (const int level : ZorDirectoryLevels(path, directory, fileName)) {
    if (CFile::GetStatus(CString(path, level), status) == 0) ++missing;
  }
  return missing;
}

// The space that replacing an existing file frees.
std::uint64_t ReplacedBytes(const char* path, std::uint64_t clusterBytes) {
  CFileStatus status;
  if (CFile::GetStatus(path, status) == 0) return 0;
  return (status.m_size + clusterBytes - 1) / clusterBytes * clusterBytes;
}

}  // namespace

// The free bytes of the medium, plus the space of a file that would be replaced, minus that of
// directories that would be made; at most 0xFFFFFFFF.  0 for a path without a root and for a drive
// without a medium.
unsigned long ZorMultiVolume::OnQueryDiskSpace(const char* path) {
  const CString rootDirectory = ZorRootDirectory(path);
  if (rootDirectory.IsEmpty()) return 0;
  const char* directory = nullptr;
  const char* fileName = nullptr;
  ZorSplitPath(path, nullptr, &directory, &fileName);

  std::uint64_t room = 0;
  if (!GetFreeBytes(rootDirectory, &room)) return 0;
  const std::uint64_t clusterBytes = ClusterBytes(rootDirectory);
  std::uint64_t cost = 0;
  if (directory != nullptr && *directory == '\\') {
    cost = CountMissingDirectories(path, directory, fileName) * clusterBytes;
  }
  if (fileName != nullptr) room += ReplacedBytes(path, clusterBytes);
  if (room < cost) return 0;
  return static_cast<unsigned long>(
      std::min<std::uint64_t>(room - cost, std::numeric_limits<std::uint32_t>::max()));
}
