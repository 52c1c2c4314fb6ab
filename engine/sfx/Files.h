// Files.h - the operations on files and directories from which Destination is built.  Each system
// has its own implementation: linux/ and windows/.
//
// Names are UTF-8, single components relative to an open directory.  None of these follows a link,
// except where it says so.  Results are 0 or a handle, or a negative error number (System.h,
// Reason).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kozor::sfx {

// Access to a finished file, subject to the system's defaults for new files.
enum class Access { ReadWrite, ReadOnly };
// What happens to a file that has the name of a new one.
enum class Existing { Stays, IsReplaced };

namespace host {

// An open file or directory.
using Handle = std::intptr_t;
inline constexpr Handle kNotOpen = -1;

void Close(Handle file);

// Opens a directory that the user has named; links in its path are followed.  Makes it and its
// parents if they are missing.
Handle OpenDirectory(std::string_view path);
// Opens a directory; makes it if it is missing.
Handle OpenFolder(Handle in, const std::string& name);
// Sets the time of last write, in units of 100 ns since 1601.
long SetFolderTime(Handle in, const std::string& name, std::uint64_t fileTime);
bool IsTaken(Handle in, const std::string& name);

// Fails with kNameTaken if anything has that name.
Handle MakeFile(Handle in, const std::string& name, Access access);
extern const Handle kNameTaken;
// Reserves the blocks of an empty file, so that a full disk is reported here, and maps it.
long ReserveAndMap(Handle file, std::uint64_t bytes, std::span<std::uint8_t>& contents);
void Unmap(std::span<std::uint8_t> contents);
// Sets the file's time of last write, and what `access` means besides MakeFile.
long FinishFile(Handle file, std::uint64_t fileTime, Access access);
// Renames an open file atomically.
long Rename(Handle in, Handle file, const std::string& from, const std::string& to,
            Existing existing);
// Removes an open file; errors are ignored.
void Remove(Handle in, Handle file, const std::string& name);

// Part of the names of temporary files.
std::uint64_t ProcessId();

}  // namespace host
}  // namespace kozor::sfx
