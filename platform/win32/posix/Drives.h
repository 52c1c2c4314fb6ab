// Drives.h - the process's table of drives and shares and their host directories.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kozor::posix {

// Host directories in this table are absolute and have no trailing '/', so the host's root is "".

// The directory of a drive, by its letter in either case.
std::optional<std::string> DriveDirectory(char letter);
// The directory of \\server\share.  Empty, with the last error ERROR_BAD_NETPATH if no share of the
// server is mapped, else ERROR_BAD_NET_NAME.
std::optional<std::string> ShareDirectory(std::string_view server, std::string_view share);

struct DrivePlace {
  char letter;            // upper case
  std::string directory;  // of the drive
};
// The drive that holds an absolute host path: the one whose directory is its longest prefix.
std::optional<DrivePlace> DriveOf(std::string_view hostPath);

// Whether an absolute host path is `directory` (as in this table) or lies below it.
bool IsAtOrBelow(std::string_view hostPath, std::string_view directory);

// The process's directory, absolute; empty with errno set if it is gone.
std::string ProcessDirectory();

}  // namespace kozor::posix
