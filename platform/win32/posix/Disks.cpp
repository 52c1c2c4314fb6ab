// Disks.cpp - space and type of drives, and the reported system version.
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <cerrno>
#include <fstream>
#include <limits>
#include <string>

#include "platform/win32/PosixSystem.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;

constexpr DWORD kSectorBytes = 512;

// Magic numbers that the host's header lacks.
constexpr std::uint64_t kUdfMagic = 0x15013346;
constexpr std::uint64_t kFuseMagic = 0x65735546;
constexpr std::uint64_t kCifsMagic = 0xFF534D42;
constexpr std::uint64_t kSmb2Magic = 0xFE534D42;
constexpr std::uint64_t kCephMagic = 0x00C36400;

// A null path means the drive of the process's directory.
std::optional<LibraryPath> ParseRoot(LPCSTR path) {
  return ParsePath(path == nullptr ? "\\" : path);
}

// The space on the file system of an existing directory.
bool ReadRoom(LPCSTR directory, struct statvfs& room) {
  const std::optional<LibraryPath> path = ParseRoot(directory);
  if (!path) return false;
  const Found found = LookUp(*path);
  if (!found.exists) return Fail(ERROR_PATH_NOT_FOUND);
  if (!found.metadata.IsDirectory()) return Fail(ERROR_DIRECTORY);
  return Calls().statvfs(found.host.c_str(), &room) == 0 || FailErrno();
}

void Give(PULARGE_INTEGER target, std::uint64_t blocks, const struct statvfs& room) {
  if (target != nullptr) target->QuadPart = blocks * room.f_frsize;
}

void Give(LPDWORD target, std::uint64_t value) {
  if (target != nullptr) *target = static_cast<DWORD>(value);
}

// A property of a block device in sysfs; empty if there is none.
std::string ReadDeviceFact(const std::string& device, const char* fact) {
  std::string text;
  std::ifstream(device + fact) >> text;
  return text;
}

UINT DriveTypeOfDevice(std::uint64_t id) {
  const std::string device =
      "/sys/dev/block/" + std::to_string(major(id)) + ':' + std::to_string(minor(id)) + '/';
  // A partition's folder is inside that of its disk, which has these properties.
  const bool partition = !ReadDeviceFact(device, "partition").empty();
  const std::string disk = partition ? device + "../" : device;
  if (ReadDeviceFact(disk, "removable") != "1") return DRIVE_FIXED;
  // SCSI type 5 is an optical drive.
  return ReadDeviceFact(disk, "device/type") == "5" ? DRIVE_CDROM : DRIVE_REMOVABLE;
}

UINT DriveTypeOf(std::uint64_t fileSystem, std::uint64_t device) {
  switch (fileSystem) {
    case NFS_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
    case AFS_SUPER_MAGIC:
    case AFS_FS_MAGIC:
    case CODA_SUPER_MAGIC:
    case V9FS_MAGIC:
    case kCifsMagic:
    case kSmb2Magic:
    case kCephMagic:
      return DRIVE_REMOTE;
    case TMPFS_MAGIC:
    case RAMFS_MAGIC:
      return DRIVE_RAMDISK;
    case ISOFS_SUPER_MAGIC:
      return DRIVE_CDROM;
    case kUdfMagic: {
      const UINT type = DriveTypeOfDevice(device);
      return type == DRIVE_FIXED ? DRIVE_CDROM : type;
    }
    case kFuseMagic:
      // Served by a user process: whether it is local is unknown.  With a block device it is a disk
      // in a format that the kernel doesn't support.
      return major(device) == 0 ? DRIVE_UNKNOWN : DriveTypeOfDevice(device);
    default:
      return DriveTypeOfDevice(device);
  }
}

}  // namespace

BOOL WINAPI GetDiskFreeSpaceExA(LPCSTR directory, PULARGE_INTEGER freeToCaller,
                                PULARGE_INTEGER totalBytes, PULARGE_INTEGER totalFree) {
  struct statvfs room {};
  if (!ReadRoom(directory, room)) return FALSE;
  Give(freeToCaller, room.f_bavail, room);
  Give(totalBytes, room.f_blocks, room);
  Give(totalFree, room.f_bfree, room);
  return TRUE;
}

BOOL WINAPI GetDiskFreeSpaceA(LPCSTR root, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                              LPDWORD freeClusters, LPDWORD totalClusters) {
  struct statvfs room {};
  if (!ReadRoom(root, room)) return FALSE;
  std::uint64_t clusterBytes = std::max<std::uint64_t>(room.f_frsize, kSectorBytes);
  std::uint64_t total = room.f_blocks * room.f_frsize / clusterBytes;
  std::uint64_t free = room.f_bfree * room.f_frsize / clusterBytes;
  // The number of clusters must fit in 32 bits.
  while (total > std::numeric_limits<DWORD>::max()) {
    clusterBytes *= 2;
    total /= 2;
    free /= 2;
  }
  Give(sectorsPerCluster, clusterBytes / kSectorBytes);
  Give(bytesPerSector, kSectorBytes);
  Give(freeClusters, free);
  Give(totalClusters, total);
  return TRUE;
}

UINT WINAPI GetDriveTypeA(LPCSTR root) {
  const std::optional<LibraryPath> path = ParseRoot(root);
  if (!path || !path->IsRoot()) return DRIVE_NO_ROOT_DIR;
  const Found found = LookUp(*path);
  struct statfs metadata {};
  if (!found.exists || !found.metadata.IsDirectory() ||
      ::statfs(found.host.c_str(), &metadata) != 0) {
    return DRIVE_NO_ROOT_DIR;
  }
  if (path->share) return DRIVE_REMOTE;
  return DriveTypeOf(static_cast<std::uint32_t>(metadata.f_type), found.metadata.id.device);
}

BOOL WINAPI GetVersionExA(LPOSVERSIONINFOA information) {
  if (information->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  *information = {};
  information->dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
  information->dwMajorVersion = 10;
  information->dwBuildNumber = 19045;
  information->dwPlatformId = VER_PLATFORM_WIN32_NT;
  return TRUE;
}
