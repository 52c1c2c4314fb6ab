// WorkFolder.h - a private folder for files that aren't complete yet.  Everything in it is named
// relative to open directories.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Host.h"
#include "HostFiles.h"

namespace kozor::program {

// Creates a folder named ".kozor-" and 16 hexadecimal digits in another one.  The destructor
// removes it with all its contents.
//
// The run holds a lock on its folder.  A folder without a lock was left by a run that was killed;
// the next run that creates such a folder in the same directory removes it.
class WorkFolder {
 public:
  // `parent` is an open directory.  Throws FileFailure if no folder can be created in it.
  explicit WorkFolder(HostHandle parent);
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::string& Name() const { return name; }
  // The open folder.
  HostHandle Directory() const { return directory.Number(); }
  // The library path of a file in it.  It leads through the open folder (/proc), so that replacing
  // a directory above can't redirect it.
  std::string LibraryPathOf(const std::string& file) const;
  // Throws FileFailure when a file of so many bytes finds no room in it.
  void RequireRoom(std::uint64_t bytes) const;
  // Removes a file from it, if it exists.
  void Remove(const std::string& file) const;
  // Whether its file system takes names that differ only in case for the same.
  bool IgnoresCase() const;
  // The permission bits that files in it have from the start, read from the first one.
  unsigned int FirstMode(HostHandle newFile) const;

 private:
  mutable std::optional<bool> ignoresCase;
  mutable std::once_flag modeIsKnown;
  mutable unsigned int firstMode = 0;
  Descriptor parent;
  Descriptor directory;
  std::string name;
};

// A work folder in the directory for temporaries.
class TemporaryFolder {
 public:
  TemporaryFolder();  // throws Failure
  const WorkFolder& Folder() const { return *folder; }
  std::filesystem::path Path() const { return parent / FromUtf8(folder->Name()); }

 private:
  std::filesystem::path parent;
  std::optional<WorkFolder> folder;
};

// A new file in a work folder; its contents are written to memory.
//
// A short file isn't mapped: Finish creates it and writes its contents from a buffer, which takes
// half the time.
class NewFile {
 public:
  // Creates a long file and reserves disk space for it, so that a full disk is detected here.
  // Throws FileFailure.
  NewFile(const WorkFolder& workFolder, std::string fileName, std::uint64_t bytes);
  ~NewFile() { Unmap(); }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  std::span<unsigned char> Contents() { return contents; }

  // Sets the permission bits, unless they are 0, and the last-write time, in 100 ns since 1601;
  // then closes the file.  Throws FileFailure if any of this fails or the disk is full.
  void Finish(unsigned int mode, std::uint64_t lastWrite);

 private:
  void Unmap();

  const WorkFolder& folder;
  const std::string name;
  Descriptor file;
  std::unique_ptr<unsigned char[]> buffer;  // of a short file
  std::span<unsigned char> contents;
};

// A buffer for temporary data.  A large one is an unnamed mapped file in the directory for
// temporaries, so that the program's own memory stays small.
class ScratchMemory {
 public:
  // Valid until the next call.  Throws FileFailure if there isn't enough room.
  std::span<unsigned char> Get(std::uint64_t bytes);

 private:
  std::optional<TemporaryFolder> folder;
  std::unique_ptr<NewFile> file;
  std::vector<unsigned char> memory;
};

}  // namespace kozor::program
