// Paths.cpp - see Paths.h.
#include "platform/win32/posix/Paths.h"

#include <algorithm>
#include <cctype>

#include "platform/text/Path.h"
#include "platform/text/WildCard.h"
#include "platform/win32/posix/Drives.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

constexpr text::PathRules kRules = {.slashSeparates = true, .isLeadByte = IsLeadByte};

bool IsSeparator(char c) {
  return kRules.IsSeparator(c);
}

// The start of a path, and its text after the root.
struct Start {
  std::string base;  // as in LibraryPath
  std::string_view rest;
  std::string root{};  // as in LibraryPath
  bool share = false;
};

std::optional<Start> StartOnDrive(char letter, std::string_view rest, PathUse use) {
  std::optional<std::string> directory = DriveDirectory(letter);
  if (!directory && use == PathUse::Text) directory = "";
  if (!directory) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return std::nullopt;
  }
  if (rest.empty() || !IsSeparator(rest.front())) {
    // "C:name" is relative to the process's directory if that is on this drive, else to the root.
    const std::optional<DrivePlace> here = DriveOf(ProcessDirectory());
    if (here && here->letter == std::toupper(static_cast<unsigned char>(letter))) {
      return Start{"", rest};
    }
  }
  return Start{*directory + '/', rest, {letter, ':'}};
}

std::optional<Start> StartOnShare(std::string_view rest, PathUse use) {
  const std::string_view server = text::TakeComponent(rest, kRules);
  const std::string_view share = text::TakeComponent(rest, kRules);
  if (share.empty()) {
    SetLastError(ERROR_BAD_PATHNAME);
    return std::nullopt;
  }
  std::optional<std::string> directory = ShareDirectory(server, share);
  if (!directory && use == PathUse::Text) directory = "";
  if (!directory) return std::nullopt;
  std::string root = R"(\\)";
  root.append(server).append(1, '\\').append(share);
  return Start{*directory + '/', rest, std::move(root), true};
}

// "\name" lies on the drive of the process's directory.
std::optional<Start> StartOnCurrentDrive(std::string_view rest) {
  const std::optional<DrivePlace> here = DriveOf(ProcessDirectory());
  if (!here) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return std::nullopt;
  }
  return Start{here->directory + '/', rest, {here->letter, ':'}};
}

std::optional<Start> FindStart(std::string_view text, PathUse use) {
  if (text.size() >= 2 && text[1] == ':') return StartOnDrive(text[0], text.substr(2), use);
  if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1])) {
    return StartOnShare(text.substr(2), use);
  }
  if (IsSeparator(text[0])) return StartOnCurrentDrive(text);
  return Start{"", text};
}

// The directory `levels` above the process's, but never above its drive's root.
std::optional<std::string> ClimbFromProcessDirectory(std::size_t levels) {
  std::string directory = ProcessDirectory();
  if (directory.empty()) {
    FailErrno();
    return std::nullopt;
  }
  const std::optional<DrivePlace> drive = DriveOf(directory);
  const std::size_t root = drive ? drive->directory.size() : 0;
  for (; levels > 0 && directory.size() > root; --levels) {
    directory.resize(std::max(root, directory.rfind('/')));
  }
  return directory + '/';
}

// Appends the components of `start.rest` to `path`, resolving "." and "..".  Counts in `climbs`
// each ".." that leads above a relative start.
bool AddComponents(const Start& start, PathUse use, LibraryPath& path, std::size_t& climbs) {
  std::string_view rest = start.rest;
  while (!rest.empty() && IsSeparator(rest.front())) rest.remove_prefix(1);
  path.names.reserve(
      static_cast<std::size_t>(std::count_if(rest.begin(), rest.end(), IsSeparator)) + 1);
  while (!rest.empty()) {
    const std::string_view component = text::TakeComponent(rest, kRules);
    path.trailingSeparator = component.data() + component.size() != rest.data();
    if (component == ".") continue;
    if (component == "..") {
      if (!path.names.empty()) {
        path.names.pop_back();
      } else if (start.base.empty()) {
        ++climbs;
      }
      continue;
    }
    if (text::HasWildCards(component) && use != PathUse::OneName && rest.empty() &&
        !path.trailingSeparator) {
      path.mask = component;
      return true;
    }
    if (!ToHostName(component, path.names.emplace_back())) return false;
  }
  return true;
}

}  // namespace

std::string LibraryPath::Host(std::size_t count) const {
  std::string host = base;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) host += '/';
    host += names[i];
  }
  return host.empty() ? "." : host;
}

std::optional<LibraryPath> ParsePath(const char* path, PathUse use) {
  const std::string_view text = path == nullptr ? "" : path;
  if (text.empty()) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return std::nullopt;
  }
  const std::optional<Start> start = FindStart(text, use);
  if (!start) return std::nullopt;
  LibraryPath parsed;
  parsed.base = start->base;
  parsed.root = start->root;
  parsed.share = start->share;
  std::size_t climbs = 0;
  if (!AddComponents(*start, use, parsed, climbs)) return std::nullopt;
  if (climbs > 0) {
    const std::optional<std::string> base = ClimbFromProcessDirectory(climbs);
    if (!base) return std::nullopt;
    parsed.base = *base;
  }
  return parsed;
}

bool MakeAbsolute(LibraryPath& path) {
  if (!path.base.empty() || !path.names.empty()) return true;
  const std::string directory = ProcessDirectory();
  if (directory.empty()) {
    FailErrno();
    return false;
  }
  path.base.assign(1, '/');
  for (const std::string_view name : SplitHostPath(directory)) path.names.emplace_back(name);
  return true;
}

std::string_view HostNameOf(std::string_view hostPath) {
  return hostPath.substr(hostPath.rfind('/') + 1);
}

std::string HostParentOf(std::string_view hostPath) {
  const std::size_t slash = hostPath.rfind('/');
  if (slash == std::string_view::npos) return ".";
  return std::string(hostPath.substr(0, std::max(slash, std::size_t{1})));
}

std::string JoinHost(const std::string& directory, const std::string& name) {
  return directory.ends_with('/') ? directory + name : directory + '/' + name;
}

std::vector<std::string_view> SplitHostPath(std::string_view hostPath) {
  std::vector<std::string_view> names;
  while (!hostPath.empty()) {
    const std::size_t end = std::min(hostPath.find('/'), hostPath.size());
    if (end > 0) names.push_back(hostPath.substr(0, end));
    hostPath.remove_prefix(std::min(end + 1, hostPath.size()));
  }
  return names;
}

std::optional<std::string> ToLibraryPath(std::string_view hostPath, bool* whole) {
  const std::optional<DrivePlace> drive = DriveOf(hostPath);
  if (!drive) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return std::nullopt;
  }
  std::string path = {drive->letter, ':'};
  hostPath.remove_prefix(drive->directory.size());
  std::string name;
  bool all = true;
  for (const std::string_view hostName : SplitHostPath(hostPath)) {
    all = ToLibraryName(hostName, name) && all;
    path += '\\';
    path += name;
  }
  if (path.size() == 2) path += '\\';
  if (whole != nullptr) *whole = all;
  return path;
}

}  // namespace kozor::posix
