// Host.h - everything the program needs from the operating system: host paths, the state of files,
// signals and the terminal.  Each system has its own implementation: posix/Host.cpp and
// windows/Host.cpp.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "HostFiles.h"

namespace kozor::program {

// From now on the library flushes a file to the disk once, when it is closed, instead of after each
// write.
void FlushFilesAtClose();

// Prepares the process: names are UTF-8, files are looked up by their exact names, and the signals
// that end a program only make StopSignal non-zero.
void SetUpHost();

// Whether the library's searches follow links (the default) or find the links themselves.
void FollowLinks(bool on);

// Sets the code page of names in archives that don't record theirs.  Returns false if it is
// unknown.
bool ChooseNamePage(unsigned int page);

// Sets a variable of this process's environment.
void SetEnvironment(const char* name, const std::string& value);

// The arguments of the command line, without the program's name, in UTF-8.
std::vector<std::string> CommandWords(int count, char** words);

// The number of the signal that asked the program to stop, 0 for none.
int StopSignal();
// The path for UTF-8 text.  On Windows the standard library's own conversion from narrow text
// assumes another code page.
inline std::filesystem::path FromUtf8(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

// Throws Interrupted once a signal has come.
void StopIfAsked();

// The library's form of a host path, complete with its drive ("C:\home\me\a.txt").  Throws Failure
// if the path contains a name that the library can't express.
std::string LibraryPath(const std::filesystem::path& path);
// Whether there is one.
bool CanBeExpressed(const std::filesystem::path& path);
// The reverse conversion.  Throws Failure for a path that isn't on a mapped drive.
std::filesystem::path HostPath(const std::string& libraryPath);
// Whether a file of this name (without a directory) can be created and found again.
bool CanBeMade(const std::string& name);
// A path for messages and comparisons, in UTF-8 as far as possible.
std::string Shown(const std::filesystem::path& path);
// A relative library name as the host writes it.  Bytes that aren't UTF-8 are read as code page
// 932, which older programs wrote.
std::filesystem::path HostName(const std::string& libraryName);

// `path` as an absolute path without "." and "..".  On POSIX the file system resolves "..", on
// Windows it is taken out of the text.  Links elsewhere in the path aren't resolved.
std::filesystem::path AbsolutePath(const std::filesystem::path& path);
// The same for an argument of the command line.
inline std::filesystem::path AbsolutePath(const std::string& word) {
  return AbsolutePath(FromUtf8(word));
}
// The same for one that is relative to a directory.
std::filesystem::path AbsolutePathIn(const std::filesystem::path& directory,
                                     const std::string& word);

// An absolute path with all links resolved; null if nothing exists there.
std::optional<std::filesystem::path> Canonical(const std::filesystem::path& path);
// The same as far as the path exists.
std::filesystem::path WeaklyCanonical(const std::filesystem::path& path);

// The form of a path that file streams take with any length.
std::filesystem::path CallPath(const std::filesystem::path& path);

// Whether anything exists at `path`, including a dangling link.
bool Exists(const std::filesystem::path& path);
// Whether a directory or a link to one does.
bool IsDirectory(const std::filesystem::path& path);
// Creates a directory and those above it that are missing; best effort.
void MakeDirectories(const std::filesystem::path& path);
// The free bytes on the disk with an existing `path`; 0 if they are unknown.
std::uint64_t FreeBytesAt(const std::filesystem::path& path);
// What distinguishes a file's contents from those before a write.
struct FileVersion {
  std::uint64_t size = 0;      // in bytes
  std::int64_t lastWrite = 0;  // in the host's finest unit
  bool operator==(const FileVersion&) const = default;
};
// What is the same for all names of an existing file or directory, and for no other.
struct FileIdentity {
  std::uint64_t volume = 0;
  std::uint64_t number = 0;  // 0 if the file system has none
  bool IsSame(const FileIdentity& other) const {
    return number != 0 && number == other.number && volume == other.volume;
  }
};
// What exists at `path`, following links.
struct FileState {
  std::string problem;     // why it can't be read, in words; empty when it can
  bool isRefused = false;  // whether the problem is that the host doesn't let it be read
  bool isDirectory = false;
  bool isLink = false;
  bool leadsNowhere = false;  // a link that has no target, or itself
  FileVersion version;        // of a file
  std::int64_t time = 0;      // last write, seconds since 1970
  unsigned int mode = 0;      // permission bits
  FileIdentity identity;
};
// `folder`, if it is open, is the directory of `path`, which then isn't looked up again.
FileState Inspect(const std::filesystem::path& path, HostHandle folder = kNotOpen);
// The version of the file at `path`, following links; empty if there is none.
std::optional<FileVersion> VersionOf(const std::filesystem::path& path,
                                     HostHandle folder = kNotOpen);
// Whether a link itself stands at `path`.
bool IsLink(const std::filesystem::path& path);
// The link itself.  Throws FileFailure if it can't be read.
struct LinkState {
  std::string target;
  std::int64_t time = 0;  // last write, seconds since 1970
};
LinkState InspectLink(const std::filesystem::path& path);

// A moment in the local calendar and zone; false if it has no such date.
bool LocalTime(std::int64_t secondsSince1970, std::tm& local);

// Maps the file system that holds `path`, or would hold it, to a separate drive, and calls `use`
// with the library's form of `path` on that drive.  A query for free space on that drive then
// reaches the right disk.  The drive exists during the call only: a name kept for later must not
// depend on it.
void UseOwnDrive(const std::filesystem::path& path,
                 const std::function<void(const std::string& onDrive)>& use);

bool InputIsTerminal();
bool ErrorsGoToTerminal();
int TerminalWidth();

// During its lifetime a signal interrupts a blocking read of standard input.
class InterruptibleInput {
 public:
  InterruptibleInput();
  ~InterruptibleInput();
  InterruptibleInput(const InterruptibleInput&) = delete;
  InterruptibleInput& operator=(const InterruptibleInput&) = delete;
};

}  // namespace kozor::program
