// HostFiles.h - files and directories of the host, named relative to open directories, so that
// replacing a directory above can't redirect a run.  Each system has its own implementation:
// posix/HostFiles.cpp and windows/HostFiles.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kozor::program {

// The system's identifier of an open file or directory.
using HostHandle = std::intptr_t;
inline constexpr HostHandle kNotOpen = -1;

// Owns an open file or directory and closes it.
class Descriptor {
 public:
  explicit Descriptor(HostHandle opened = kNotOpen) : number(opened) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, kNotOpen)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }

  bool IsOpen() const { return number != kNotOpen; }
  HostHandle Number() const { return number; }
  void Close();
  // Closes; returns false if written data was lost.
  bool Finish();

 private:
  HostHandle number;
};

// A message for one of the system's error numbers (errno, GetLastError).
std::string HostErrorText(int number);
// A message for the last failed call; FailBySystem throws FileFailure with it.
std::string LastSystemError();
[[noreturn]] void FailBySystem();
// The environment variable that names the directory for temporaries, for messages.
extern const char* const kTemporaryVariable;

// Opens a directory by its path, following links.  The result isn't open if that fails.
Descriptor OpenDirectory(const std::filesystem::path& path);
// Opens a directory in an open one, but no link to one.  "." opens the same directory again.
Descriptor OpenFolder(HostHandle in, const std::string& name);
// The same; creates a missing directory.  `isNew` receives whether it did.
Descriptor OpenOrMakeFolder(HostHandle in, const std::string& name, bool& isNew);
// A path that leads to the file while the directory is open, even if directories are renamed.
std::filesystem::path PathIn(HostHandle directory, const std::string& name);
// The names in a directory; empty if it can't be read.
std::vector<std::string> NamesIn(HostHandle directory);

// Creates a folder that no other user can read, and holds it for this process.  The result isn't
// open if the name is taken or the folder was removed at once.  Throws FileFailure if no folder can
// be created at all.
Descriptor MakeHeldFolder(HostHandle in, const std::string& name);
// Takes hold of such a folder that a process of this user left behind.  The result isn't open if
// that fails.
Descriptor HoldLeftover(HostHandle in, const std::string& name);

// Best-effort removal: errors are ignored.  Also releases a held folder.
void RemoveHeldFolder(HostHandle in, const std::string& name, Descriptor& folder);
bool RemoveFile(HostHandle in, const std::string& name);  // false for a directory, and on failure
void RemoveEmptyFolder(HostHandle in, const std::string& name);

// What exists at a place.
struct Occupant {
  bool isDirectory = false;
  bool isFile = false;
  bool isLink = false;
  bool isReadOnly = false;
  std::uint64_t size = 0;
  std::int64_t time = 0;         // last write, seconds since 1970
  std::int32_t nanoseconds = 0;  // of that time, beyond its second
};
// Doesn't follow links.  Null if nothing exists there; throws FileFailure if that can't be
// determined.
std::optional<Occupant> LookAt(HostHandle in, const std::string& name);
// Empty if it isn't a link.
std::string LinkTarget(HostHandle in, const std::string& name);
bool IsLink(HostHandle in, const std::string& name);

// Opens a file for reading, but no link to one.  The result isn't open if that fails.
Descriptor OpenFile(HostHandle in, const std::string& name);
// Reads until the block is full or the file ends; returns the number of bytes read.  Throws
// FileFailure.
std::size_t ReadBlock(HostHandle file, std::span<char> block);

// All of the following throw FileFailure.

// Copies contents and metadata to a new file.  Attributes that the target's file system doesn't
// support are left out.
void CopyFileIn(HostHandle from, const std::string& name, HostHandle to,
                const std::string& newName);
// Moves a file or link.  Occupied: the new name is taken and nothing may be replaced.
enum class Move { Done, Occupied, OtherFileSystem };
Move MoveTo(HostHandle from, const std::string& name, HostHandle to, const std::string& newName,
            bool replace);
// Makes a link with the given last-write time, in 100 ns since 1601.
void MakeLink(HostHandle in, const std::string& name, const std::filesystem::path& target,
              std::uint64_t lastWrite);
// Sets the permission bits, unless they are 0 or the system has none, and the last-write time.
void FinishDirectory(HostHandle directory, unsigned int mode, std::uint64_t lastWrite);
void FinishFile(Descriptor& file, unsigned int mode, std::uint64_t lastWrite);

Descriptor CreateNewFile(HostHandle in, const std::string& name);
// The permission bits of an open file; 0 if the system has none.
unsigned int ModeOf(HostHandle file);
void WriteAll(HostHandle file, std::span<const std::byte> bytes);
// Returns when what was written is on the medium.
void Flush(HostHandle file);
// Reserves room on the disk for an empty file that is to have that many bytes.
void Reserve(HostHandle file, std::uint64_t bytes);
// The same, and maps it for writing.
std::span<unsigned char> ReserveAndMap(HostHandle file, std::uint64_t bytes);
void Unmap(std::span<unsigned char> contents);

}  // namespace kozor::program
