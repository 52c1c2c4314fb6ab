// PathApi.cpp - calls that return a path: the process's directory and that for temporaries, full
// paths, and conversions of host paths.
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "platform/win32/AnsiPath.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/PosixSystem.h"
#include "platform/win32/PosixText.h"
#include "platform/win32/posix/Drives.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;

// The common result of buffer calls: the length, or the size needed.
DWORD GiveText(const std::optional<std::string>& text, DWORD bytes, LPSTR buffer) {
  if (!text) return 0;
  const auto length = static_cast<DWORD>(text->size());
  if (length >= bytes) return length + 1;
  std::memcpy(buffer, text->c_str(), length + 1);
  return length;
}

// The start of a parsed path, as a library path without a trailing '\'.
std::optional<std::string> StartText(const LibraryPath& path) {
  if (!path.root.empty()) return path.root;
  std::optional<std::string> start =
      ToLibraryPath(path.base.empty() ? ProcessDirectory() : path.base);
  if (start && start->ends_with('\\')) start->pop_back();
  return start;
}

std::optional<std::string> FullPath(LPCSTR name) {
  const std::optional<LibraryPath> path = ParsePath(name, PathUse::Text);
  std::optional<std::string> full = path ? StartText(*path) : std::nullopt;
  if (!full) return std::nullopt;
  const std::size_t startLength = full->size();
  std::string libraryName;
  for (const std::string& hostName : path->names) {
    ToLibraryName(hostName, libraryName);
    *full += '\\' + libraryName;
  }
  if (!path->mask.empty()) *full += '\\' + path->mask;
  if (path->trailingSeparator || full->size() == startLength) *full += '\\';
  return full;
}

std::string TemporaryDirectory() {
  const char* const chosen = std::getenv("TMPDIR");
  return chosen != nullptr && *chosen == '/' ? chosen : "/tmp";
}

// Converts a relative host path to a library path; returns false if a component can't be expressed.
bool RelativeToLibrary(std::string_view hostPath, std::string& path) {
  std::string name;
  for (const std::string_view hostName : SplitHostPath(hostPath)) {
    if (!ToLibraryName(hostName, name)) return false;
    if (!path.empty()) path += '\\';
    path += name;
  }
  return true;
}

}  // namespace

DWORD WINAPI GetTempPathA(DWORD bytes, LPSTR buffer) {
  std::optional<std::string> path = ToLibraryPath(TemporaryDirectory());
  if (path && !path->ends_with('\\')) *path += '\\';
  return GiveText(path, bytes, buffer);
}

DWORD WINAPI GetFinalPathNameByHandleA(HANDLE handle, LPSTR path, DWORD bytes, DWORD flags) {
  if (flags != 0) return static_cast<DWORD>(Fail(ERROR_INVALID_PARAMETER));
  const auto file = FindObject<File>(handle);
  if (!file) return 0;
  std::array<char, PATH_MAX> host{};
  const std::string link = "/proc/self/fd/" + std::to_string(file->Descriptor());
  const ssize_t length = ::readlink(link.c_str(), host.data(), host.size());
  if (length < 0) return static_cast<DWORD>(FailErrno());
  bool isWhole = false;
  const auto found = ToLibraryPath({host.data(), static_cast<std::size_t>(length)}, &isWhole);
  if (found && !isWhole) return static_cast<DWORD>(Fail(ERROR_PATH_NOT_FOUND));
  return GiveText(found, bytes, path);
}

DWORD WINAPI GetCurrentDirectoryA(DWORD bytes, LPSTR buffer) {
  const std::string directory = ProcessDirectory();
  if (directory.empty()) return static_cast<DWORD>(FailErrno());
  return GiveText(ToLibraryPath(directory), bytes, buffer);
}

DWORD WINAPI GetFullPathNameA(LPCSTR name, DWORD bytes, LPSTR buffer, LPSTR* filePart) {
  const std::optional<std::string> path = FullPath(name);
  const DWORD length = GiveText(path, bytes, buffer);
  if (filePart == nullptr) return length;
  *filePart = nullptr;
  if (length == 0 || length >= bytes) return length;
  const std::size_t nameLength = length - kozor::AnsiPath(buffer).Folder().size();
  if (nameLength != 0) *filePart = buffer + (length - nameLength);
  return length;
}

int KzHostToLibraryPath(const char* hostPath, std::string& libraryPath) {
  const std::string_view host = hostPath == nullptr ? "" : hostPath;
  if (host.empty()) return Fail(ERROR_PATH_NOT_FOUND);
  std::string path;
  bool whole = true;
  if (host.front() == '/') {
    std::optional<std::string> absolute = ToLibraryPath(host, &whole);
    if (!absolute) return FALSE;
    path = *std::move(absolute);
  } else {
    whole = RelativeToLibrary(host, path);
  }
  if (!whole) return Fail(ERROR_INVALID_NAME);
  if (host.ends_with('/') && !path.ends_with('\\')) path += '\\';
  libraryPath = std::move(path);
  return TRUE;
}

int KzLibraryToHostPath(const char* libraryPath, std::string& hostPath) {
  const std::optional<LibraryPath> path = ParsePath(libraryPath);
  if (!path) return FALSE;
  const Found found = LookUp(*path);
  const std::string_view host = found.host;
  hostPath = host.starts_with("./") ? host.substr(2) : host;
  return TRUE;
}
