// Destination.h - writes files inside the destination directory and nowhere else.
//
// Directories are opened one by one from the destination down, never through a symbolic link, and
// files are accessed relative to the open directory.  So existing links, and links made meanwhile,
// can't redirect it.
//
// Results are 0 or a negative error number (Console.h, Reason).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kozor::sfx {

// The location of a file or directory: an open directory and a name in it.
struct Place {
  int directory;
  std::string name;
};

class Destination {
 public:
  Destination() = default;
  ~Destination();
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  // Opens the directory that the user has named; links in its path are followed.  Makes it and its
  // parents if they are missing.
  long Open(std::string_view path);

  // Finds the place for a relative name with '/' between components; makes missing directories on
  // the way.  The place is valid until the next call.
  long Find(std::string_view name, Place& place);

 private:
  void CloseDirectory();

  int root = -1;
  // The directory found last: members are mostly sorted by directory.
  int directory = -1;
  std::string directoryName;
};

// Makes a directory, or accepts an existing one.
long MakeDirectory(const Place& place);

// Sets the time of last write; `fileTime` is in units of 100 ns since 1601.
long SetTime(const Place& place, std::uint64_t fileTime);

// Whether anything exists at the place, including a link.
bool IsTaken(const Place& place);

// A file that gets its name only when it is complete.  Until then it has a temporary name in the
// same directory, and the destructor removes it.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  enum class Access { ReadWrite, ReadOnly };  // of the finished file; subject to the umask
  // Creates the file and reserves its blocks, so that a full disk is reported here.
  long Create(const Place& wanted, std::uint64_t bytes, Access access);
  // The contents.
  std::span<std::uint8_t> Contents() const { return contents; }

  enum class Existing { Stays, IsReplaced };
  // Sets the file's time and renames it atomically.  -EEXIST if something exists there and must
  // stay.
  long Publish(std::uint64_t fileTime, Existing existing);

 private:
  long Reserve(std::uint64_t bytes) const;
  long TakeName(Existing existing);

  Place place{};
  int file = -1;
  std::string temporaryName;  // empty if there is no such file
  std::span<std::uint8_t> contents;
};

}  // namespace kozor::sfx
