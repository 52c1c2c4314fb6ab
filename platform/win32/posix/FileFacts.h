// FileFacts.h - what the host knows of a file, and its times as FILETIME.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>

#include "platform/win32/PosixTypes.h"

namespace kozor::posix {

// One file or directory among all of the machine.
struct FileId {
  std::uint64_t device;
  std::uint64_t inode;
  bool operator==(const FileId&) const = default;
};

struct FileFacts {
  FileId id{};
  mode_t mode = 0;
  std::uint64_t size = 0;  // bytes
  std::uint32_t links = 0;
  timespec created{};  // or the oldest time known, where the host keeps none
  timespec accessed{};
  timespec written{};
  timespec changed{};     // contents or facts
  bool link = false;      // a symbolic link; the other facts are those of what it points to
  bool dangling = false;  // a link to nothing; the other facts are its own

  bool IsDirectory() const { return S_ISDIR(mode); }
  bool IsRegular() const { return S_ISREG(mode); }
};

// Of `path`, relative to an open directory or AT_FDCWD.  False with errno set.
bool ReadFacts(int directory, const char* path, FileFacts& facts);
// Of an open file.
bool ReadFacts(int file, FileFacts& facts);

// Between the host's time and 100-nanosecond steps since 1601.  Times that FILETIME doesn't have
// come out as its ends.
FILETIME ToFileTime(const timespec& time);
timespec FromFileTime(const FILETIME& time);

// The 64-bit number that a FILETIME is made of, and back.
std::uint64_t Ticks(const FILETIME& time);
FILETIME FromTicks(std::uint64_t ticks);

constexpr std::int64_t kTicksPerSecond = 10'000'000;

}  // namespace kozor::posix
