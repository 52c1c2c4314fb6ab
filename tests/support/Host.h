// Host.h - everything the tests need from the operating system.  Each system has its own
// implementation: posix/ and windows/.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kozor::test {

// Makes a new empty directory below the one for temporaries.
std::filesystem::path MakeTestDirectory();
// From now on test directories are made in memory, if the system can.
void UseMemory();
// Makes everything below a directory removable.
void MakeRemovable(const std::filesystem::path& directory);

// The library's form of a path: on drive C:, the host's root, or on Windows the path itself.
std::string LibraryPathOf(const std::filesystem::path& path);
// A path for a shell command, without quotes.
std::string ShellPathOf(const std::filesystem::path& path);
// The shell command that runs a program of ours.
std::string ShellProgram(const std::filesystem::path& program);

// Makes a file read-only or writable.
void SetReadOnly(const std::filesystem::path& path, bool readOnly = true);
// Maps a share, or unmaps it if the directory is empty.  Returns false if the system can't map
// shares.
bool MapShare(const char* share, const std::filesystem::path& directory);

// Sets an environment variable, or with null removes it.
void SetEnvironment(const char* name, const char* value);
// Sets the time zone of the process, or with null the system's.  On Windows it stays the system's.
void SetTimeZone(const char* zone);

// The last-write time in seconds since 1970.  Both throw std::runtime_error.
std::int64_t TimeOf(const std::filesystem::path& path);
void SetTimeOf(const std::filesystem::path& path, std::int64_t seconds);

// Runs a shell command and captures its output.  The status is the exit code, or 128 + n after
// signal n.
struct CommandResult {
  int status;
  std::string output;  // stdout and stderr
};
CommandResult RunCommand(const std::string& command);
// Whether a program is installed.
bool HaveProgram(std::string_view name);

}  // namespace kozor::test
