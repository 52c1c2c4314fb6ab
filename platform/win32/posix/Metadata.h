// Metadata.h - a file's metadata on the host, and its times as FILETIME.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>

#include "platform/win32/PosixTypes.h"

namespace kozor::posix {

// The file identity: unique among the files and directories of the machine.
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
  timespec created{};  // or the earlier of `written` and `changed` if the host has none
  timespec accessed{};
  timespec written{};
  timespec changed{};     // last change of contents or metadata
  bool link = false;      // a symbolic link; the other fields describe its target
  bool dangling = false;  // a link without target; the other fields describe the link

  bool IsDirectory() const { return S_ISDIR(mode); }
  bool IsRegular() const { return S_ISREG(mode); }
};

// Reads the metadata of `path`, relative to an open directory or AT_FDCWD.  Returns false with
// errno set.
bool ReadMetadata(int directory, const char* path, Metadata& metadata);
// The same for an open file.
bool ReadMetadata(int file, Metadata& metadata);

// Convert between host times and FILETIME.  Times outside FILETIME's range are clamped.
FILETIME ToFileTime(const timespec& time);
timespec FromFileTime(const FILETIME& time);

// Fills the fields that WIN32_FIND_DATAA and similar records share.  Directories have size 0.
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
