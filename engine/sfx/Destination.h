// Destination.h - the directory that members are extracted to, and nothing outside of it.
//
// Directories are opened one by one from the destination down, never through a symbolic link, and
// files are named relative to the open directory.  So it doesn't matter what stands there already,
// or what someone puts there meanwhile.
//
// Results are 0 or a negative error number (Console.h, Reason).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kozor::sfx {

// Where a file or directory is to stand: an open directory and a name in it.
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

  // Opens the directory, which the caller has named and which may be behind links; makes it, and
  // those above it, where they are missing.
  long Open(std::string_view path);

  // The place that a relative name with '/' between components means; directories on the way are
  // made where they are missing.  It holds good until the next call.
  long Find(std::string_view name, Place& place);

 private:
  void CloseDirectory();

  int root = -1;
  // The directory that was found last: members come sorted by directories, mostly.
  int directory = -1;
  std::string directoryName;
};

// Makes a directory; one that is there already will do.
long MakeDirectory(const Place& place);

// Sets the time of last write; `fileTime` counts 100 ns since 1601.
long SetTime(const Place& place, std::uint64_t fileTime);

// Whether anything at all stands at the place, a link included.
bool IsTaken(const Place& place);

// A file that gets its name only when it is complete: until then it stands beside its place under a
// temporary name, and goes with the object.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  enum class Access { ReadWrite, ReadOnly };  // of the finished file; the process's mask applies
  // Makes the file and reserves its room, so that a full disk shows here.
  long Create(const Place& wanted, std::uint64_t bytes, Access access);
  // The contents.
  std::span<std::uint8_t> Contents() const { return contents; }

  enum class Existing { Stays, IsReplaced };
  // Gives the file its time and its name, in one step.  -EEXIST when something stands there and is
  // to stay.
  long Publish(std::uint64_t fileTime, Existing existing);

 private:
  long Reserve(std::uint64_t bytes) const;
  long TakeName(Existing existing);

  Place place{};
  int file = -1;
  std::string temporaryName;  // empty when there is no such file
  std::span<std::uint8_t> contents;
};

}  // namespace kozor::sfx
