// Host.h - what the tests ask of the system they run on.  One side for each system: posix/ and
// windows/.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kozor::test {

// A new empty directory below the one for temporaries.
std::filesystem::path MakeTestDirectory();
// Makes test directories in memory from now on, where the system has such a place.
void UseMemory();
// Lets everything below a directory be removed.
void MakeRemovable(const std::filesystem::path& directory);

// A path as the library takes it: on drive C:, where C: is the host's root, or as it is on Windows.
std::string LibraryPathOf(const std::filesystem::path& path);
// A path in a shell command, without quotes around it.
std::string ShellPathOf(const std::filesystem::path& path);
// The command that runs a program of ours, for a shell.
std::string ShellProgram(const std::filesystem::path& program);

// Makes a file read-only, or lets it be written again.
void SetReadOnly(const std::filesystem::path& path, bool readOnly = true);
// Maps a share, or unmaps it where the directory is empty.  False where the system has no share of
// our making.
bool MapShare(const char* share, const std::filesystem::path& directory);

// Sets an environment variable, or with null removes it.
void SetEnvironment(const char* name, const char* value);

// Last write in seconds since 1970.  Throw std::runtime_error.
std::int64_t TimeOf(const std::filesystem::path& path);
void SetTimeOf(const std::filesystem::path& path, std::int64_t seconds);

// Runs a shell command with its output caught; returns the exit status, 128 + n for a signal.
struct CommandResult {
  int status;
  std::string output;  // stdout and stderr
};
CommandResult RunCommand(const std::string& command);
// Whether a program is installed.
bool HaveProgram(std::string_view name);

}  // namespace kozor::test
