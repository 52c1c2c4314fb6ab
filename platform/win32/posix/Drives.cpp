// Drives.cpp - see Drives.h.
#include "platform/win32/posix/Drives.h"

#include <unistd.h>

#include <array>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <utility>

#include "platform/win32/PosixAdmin.h"
#include "platform/win32/PosixSystem.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

// Keys of server and share.
using Share = std::pair<std::u16string, std::u16string>;

struct Table {
  std::shared_mutex lock;
  std::map<char, std::string> drives{{'C', ""}};
  std::map<Share, std::string> shares;
};

Table& TheTable() {
  static Table table;
  return table;
}

// Resolves links, because paths from the host (such as the process's directory) have none.  A
// directory that doesn't exist yet, such as one to be mounted later, is kept as written.
std::optional<std::string> TableForm(const char* hostDirectory) {
  if (hostDirectory == nullptr || *hostDirectory == '\0') return std::nullopt;
  std::string directory = hostDirectory;
  std::array<char, PATH_MAX> real{};
  if (::realpath(hostDirectory, real.data()) != nullptr) {
    directory = real.data();
  } else if (directory.front() != '/') {
    directory = ProcessDirectory() + '/' + directory;
  }
  while (directory.ends_with('/')) directory.pop_back();
  return directory;
}

// The upper-case letter of a device name such as "a:", else 0.
char DeviceLetter(const char* device) {
  if (device == nullptr || device[0] == '\0' || device[1] != ':' || device[2] != '\0') return 0;
  const int letter = std::toupper(static_cast<unsigned char>(device[0]));
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter) : '\0';
}

std::optional<Share> MakeShare(std::string_view server, std::string_view name) {
  std::string hostServer;
  std::string hostName;
  if (server.empty() || name.empty() || !ToHostName(server, hostServer) ||
      !ToHostName(name, hostName)) {
    return std::nullopt;
  }
  return Share{CaseKey(hostServer), CaseKey(hostName)};
}

// Splits "\\server\share".
std::optional<Share> ParseShare(std::string_view text) {
  if (!text.starts_with("\\\\")) return std::nullopt;
  text.remove_prefix(2);
  const std::size_t middle = text.find('\\');
  if (middle == std::string_view::npos) return std::nullopt;
  return MakeShare(text.substr(0, middle), text.substr(middle + 1));
}

int RemoveDrive(char letter) {
  Table& table = TheTable();
  const std::unique_lock guard(table.lock);
  const auto found = table.drives.find(letter);
  if (found == table.drives.end() || (letter == 'C' && found->second.empty())) {
    return Fail(ERROR_FILE_NOT_FOUND);
  }
  if (letter == 'C') {
    found->second.clear();
  } else {
    table.drives.erase(found);
  }
  return TRUE;
}

}  // namespace

bool IsAtOrBelow(std::string_view hostPath, std::string_view directory) {
  return hostPath.starts_with(directory) &&
         (hostPath.size() == directory.size() || hostPath[directory.size()] == '/');
}

std::string ProcessDirectory() {
  std::array<char, PATH_MAX> buffer{};
  return ::getcwd(buffer.data(), buffer.size()) != nullptr ? buffer.data() : "";
}

std::optional<std::string> DriveDirectory(char letter) {
  Table& table = TheTable();
  const std::shared_lock guard(table.lock);
  const int upper = std::toupper(static_cast<unsigned char>(letter));
  const auto found = table.drives.find(static_cast<char>(upper));
  if (found == table.drives.end()) return std::nullopt;
  return found->second;
}

std::optional<std::string> ShareDirectory(std::string_view server, std::string_view share) {
  SetLastError(ERROR_BAD_NETPATH);
  const std::optional<Share> wanted = MakeShare(server, share);
  if (!wanted) return std::nullopt;
  Table& table = TheTable();
  const std::shared_lock guard(table.lock);
  const auto found = table.shares.find(*wanted);
  if (found != table.shares.end()) return found->second;
  const auto sibling = table.shares.lower_bound(Share{wanted->first, {}});
  if (sibling != table.shares.end() && sibling->first.first == wanted->first) {
    SetLastError(ERROR_BAD_NET_NAME);
  }
  return std::nullopt;
}

std::optional<DrivePlace> DriveOf(std::string_view hostPath) {
  Table& table = TheTable();
  const std::shared_lock guard(table.lock);
  std::optional<DrivePlace> best;
  for (const auto& [letter, directory] : table.drives) {
    if (!IsAtOrBelow(hostPath, directory)) continue;
    if (!best || directory.size() > best->directory.size()) best = DrivePlace{letter, directory};
  }
  return best;
}

}  // namespace kozor::posix

BOOL WINAPI DefineDosDeviceA(DWORD flags, LPCSTR device, LPCSTR hostDirectory) {
  using namespace kozor::posix;
  const char letter = DeviceLetter(device);
  if (letter == 0 || (flags & ~DDD_REMOVE_DEFINITION) != 0) return Fail(ERROR_INVALID_PARAMETER);
  if ((flags & DDD_REMOVE_DEFINITION) != 0) return RemoveDrive(letter);
  std::optional<std::string> directory = TableForm(hostDirectory);
  if (!directory) return Fail(ERROR_INVALID_PARAMETER);
  Table& table = TheTable();
  const std::unique_lock guard(table.lock);
  table.drives[letter] = *std::move(directory);
  return TRUE;
}

int KzMapShare(const char* share, const char* hostDirectory) {
  using namespace kozor::posix;
  std::optional<Share> key = share == nullptr ? std::nullopt : ParseShare(share);
  if (!key) return Fail(ERROR_BAD_NETPATH);
  std::optional<std::string> directory = TableForm(hostDirectory);
  if (hostDirectory != nullptr && !directory) return Fail(ERROR_INVALID_PARAMETER);
  Table& table = TheTable();
  const std::unique_lock guard(table.lock);
  if (directory) {
    table.shares[*std::move(key)] = *std::move(directory);
  } else if (table.shares.erase(*key) == 0) {
    return Fail(ERROR_BAD_NET_NAME);
  }
  return TRUE;
}
