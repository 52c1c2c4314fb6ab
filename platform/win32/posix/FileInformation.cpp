// FileInformation.cpp - times and facts of open files, and attributes by name.
#include <sys/sysmacros.h>

#include <cerrno>
#include <optional>

#include "platform/win32/HostRules.h"
#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/FillRecords.h"
#include "platform/win32/posix/LastError.h"
#include "platform/win32/posix/LookUp.h"

namespace {

using namespace kozor::posix;

// What utimensat takes for a time that may be null, 0 or all ones: as it is.
timespec NewTime(const FILETIME* time) {
  const bool keep = time == nullptr || Ticks(*time) == 0 || Ticks(*time) == ~std::uint64_t{0};
  return keep ? timespec{0, UTIME_OMIT} : FromFileTime(*time);
}

// A device number in 32 bits.  The host's are wider, but the upper bits of both parts are 0 on real
// machines.
DWORD VolumeSerial(std::uint64_t device) {
  return static_cast<DWORD>(major(device) << 20 | minor(device));
}

void FillInformation(BY_HANDLE_FILE_INFORMATION& information, const FileFacts& facts,
                     DWORD attributes) {
  FillFacts(information, facts, attributes);
  information.dwVolumeSerialNumber = VolumeSerial(facts.id.device);
  information.nNumberOfLinks = facts.links;
  information.nFileIndexHigh = static_cast<DWORD>(facts.id.inode >> 32);
  information.nFileIndexLow = static_cast<DWORD>(facts.id.inode);
}

// Attributes and facts of what a name means.
bool ReadNamed(LPCSTR name, Found& found, DWORD& attributes) {
  const std::optional<LibraryPath> path = ParsePath(name);
  if (!path || !LookUpExisting(*path, found)) return false;
  attributes = AttributesOf(found.facts, found.HostName(), found.host.c_str());
  return true;
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
  FileFacts facts;
  if (!file) return FALSE;
  if (!ReadFacts(file->Descriptor(), facts)) return FailErrno();
  if (creation != nullptr) *creation = ToFileTime(facts.created);
  if (lastAccess != nullptr) *lastAccess = ToFileTime(facts.accessed);
  if (lastWrite != nullptr) *lastWrite = ToFileTime(facts.written);
  return TRUE;
}

int KzLookAtFile(const char* path, BY_HANDLE_FILE_INFORMATION* information) {
  const std::optional<LibraryPath> parsed = ParsePath(path);
  Found found;
  if (!parsed || !LookUpExisting(*parsed, found)) return 0;
  if (found.facts.dangling) return Fail(ERROR_FILE_NOT_FOUND);
  FillInformation(*information, found.facts, 0);
  return 1;
}

BOOL WINAPI GetFileInformationByHandle(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION information) {
  const auto file = FindObject<File>(handle);
  FileFacts facts;
  if (!file) return FALSE;
  if (!ReadFacts(file->Descriptor(), facts)) return FailErrno();
  FillInformation(*information, facts,
                  AttributesOf(facts, file->HostName(), StoredAttributes(file->Descriptor())));
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
  FillFacts(*static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(information), found.facts, attributes);
  return TRUE;
}

BOOL WINAPI SetFileAttributesA(LPCSTR name, DWORD attributes) {
  const std::optional<LibraryPath> path = ParsePath(name);
  Found found;
  if (!path || !LookUpExisting(*path, found)) return FALSE;
  if (found.facts.dangling) return Fail(ERROR_FILE_NOT_FOUND);
  const bool directory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (directory && !found.facts.IsDirectory()) return Fail(ERROR_INVALID_PARAMETER);
  return StoreAttributes(found.host.c_str(), found.facts, attributes) ? TRUE : FailErrno();
}
