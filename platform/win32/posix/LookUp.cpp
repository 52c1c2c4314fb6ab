// LookUp.cpp - see LookUp.h.
#include "platform/win32/posix/LookUp.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <optional>

#include "platform/win32/HostRules.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/posix/DirectoryNames.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

std::atomic<bool> findsExactly{false};
std::atomic<bool> createsExactly{true};

Match MatchFor(Purpose purpose) {
  const bool exactly = findsExactly || (purpose == Purpose::Create && createsExactly);
  return exactly ? Match::ExactCase : Match::IgnoreCase;
}

bool IsMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

// Resolves the components of a path, starting after the longest prefix that exists exactly as
// written.
class Resolver {
 public:
  explicit Resolver(const LibraryPath& whole) : path(whole) {}

  Found Resolve(Purpose purpose) {
    Found found;
    if (ReadExact(path.Host(), found)) return found;
    if (!IsMissing(errno) || path.names.empty()) {
      found.error = ErrorFromErrno(errno);
      return found;
    }
    return ResolveName(path.names.size() - 1, purpose);
  }

 private:
  static bool ReadExact(std::string host, Found& found) {
    found.host = std::move(host);
    found.exists = ReadMetadata(AT_FDCWD, found.host.c_str(), found.metadata);
    if (found.exists) found.error = ERROR_SUCCESS;
    return found.exists;
  }

  // Resolves component `index`, which doesn't exist exactly as written.
  Found ResolveName(std::size_t index, Purpose purpose) {
    Found found;
    found.host = path.Host(index + 1);
    found.error = ERROR_PATH_NOT_FOUND;
    const std::optional<std::string> parent = ResolveDirectory(index);
    if (!parent) return found;
    const std::string& name = path.names[index];
    const bool isNew = *parent != path.Host(index);  // not the directory that was already tried
    if (isNew && ReadExact(JoinHost(*parent, name), found)) return found;
    if (isNew && errno != ENOENT) {
      found.error = ErrorFromErrno(errno);
      return found;
    }
    const std::optional<std::string> other = FindMatchingName(*parent, name, MatchFor(purpose));
    if (other && ReadExact(JoinHost(*parent, *other), found)) return found;
    found.host = JoinHost(*parent, name);
    found.error = ERROR_FILE_NOT_FOUND;
    return found;
  }

  // The host path of the first `count` components, if that is a directory.
  std::optional<std::string> ResolveDirectory(std::size_t count) {
    Found found;
    if (!ReadExact(path.Host(count), found) && count > 0 && IsMissing(errno)) {
      found = ResolveName(count - 1, Purpose::Find);
    }
    if (!found.exists || !found.metadata.IsDirectory()) return std::nullopt;
    return found.host;
  }

  const LibraryPath& path;
};

}  // namespace

Found LookUp(const LibraryPath& path, Purpose purpose) {
  return Resolver(path).Resolve(purpose);
}

bool IsCreatedExactly(const LibraryPath& path) {
  return !path.names.empty() && !path.trailingSeparator &&
         !OthersMayMatch(path.names.back(), MatchFor(Purpose::Create));
}

bool LookUpExisting(const LibraryPath& path, Found& found) {
  found = LookUp(path);
  if (!found.exists) return Fail(found.error);
  if (path.trailingSeparator && !found.metadata.IsDirectory()) {
    return Fail(ERROR_INVALID_NAME);
  }
  return true;
}

}  // namespace kozor::posix

int KzSetCaseSensitive(int on) {
  return kozor::posix::findsExactly.exchange(on != 0) ? 1 : 0;
}

int KzSetCaseBlindCreation(int on) {
  return kozor::posix::createsExactly.exchange(on == 0) ? 0 : 1;
}

int KzCreatesExactly() {
  return kozor::posix::MatchFor(kozor::posix::Purpose::Create) == kozor::posix::Match::ExactCase;
}
