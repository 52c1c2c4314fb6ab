// Attributes.cpp - see Attributes.h.
#include "platform/win32/posix/Attributes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "platform/win32/posix/Paths.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

constexpr const char* kAttributeName = "user.DOSATTRIB";
// The attributes that can be set; all others follow from the kind of file.
constexpr DWORD kStorable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                            FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                            FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                            FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
constexpr mode_t kAllWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kAllRead = S_IRUSR | S_IRGRP | S_IROTH;

DWORD DefaultAttributes(const Metadata& metadata, std::string_view hostName) {
  const bool dot = hostName.starts_with('.') && hostName != "." && hostName != "..";
  return (metadata.IsDirectory() ? 0 : FILE_ATTRIBUTE_ARCHIVE) | (dot ? FILE_ATTRIBUTE_HIDDEN : 0);
}

// Parses hexadecimal digits after "0x"; anything that a server appends is ignored.
std::optional<DWORD> ParseStored(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return std::nullopt;
  DWORD value = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), value, 16);
  if (error != std::errc{}) return std::nullopt;
  return value & kStorable;
}

// The text is short, but servers may append data; reading fails with ERANGE if that doesn't fit.
constexpr std::size_t kRoom = 512;

std::optional<DWORD> ParseResult(ssize_t bytes, const std::array<char, kRoom>& text) {
  if (bytes <= 0) return std::nullopt;
  return ParseStored({text.data(), static_cast<std::size_t>(bytes)});
}

// The process's file mode mask.  umask() can't read it without changing it for all threads.
mode_t FileModeMask() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    unsigned mask = 0;
    if (std::sscanf(line.c_str(), "Umask: %o", &mask) == 1) return static_cast<mode_t>(mask);
  }
  return S_IWGRP | S_IWOTH;
}

// Adds write bits for the owner, and for everyone who may read as far as the mask allows.
mode_t GiveWriteBits(mode_t mode) {
  return mode | S_IWUSR | ((mode & kAllRead) >> 1 & ~FileModeMask());
}

mode_t WantedMode(const Metadata& metadata, DWORD attributes) {
  const mode_t mode = metadata.mode & 07777;
  const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  if (readOnly) return metadata.IsDirectory() ? mode : mode & ~kAllWrite;
  return (mode & kAllWrite) != 0 ? mode : GiveWriteBits(mode);
}

// Returns true if the attribute is stored, or if the file system has no extended attributes.
bool WriteStored(const char* hostPath, bool isDefault, DWORD attributes) {
  int result = 0;
  if (isDefault) {
    result = ::removexattr(hostPath, kAttributeName);
  } else {
    std::array<char, 16> text{};
    const int length = std::snprintf(text.data(), text.size(), "0x%x", attributes);
    result = Calls().setxattr(hostPath, kAttributeName, text.data(),
                              static_cast<std::size_t>(length), 0);
  }
  return result == 0 || errno == ENODATA || errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace

std::optional<DWORD> StoredAttributes(const char* hostPath) {
  std::array<char, kRoom> text;
  return ParseResult(Calls().getxattr(hostPath, kAttributeName, text.data(), text.size()), text);
}

std::optional<DWORD> StoredAttributes(int file) {
  std::array<char, kRoom> text;
  return ParseResult(::fgetxattr(file, kAttributeName, text.data(), text.size()), text);
}

bool IsReadOnly(const Metadata& metadata, std::optional<DWORD> stored) {
  return (metadata.mode & kAllWrite) == 0 || (stored.value_or(0) & FILE_ATTRIBUTE_READONLY) != 0;
}

DWORD AttributesOf(const Metadata& metadata, std::string_view hostName,
                   std::optional<DWORD> stored) {
  DWORD attributes = stored.value_or(DefaultAttributes(metadata, hostName));
  if (!metadata.dangling && IsReadOnly(metadata, stored)) attributes |= FILE_ATTRIBUTE_READONLY;
  if (metadata.IsDirectory()) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if (metadata.link) attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
  return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

DWORD AttributesOf(const Metadata& metadata, std::string_view hostName, const char* hostPath) {
  // Only regular files and directories can have user extended attributes.
  const bool canHave = metadata.IsRegular() || metadata.IsDirectory();
  return AttributesOf(metadata, hostName, canHave ? StoredAttributes(hostPath) : std::nullopt);
}

bool StoreAttributes(const char* hostPath, const Metadata& metadata, DWORD attributes) {
  attributes &= kStorable;
  const mode_t mode = metadata.mode & 07777;
  const mode_t wanted = WantedMode(metadata, attributes);
  // The extended attribute can be written only while the owner may write to the file.
  const mode_t meanwhile = mode | S_IWUSR;
  const bool openUp = meanwhile != mode && (wanted != mode || ::geteuid() != 0);
  if (openUp && ::chmod(hostPath, meanwhile) != 0) return false;
  const bool isDefault = attributes == DefaultAttributes(metadata, HostNameOf(hostPath));
  if (!WriteStored(hostPath, isDefault, attributes)) {
    const int cause = errno;
    if (openUp) ::chmod(hostPath, mode);
    errno = cause;
    return false;
  }
  return (openUp ? meanwhile : mode) == wanted || ::chmod(hostPath, wanted) == 0;
}

bool ResetAttributes(const char* hostPath, const Metadata& metadata, DWORD asked) {
  return StoreAttributes(hostPath, metadata,
                         asked | DefaultAttributes(metadata, HostNameOf(hostPath)));
}

}  // namespace kozor::posix
