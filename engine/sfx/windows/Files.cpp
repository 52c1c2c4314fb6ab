// Files.cpp - see ../Files.h.  The Windows implementation.
//
// Win32 has no calls that take a name relative to an open directory; the kernel's have it.  They
// also make names that ordinary programs can't open (NUL, a trailing dot), so such names are
// refused here.
#include "engine/sfx/Files.h"

#include <windows.h>

#include <winternl.h>

#include <cstring>

#include "engine/sfx/windows/Wide.h"
#include "platform/text/WindowsName.h"

namespace kozor::sfx::host {
namespace {

constexpr ULONG kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr ULONG kOpenItself =
    FILE_OPEN_REPARSE_POINT | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT;

HANDLE System(Handle file) {
  return reinterpret_cast<HANDLE>(file);
}

long Result(NTSTATUS status) {
  return status >= 0 ? 0 : Failed(RtlNtStatusToDosError(status));
}

long LastFailure() {
  return Failed(GetLastError());
}

// What the parameters mean is told in the documentation of NtCreateFile.
Handle OpenAt(Handle in, const std::string& name, ACCESS_MASK access, ULONG share,
              ULONG disposition, ULONG options) {
  std::wstring wide = ToWide(name);
  if (text::IsNameForbiddenByWindows(std::wstring_view(wide))) return Failed(ERROR_INVALID_NAME);
  const auto bytes = static_cast<USHORT>(wide.size() * sizeof(wchar_t));
  UNICODE_STRING text{bytes, bytes, wide.data()};
  OBJECT_ATTRIBUTES attributes;
  InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE, System(in), nullptr);
  IO_STATUS_BLOCK ignored;
  HANDLE opened = nullptr;
  const NTSTATUS status =
      NtCreateFile(&opened, access | SYNCHRONIZE, &attributes, &ignored, nullptr,
                   FILE_ATTRIBUTE_NORMAL, share, disposition, options | kOpenItself, nullptr, 0);
  return status >= 0 ? reinterpret_cast<Handle>(opened) : Result(status);
}

// Whether a link, a junction or the like is open.
bool IsLink(Handle file) {
  FILE_ATTRIBUTE_TAG_INFO facts;
  return !GetFileInformationByHandleEx(System(file), FileAttributeTagInfo, &facts, sizeof facts) ||
         (facts.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Zeros leave a time or the attributes as they are.
long SetFacts(Handle file, std::uint64_t lastWrite, DWORD attributes) {
  FILE_BASIC_INFO facts{};
  facts.LastWriteTime.QuadPart = static_cast<LONGLONG>(lastWrite);
  facts.FileAttributes = attributes;
  const BOOL done = SetFileInformationByHandle(System(file), FileBasicInfo, &facts, sizeof facts);
  return done ? 0 : LastFailure();
}

void MakeWritable(Handle in, const std::string& name) {
  const Handle file = OpenAt(in, name, FILE_WRITE_ATTRIBUTES, kShareAll, FILE_OPEN, 0);
  if (file < 0) return;
  SetFacts(file, 0, FILE_ATTRIBUTE_NORMAL);
  Close(file);
}

long RenameOnce(Handle in, Handle file, const std::wstring& to, Existing existing) {
  constexpr std::size_t kMostBytes = 512;
  alignas(FILE_RENAME_INFO) std::uint8_t bytes[sizeof(FILE_RENAME_INFO) + kMostBytes]{};
  auto& information = *reinterpret_cast<FILE_RENAME_INFO*>(bytes);
  const std::size_t nameBytes = to.size() * sizeof(wchar_t);
  if (nameBytes > kMostBytes) return Failed(ERROR_FILENAME_EXCED_RANGE);
  information.ReplaceIfExists = existing == Existing::IsReplaced;
  information.RootDirectory = System(in);
  information.FileNameLength = static_cast<DWORD>(nameBytes);
  std::memcpy(information.FileName, to.data(), nameBytes);
  constexpr auto kRename = static_cast<FILE_INFORMATION_CLASS>(10);
  IO_STATUS_BLOCK ignored;
  return Result(NtSetInformationFile(System(file), &ignored, bytes, sizeof bytes, kRename));
}

// The absolute form that has no limit of length.
std::wstring SystemPath(std::string_view path) {
  static wchar_t full[1 << 15];
  const DWORD units =
      GetFullPathNameW(ToWide(path).c_str(), static_cast<DWORD>(std::size(full)), full, nullptr);
  const std::wstring_view absolute(full, units < std::size(full) ? units : 0);
  if (absolute.starts_with(L"\\\\?\\") || absolute.starts_with(L"\\\\.\\")) {
    return std::wstring(absolute);
  }
  if (absolute.starts_with(L"\\\\")) {
    return std::wstring(L"\\\\?\\UNC\\").append(absolute.substr(2));
  }
  return std::wstring(L"\\\\?\\").append(absolute);
}

}  // namespace

const Handle kNameTaken = -ERROR_ALREADY_EXISTS;

void Close(Handle file) {
  CloseHandle(System(file));
}

Handle OpenDirectory(std::string_view path) {
  const std::wstring whole = SystemPath(path);
  // Roots exist already: what the system says to them doesn't matter.
  for (std::size_t end = whole.find(L'\\', 4);; end = whole.find(L'\\', end + 1)) {
    CreateDirectoryW(whole.substr(0, end).c_str(), nullptr);
    if (end == std::wstring::npos) break;
  }
  const DWORD error = GetLastError();
  const HANDLE opened = CreateFileW(whole.c_str(), FILE_LIST_DIRECTORY | FILE_TRAVERSE, kShareAll,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return Failed(error);
  FILE_BASIC_INFO facts;
  if (GetFileInformationByHandleEx(opened, FileBasicInfo, &facts, sizeof facts) &&
      (facts.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return reinterpret_cast<Handle>(opened);
  }
  CloseHandle(opened);
  return Failed(ERROR_DIRECTORY);
}

Handle OpenFolder(Handle in, const std::string& name) {
  const Handle opened = OpenAt(in, name, FILE_LIST_DIRECTORY | FILE_TRAVERSE, kShareAll,
                               FILE_OPEN_IF, FILE_DIRECTORY_FILE);
  if (opened < 0 || !IsLink(opened)) return opened;
  Close(opened);
  return Failed(ERROR_DIRECTORY);
}

long SetFolderTime(Handle in, const std::string& name, std::uint64_t fileTime) {
  const Handle folder =
      OpenAt(in, name, FILE_WRITE_ATTRIBUTES, kShareAll, FILE_OPEN, FILE_DIRECTORY_FILE);
  if (folder < 0) return static_cast<long>(folder);
  const long result = SetFacts(folder, fileTime, 0);
  Close(folder);
  return result;
}

bool IsTaken(Handle in, const std::string& name) {
  const Handle file = OpenAt(in, name, FILE_READ_ATTRIBUTES, kShareAll, FILE_OPEN, 0);
  if (file >= 0) Close(file);
  return file >= 0;
}

Handle MakeFile(Handle in, const std::string& name, Access) {
  constexpr ACCESS_MASK kAccess = GENERIC_READ | GENERIC_WRITE | DELETE;
  return OpenAt(in, name, kAccess, 0, FILE_CREATE, FILE_NON_DIRECTORY_FILE);
}

// Making the mapping gives the file its size.
long ReserveAndMap(Handle file, std::uint64_t bytes, std::span<std::uint8_t>& contents) {
  const HANDLE mapping =
      CreateFileMappingW(System(file), nullptr, PAGE_READWRITE, static_cast<DWORD>(bytes >> 32),
                         static_cast<DWORD>(bytes), nullptr);
  if (mapping == nullptr) return LastFailure();
  void* const address = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
  const long result = address == nullptr ? LastFailure() : 0;
  CloseHandle(mapping);
  const auto size = static_cast<std::size_t>(bytes);
  if (result == 0) contents = {static_cast<std::uint8_t*>(address), size};
  return result;
}

void Unmap(std::span<std::uint8_t> contents) {
  UnmapViewOfFile(contents.data());
}

long FinishFile(Handle file, std::uint64_t fileTime, Access access) {
  const DWORD readOnly = access == Access::ReadOnly ? FILE_ATTRIBUTE_READONLY : 0;
  return SetFacts(file, fileTime, FILE_ATTRIBUTE_ARCHIVE | readOnly);
}

// Windows doesn't replace a read-only file; here replacing it is permitted.
long Rename(Handle in, Handle file, const std::string&, const std::string& to, Existing existing) {
  const std::wstring name = ToWide(to);
  if (text::IsNameForbiddenByWindows(std::wstring_view(name))) return Failed(ERROR_INVALID_NAME);
  const long renamed = RenameOnce(in, file, name, existing);
  if (existing == Existing::Stays || renamed != Failed(ERROR_ACCESS_DENIED)) return renamed;
  MakeWritable(in, to);
  return RenameOnce(in, file, name, existing);
}

void Remove(Handle, Handle file, const std::string&) {
  SetFacts(file, 0, FILE_ATTRIBUTE_NORMAL);
  FILE_DISPOSITION_INFO disposition{TRUE};
  SetFileInformationByHandle(System(file), FileDispositionInfo, &disposition, sizeof disposition);
}

std::uint64_t ProcessId() {
  return GetCurrentProcessId();
}

}  // namespace kozor::sfx::host
