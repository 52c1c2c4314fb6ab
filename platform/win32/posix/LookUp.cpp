// LookUp.cpp - see LookUp.h.
#include "platform/win32/posix/LookUp.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>

#include "platform/win32/posix/LastError.h"
#include "platform/win32/posix/OtherSpelling.h"

namespace kozor::posix {

namespace {

bool IsMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

// Resolves the names of a path one by one, from the longest beginning that exists as it is written.
class Resolver {
 public:
  explicit Resolver(const LibraryPath& whole) : path(whole) {}

  Found Resolve() {
    Found found;
    if (ReadExact(path.Host(), found)) return found;
    if (!IsMissing(errno) || path.names.empty()) {
      found.error = ErrorFromErrno(errno);
      return found;
    }
    const std::optional<std::string> parent = ResolveDirectory(path.names.size() - 1);
    if (!parent) {
      found.error = ERROR_PATH_NOT_FOUND;
      return found;
    }
    return ResolveIn(*parent, path.names.back());
  }

 private:
  static bool ReadExact(std::string host, Found& found) {
    found.host = std::move(host);
    found.exists = ReadFacts(AT_FDCWD, found.host.c_str(), found.facts);
    return found.exists;
  }

  // One name in a directory that exists.
  static Found ResolveIn(const std::string& directory, const std::string& name) {
    Found found;
    if (ReadExact(JoinHost(directory, name), found)) return found;
    found.error = ErrorFromErrno(errno);
    if (errno != ENOENT) return found;
    const std::optional<std::string> other = FindOtherSpelling(directory, name);
    if (other && !ReadExact(JoinHost(directory, *other), found))
      found.host = JoinHost(directory, name);
    if (found.exists) found.error = ERROR_SUCCESS;
    return found;
  }

  // The host path of the first `count` names, if they are a directory.
  std::optional<std::string> ResolveDirectory(std::size_t count) {
    Found found;
    if (!ReadExact(path.Host(count), found) && count > 0) {
      const std::optional<std::string> parent = ResolveDirectory(count - 1);
      if (!parent) return std::nullopt;
      found = ResolveIn(*parent, path.names[count - 1]);
    }
    if (!found.exists || !found.facts.IsDirectory()) return std::nullopt;
    return found.host;
  }

  const LibraryPath& path;
};

}  // namespace

Found LookUp(const LibraryPath& path) {
  return Resolver(path).Resolve();
}

bool LookUpExisting(const LibraryPath& path, Found& found) {
  found = LookUp(path);
  if (!found.exists) return Fail(found.error);
  if (path.trailingSeparator && !found.facts.IsDirectory()) {
    return Fail(ERROR_INVALID_NAME);
  }
  return true;
}

}  // namespace kozor::posix
