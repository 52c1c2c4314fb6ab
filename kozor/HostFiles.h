// HostFiles.h - files and directories of the host, named relative to open directories, so that
// nobody can lead a run elsewhere by exchanging a directory above.  One side for each system:
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

// The system's number of something open.
using HostHandle = std::intptr_t;
inline constexpr HostHandle kNotOpen = -1;

// An open file or directory; closed with its object.
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
  // Closes; false when what was written hasn't been taken.
  bool Finish();

 private:
  HostHandle number;
};

// The system's error numbers (errno, GetLastError) in words, as ErrorText.
std::string HostErrorText(int number);
// The last call that failed, in words; and FileFailure with these words.
std::string LastSystemError();
[[noreturn]] void FailBySystem();
// What names the directory for temporaries, for messages.
extern const char* const kTemporaryVariable;

// A directory by its path, links followed.  Not open when it can't be.
Descriptor OpenDirectory(const std::filesystem::path& path);
// A directory in an open one, never through a link.  "." opens the same once more.
Descriptor OpenFolder(HostHandle in, const std::string& name);
// The same; made when nothing is there.
Descriptor OpenOrMakeFolder(HostHandle in, const std::string& name);
// A path that leads to the file as long as the directory is open, whoever renames directories.
std::filesystem::path PathIn(HostHandle directory, const std::string& name);
// The names in a directory; none when it can't be read.
std::vector<std::string> NamesIn(HostHandle directory);

// A folder that no other user can look into and that is held by this process.  Not open when the
// name is taken, or was taken away meanwhile; throws FileFailure when none can be made at all.
Descriptor MakeHeldFolder(HostHandle in, const std::string& name);
// Such a folder that a process of this user left without holding it, now held; else not open.
Descriptor HoldLeftover(HostHandle in, const std::string& name);

// Best-effort removal: errors are ignored.  A held folder is let go in the course of it.
void RemoveHeldFolder(HostHandle in, const std::string& name, Descriptor& folder);
bool RemoveFile(HostHandle in, const std::string& name);  // false for a directory, and on failure
void RemoveEmptyFolder(HostHandle in, const std::string& name);

// What stands at a place.
struct Occupant {
  bool isDirectory = false;
  bool isFile = false;
  bool isLink = false;
  bool isReadOnly = false;
  std::uint64_t size = 0;
  std::int64_t time = 0;         // last write, seconds since 1970
  std::int32_t nanoseconds = 0;  // of that time, beyond its second
};
// Links are not followed.  Nothing when nothing is there; throws FileFailure when that can't be
// told.
std::optional<Occupant> LookAt(HostHandle in, const std::string& name);
// Empty for what is no link.
std::string LinkTarget(HostHandle in, const std::string& name);
bool IsLink(HostHandle in, const std::string& name);

// For reading, never through a link.  Not open when it can't be.
Descriptor OpenFile(HostHandle in, const std::string& name);
// Fills as much of the block as the file has left; returns how much.  Throws FileFailure.
std::size_t ReadBlock(HostHandle file, std::span<char> block);

// All of the following throw FileFailure.

// Contents and metadata into a new file.  Attributes that the target's file system doesn't take are
// left out.
void CopyFileIn(HostHandle from, const std::string& name, HostHandle to,
                const std::string& newName);
// A file or link to another name.  Occupied: something stands there and isn't to be replaced.
enum class Move { Done, Occupied, OtherFileSystem };
Move MoveTo(HostHandle from, const std::string& name, HostHandle to, const std::string& newName,
            bool replace);
// A link with its own time of last write, in 100 ns since 1601.
void MakeLink(HostHandle in, const std::string& name, const std::filesystem::path& target,
              std::uint64_t lastWrite);
// Permission bits, unless they are 0 or the system has none, and the time of last write.
void FinishDirectory(HostHandle directory, unsigned int mode, std::uint64_t lastWrite);
void FinishFile(Descriptor& file, unsigned int mode, std::uint64_t lastWrite);

Descriptor CreateNewFile(HostHandle in, const std::string& name);
void WriteAll(HostHandle file, std::span<const std::byte> bytes);
// Returns when what was written is on the medium.
void Flush(HostHandle file);
// Reserves room on the disk for an empty file that is to have that many bytes.
void Reserve(HostHandle file, std::uint64_t bytes);
// The same, and maps it for writing.
std::span<unsigned char> ReserveAndMap(HostHandle file, std::uint64_t bytes);
void Unmap(std::span<unsigned char> contents);

}  // namespace kozor::program
