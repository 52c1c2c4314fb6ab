// Destination.h - writes files inside the destination directory and nowhere else.
//
// Directories are opened one by one from the destination down, never through a symbolic link, and
// files are accessed relative to the open directory.  So existing links, and links made meanwhile,
// can't redirect it.
//
// Results are 0 or a negative error number (System.h, Reason).
#pragma once

#include "engine/sfx/Files.h"

namespace kozor::sfx {

// The location of a file or directory: an open directory and a name in it.
struct Place {
  host::Handle directory;
  std::string name;
};

class Destination {
 public:
  Destination() = default;
  ~Destination();
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  // Opens the directory that the user has named, or makes it.
  long Open(std::string_view path);

  // Finds the place for a relative name with '/' between components; makes missing directories on
  // the way.  The place is valid until the next call.
  long Find(std::string_view name, Place& place);

 private:
  void CloseDirectory();

  host::Handle root = host::kNotOpen;
  // The directory found last: members are mostly sorted by directory.
  host::Handle directory = host::kNotOpen;
  std::string directoryName;
};

// Makes a directory, or accepts an existing one.
long MakeDirectory(const Place& place);

// A file that gets its name only when it is complete.  Until then it has a temporary name in the
// same directory, and the destructor removes it.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Creates the file and reserves its blocks, so that a full disk is reported here.
  long Create(const Place& wanted, std::uint64_t bytes, Access wantedAccess);
  std::span<std::uint8_t> Contents() const { return contents; }

  // Sets the file's time, in units of 100 ns since 1601, and renames it atomically.
  long Publish(std::uint64_t fileTime, Existing existing);

 private:
  void UnmapContents();

  Place place{};
  Access access = Access::ReadWrite;
  host::Handle file = host::kNotOpen;
  std::string temporaryName;  // empty if there is no such file
  std::span<std::uint8_t> contents;
};

}  // namespace kozor::sfx
