// SmallDisk.h - a small file system in memory: a disk that fills up, or that isn't that of a
// folder.
#pragma once

#include <sys/mount.h>

#include <filesystem>
#include <string>

namespace kozor::test {

class SmallDisk {
 public:
  // Mounted at `where`, which is made.  Only root can do that.
  SmallDisk(std::filesystem::path where, std::size_t bytes) : mountPoint(std::move(where)) {
    std::filesystem::create_directories(mountPoint);
    const std::string size = "size=" + std::to_string(bytes);
    isThere = ::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, size.c_str()) == 0;
  }
  ~SmallDisk() {
    if (isThere) ::umount2(mountPoint.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool IsThere() const { return isThere; }

 private:
  std::filesystem::path mountPoint;
  bool isThere = false;
};

}  // namespace kozor::test
