// Metadata.h - what the host knows of a file, and its times as FILETIME.
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

struct Metadata {
  FileId id{};
  mode_t mode = 0;
  std::uint64_t size = 0;  // bytes
  std::uint32_t links = 0;
  timespec created{};  // or the oldest time known, where the host keeps none
  timespec accessed{};
  timespec written{};
  timespec changed{};     // contents or metadata, last
  bool link = false;      // a symbolic link; the rest describes what it points to
  bool dangling = false;  // a link to nothing; the rest describes the link itself

  bool IsDirectory() const { return S_ISDIR(mode); }
  bool IsRegular() const { return S_ISREG(mode); }
};

// Of `path`, relative to an open directory or AT_FDCWD.  False with errno set.
bool ReadMetadata(int directory, const char* path, Metadata& metadata);
// Of an open file.
bool ReadMetadata(int file, Metadata& metadata);

// Between the host's time and 100-nanosecond steps since 1601.  Times that FILETIME doesn't have
// come out as its ends.
FILETIME ToFileTime(const timespec& time);
timespec FromFileTime(const FILETIME& time);

// What WIN32_FIND_DATAA and its kin have in common.  Directories have no size.
template <typename Record>
void FillMetadata(Record& record, const Metadata& metadata, DWORD attributes) {
  const std::uint64_t size = metadata.IsDirectory() || metadata.dangling ? 0 : metadata.size;
  record.dwFileAttributes = attributes;
  record.ftCreationTime = ToFileTime(metadata.created);
  record.ftLastAccessTime = ToFileTime(metadata.accessed);
  record.ftLastWriteTime = ToFileTime(metadata.written);
  record.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  record.nFileSizeLow = static_cast<DWORD>(size);
}

}  // namespace kozor::posix
