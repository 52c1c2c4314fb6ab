// Host.h - everything the program asks of the system it runs on: host paths, the state of files,
// signals and the terminal.  One side for each system: posix/Host.cpp and windows/Host.cpp.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::program {

// From now on the library waits for the medium when a file is closed, once for all its writes, and
// not after each.
void FlushFilesAtClose();

// Prepares the process: names are UTF-8, files are looked up by their exact names, and the signals
// that end a program only make StopSignal non-zero.
void SetUpHost();

// Whether searches of the library go through links, as they do at first, or find the links
// themselves.
void FollowLinks(bool on);

// The code page of names in archives that don't record theirs; false for one that isn't known.
bool ChooseNamePage(unsigned int page);

// Sets a variable of this process's environment.
void SetEnvironment(const char* name, const std::string& value);

// The words of the command line, without the program's name, in UTF-8.
std::vector<std::string> CommandWords(int count, char** words);

// The number of the signal that asked the program to stop, 0 for none.
int StopSignal();
// The path that a text in UTF-8 means.  The library's own conversion from narrow text takes it for
// text in another code page on Windows.
inline std::filesystem::path FromUtf8(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

// Throws Interrupted once a signal has come.
void StopIfAsked();

// The library's name of a host path, complete from the drive on ("C:\home\me\a.txt").  Throws
// Failure when the path holds a name that the library can't express.
std::string LibraryPath(const std::filesystem::path& path);
// Whether it has one.
bool CanBeExpressed(const std::filesystem::path& path);
// The way back.  Throws Failure for what isn't on a mapped drive.
std::filesystem::path HostPath(const std::string& libraryPath);
// Whether a file of this name, without a directory, can be made and found again.
bool CanBeMade(const std::string& name);
// Whether two names that differ in case alone are one file.
bool HostIgnoresCase();
// A path for messages and comparisons, in UTF-8 as far as it can be said in it.
std::string Shown(const std::filesystem::path& path);
// A relative library name as the host writes it.  Bytes that aren't UTF-8 are taken for code page
// 932, which older programs wrote.
std::filesystem::path HostName(const std::string& libraryName);

// `path` from the root on, without "." and "..".  What ".." means is asked of the file system;
// links elsewhere in the path are left as they are.
std::filesystem::path AbsolutePath(const std::filesystem::path& path);
// Of a word of the command line.
inline std::filesystem::path AbsolutePath(const std::string& word) {
  return AbsolutePath(FromUtf8(word));
}

// Whether anything stands at `path`, a dangling link included.
bool Exists(const std::filesystem::path& path);
// What stands at `path`, links followed.
struct FileState {
  std::string problem;  // why it can't be read, in words; empty when it can
  bool isDirectory = false;
  bool isLink = false;
  std::uintmax_t size = 0;  // of a file, in bytes
  std::int64_t time = 0;    // last write, seconds since 1970
  unsigned int mode = 0;    // permission bits
};
FileState Inspect(const std::filesystem::path& path);
// Whether a link itself stands at `path`.
bool IsLink(const std::filesystem::path& path);
// A link itself.  Throws FileFailure when it can't be read.
struct LinkState {
  std::string target;
  std::int64_t time = 0;  // last write, seconds since 1970
};
LinkState InspectLink(const std::filesystem::path& path);

// A moment in the local calendar and zone; false if it has no such date.
bool LocalTime(std::int64_t secondsSince1970, std::tm& local);

// Maps the file system that holds `path`, or would hold it, to a drive of its own, and returns the
// library's path of `path` on that drive.  Asking for the room on it then asks the right disk.  The
// drive stays mapped until the next call.
std::string PathOnOwnDrive(const std::filesystem::path& path);

bool InputIsTerminal();
bool ErrorsGoToTerminal();
int TerminalWidth();

// While an object lives, a signal ends a waiting read of standard input.
class InterruptibleInput {
 public:
  InterruptibleInput();
  ~InterruptibleInput();
  InterruptibleInput(const InterruptibleInput&) = delete;
  InterruptibleInput& operator=(const InterruptibleInput&) = delete;
};

}  // namespace kozor::program
