// WorkFolder.h - a folder of the run's own, for files that aren't complete yet; and open
// directories, relative to which everything in it is named.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Host.h"
#include "HostFiles.h"

namespace kozor::program {

// A folder ".kozor-" and 16 hexadecimal digits, made in another one and removed with the object,
// whatever it holds then.
//
// The run holds a lock on its folder.  One that nobody holds a lock on belongs to a run that was
// killed, and the next run that makes such a folder beside it removes it.
class WorkFolder {
 public:
  // `parent` is an open directory.  Throws FileFailure when no folder can be made in there.
  explicit WorkFolder(HostHandle parent);
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::string& Name() const { return name; }
  // The folder, open.
  HostHandle Directory() const { return directory.Number(); }
  // The library path of a file in it.  It goes by the open folder (/proc), so that nobody can lead
  // it elsewhere by exchanging a directory above.
  std::string LibraryPathOf(const std::string& file) const;
  // Throws FileFailure when a file of so many bytes finds no room in it.
  void RequireRoom(std::uint64_t bytes) const;
  // Removes a file from it, if it is there.
  void Remove(const std::string& file) const;

 private:
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

// A new file in a work folder, written through memory.
//
// A short file is written at the end from a buffer; that is half the work of mapping it.
class NewFile {
 public:
  // Reserves the room of a long file, so that a full disk shows here.  Throws FileFailure.
  NewFile(const WorkFolder& folder, const std::string& name, std::uint64_t bytes);
  ~NewFile() { Unmap(); }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  std::span<unsigned char> Contents() { return contents; }

  // Sets the permission bits, unless they are 0, and the time of last write, in 100 ns since 1601;
  // and closes the file.  Throws FileFailure when one of these can't be done, or the disk is full.
  void Finish(unsigned int mode, std::uint64_t lastWrite);

 private:
  void Unmap();

  Descriptor file;
  std::unique_ptr<unsigned char[]> buffer;  // of a short file
  std::span<unsigned char> contents;
};

// Bytes that are needed for a while.  Many of them lie in a file without a name in the directory
// for temporaries, so that the program's own memory stays small.
class ScratchMemory {
 public:
  // Good until the next call.  Throws FileFailure when there is no room.
  std::span<unsigned char> Get(std::uint64_t bytes);

 private:
  std::optional<TemporaryFolder> folder;
  std::unique_ptr<NewFile> file;
  std::vector<unsigned char> memory;
};

}  // namespace kozor::program
