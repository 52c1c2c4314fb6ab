// Disk.cpp - the space and the drive type of the volume that holds a path.
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "ZorFileServices.h"
#include "files/Path.h"

namespace {

struct FreeModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

using LargeDiskCall = BOOL(WINAPI*)(LPCSTR, PULARGE_INTEGER, PULARGE_INTEGER, PULARGE_INTEGER);

// Fixed by the interface: this probe, and the look-up below, serve systems without
// GetDiskFreeSpaceExA (before the second release of the 95 line and before NT 4.0).
bool HasLargeDiskCall() {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof(version);
  if (!GetVersionExA(&version)) return false;
  switch (version.dwPlatformId) {
    case VER_PLATFORM_WIN32_WINDOWS:
      return (version.dwBuildNumber & 0xFFFF) >= 1000;
    case VER_PLATFORM_WIN32_NT:
      return version.dwMajorVersion >= 4;
    default:
      return false;
  }
}

// Looks the call up at run time: a program that imports it doesn't start on a system without it.
std::optional<std::uint64_t> LargeDiskSpace(const char* root, bool freeSpace) {
  const Module kernel(LoadLibraryA("KERNEL32.DLL"));
  if (kernel == nullptr) return std::nullopt;
  const FARPROC entry = GetProcAddress(kernel.get(), "GetDiskFreeSpaceExA");
  if (entry == nullptr) return std::nullopt;
  const auto call = reinterpret_cast<LargeDiskCall>(reinterpret_cast<void (*)()>(entry));
  ULARGE_INTEGER freeToCaller;
  ULARGE_INTEGER total;
  ULARGE_INTEGER totalFree;
  if (!call(root, &freeToCaller, &total, &totalFree)) return std::nullopt;
  return freeSpace ? totalFree.QuadPart : total.QuadPart;
}

// Fixed by the interface: the result wraps at 4 GiB.
std::optional<std::uint32_t> SmallDiskSpace(const char* root, bool freeSpace) {
  DWORD sectorsPerCluster;
  DWORD bytesPerSector;
  DWORD freeClusters;
  DWORD totalClusters;
  if (!GetDiskFreeSpaceA(root, &sectorsPerCluster, &bytesPerSector, &freeClusters,
                         &totalClusters)) {
    return std::nullopt;
  }
  const std::uint32_t clusters = freeSpace ? freeClusters : totalClusters;
  return clusters * bytesPerSector * sectorsPerCluster;
}

}  // namespace

// Success doesn't change the last error, so callers can tell a full disk from a failure.
unsigned long ZorGetDiskSpace(const char* path, int freeSpace, unsigned long* highPart) {
  const CString root = ZorRootDirectory(path);
  if (root.IsEmpty()) return 0;
  const DWORD errorBefore = GetLastError();
  std::optional<std::uint64_t> bytes;
  if (HasLargeDiskCall()) bytes = LargeDiskSpace(root, freeSpace != 0);
  if (!bytes) bytes = SmallDiskSpace(root, freeSpace != 0);
  if (!bytes) return 0;
  SetLastError(errorBefore);

  const auto high = static_cast<std::uint32_t>(*bytes >> 32);
  if (highPart == nullptr && high != 0) return 0xFFFFFFFF;
  if (highPart != nullptr) *highPart = high;
  return static_cast<std::uint32_t>(*bytes);
}

unsigned int ZorGetDriveType(const char* path) {
  const CString root = ZorRootDirectory(path);
  return root.IsEmpty() ? DRIVE_UNKNOWN : GetDriveTypeA(root);
}
