// FileInformation.cpp - metadata of open files and links, attributes by name, and KzMakeProgram.
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>

#include "platform/base/Clock.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;
using kozor::Ticks;

// A time for utimensat; null, 0 and all ones mean "unchanged".
timespec NewTime(const FILETIME* time) {
  const bool keep = time == nullptr || Ticks(*time) == 0 || Ticks(*time) == ~std::uint64_t{0};
  return keep ? timespec{0, UTIME_OMIT} : FromFileTime(*time);
}

// Packs a device number into 32 bits.  The host's are wider, but the upper bits of both parts are 0
// in practice.
DWORD VolumeSerial(std::uint64_t device) {
  return static_cast<DWORD>(major(device) << 20 | minor(device));
}

void FillInformation(BY_HANDLE_FILE_INFORMATION& information, const Metadata& metadata,
                     DWORD attributes) {
  FillMetadata(information, metadata, attributes);
  information.dwVolumeSerialNumber = VolumeSerial(metadata.id.device);
  information.nNumberOfLinks = metadata.links;
  information.nFileIndexHigh = static_cast<DWORD>(metadata.id.inode >> 32);
  information.nFileIndexLow = static_cast<DWORD>(metadata.id.inode);
}

// Looks up a name; returns false with the last error set.
bool FindNamed(LPCSTR name, Found& found) {
  const std::optional<LibraryPath> path = ParsePath(name);
  return path && LookUpExisting(*path, found);
}

// The same, and reads its attributes.
bool ReadNamed(LPCSTR name, Found& found, DWORD& attributes) {
  if (!FindNamed(name, found)) return false;
  attributes = AttributesOf(found.metadata, found.HostName(), found.host.c_str());
  return true;
}

// Converts a path of the host, which needn't exist, to the library's characters.  Returns false if
// it contains others.
bool ToLibraryTarget(std::string_view host, std::string& target) {
  target.clear();
  for (;;) {
    const std::size_t end = std::min(host.find('/'), host.size());
    std::string name;
    if (!ToLibraryName(host.substr(0, end), name)) return false;
    target += name;
    if (end == host.size()) return true;
    target += '\\';
    host.remove_prefix(end + 1);
  }
}

}  // namespace

BOOL WINAPI SetFileTime(HANDLE handle, const FILETIME* creation, const FILETIME* lastAccess,
                        const FILETIME* lastWrite) {
  static_cast<void>(creation);
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  const timespec times[] = {NewTime(lastAccess), NewTime(lastWrite)};
  return ::futimens(file->Descriptor(), times) == 0 ? TRUE : FailErrno();
}

BOOL WINAPI GetFileTime(HANDLE handle, LPFILETIME creation, LPFILETIME lastAccess,
                        LPFILETIME lastWrite) {
  const auto file = FindObject<File>(handle);
  Metadata metadata;
  if (!file) return FALSE;
  if (!ReadMetadata(file->Descriptor(), metadata)) return FailErrno();
  if (creation != nullptr) *creation = ToFileTime(metadata.created);
  if (lastAccess != nullptr) *lastAccess = ToFileTime(metadata.accessed);
  if (lastWrite != nullptr) *lastWrite = ToFileTime(metadata.written);
  return TRUE;
}

int KzLookAtFile(const char* path, BY_HANDLE_FILE_INFORMATION* information) {
  Found found;
  if (!FindNamed(path, found)) return 0;
  if (found.metadata.dangling) return Fail(ERROR_FILE_NOT_FOUND);
  FillInformation(*information, found.metadata, 0);
  return 1;
}

BOOL WINAPI GetFileInformationByHandle(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION information) {
  const auto file = FindObject<File>(handle);
  Metadata metadata;
  if (!file) return FALSE;
  if (!ReadMetadata(file->Descriptor(), metadata)) return FailErrno();
  FillInformation(*information, metadata,
                  AttributesOf(metadata, file->HostName(), StoredAttributes(file->Descriptor())));
  return TRUE;
}

DWORD WINAPI GetFileAttributesA(LPCSTR name) {
  Found found;
  DWORD attributes = 0;
  return ReadNamed(name, found, attributes) ? attributes : INVALID_FILE_ATTRIBUTES;
}

BOOL WINAPI GetFileAttributesExA(LPCSTR name, GET_FILEEX_INFO_LEVELS level, LPVOID information) {
  if (level != GetFileExInfoStandard || information == nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  Found found;
  DWORD attributes = 0;
  if (!ReadNamed(name, found, attributes)) return FALSE;
  FillMetadata(*static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information), found.metadata, attributes);
  return TRUE;
}

BOOL WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes) {
  Found found;
  if (!FindNamed(name, found)) return FALSE;
  if (found.metadata.dangling) return Fail(ERROR_FILE_NOT_FOUND);
  const bool directory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (directory && !found.metadata.IsDirectory()) return Fail(ERROR_INVALID_PARAMETER);
  return StoreAttributes(found.host.c_str(), found.metadata, attributes) ? TRUE : FailErrno();
}

int KzGetUnixFacts(HANDLE handle, KzUnixFacts* facts) {
  const auto file = FindObject<File>(handle);
  struct stat info {};
  if (!file) return 0;
  if (::fstat(file->Descriptor(), &info) != 0) return FailErrno();
  *facts = {info.st_mode, info.st_uid, info.st_gid};
  return 1;
}

int KzReadLink(const char* path, KzUnixFacts* facts, FILETIME* lastWrite, std::string& target) {
  Found found;
  struct stat info {};
  if (!FindNamed(path, found)) return 0;
  if (!found.metadata.link) return Fail(ERROR_INVALID_PARAMETER);
  std::array<char, PATH_MAX> text{};
  const ssize_t bytes = ::readlink(found.host.c_str(), text.data(), text.size());
  if (bytes < 0 || ::lstat(found.host.c_str(), &info) != 0) return FailErrno();
  if (!ToLibraryTarget({text.data(), static_cast<std::size_t>(bytes)}, target)) {
    return Fail(ERROR_NO_UNICODE_TRANSLATION);
  }
  *facts = {info.st_mode, info.st_uid, info.st_gid};
  *lastWrite = ToFileTime(info.st_mtim);
  return 1;
}

int KzMakeProgram(const char* path, const char* like) {
  constexpr mode_t kAllRead = S_IRUSR | S_IRGRP | S_IROTH;
  constexpr mode_t kOwnerAll = S_IRWXU;
  Found program;
  Found model;
  if (!FindNamed(path, program) || !FindNamed(like, model)) return FALSE;
  const mode_t readable = program.metadata.mode & (model.metadata.mode | kOwnerAll) & 0777;
  const mode_t mode = readable | (readable & kAllRead) >> 2;
  return ::chmod(program.host.c_str(), mode) == 0 ? TRUE : FailErrno();
}
