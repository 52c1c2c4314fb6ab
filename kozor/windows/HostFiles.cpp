// HostFiles.cpp - see ../HostFiles.h.  The Windows implementation.
//
// An open directory can't be moved: it is opened without FILE_SHARE_DELETE, and the system doesn't
// rename directories above open ones.  So the path by which it was opened is as safe as the handle.
#include "kozor/HostFiles.h"

#include <windows.h>
#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cwctype>
#include <memory>

#include "kozor/Failure.h"
#include "kozor/Host.h"
#include "kozor/windows/Wide.h"
#include "platform/base/ByteOrder.h"
#include "platform/base/Clock.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr DWORD kNoDeleting = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kShareAll = kNoDeleting | FILE_SHARE_DELETE;
constexpr DWORD kDirectoryItself = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT;

// The object that a HostHandle points to.
struct Opened {
  HANDLE handle;
  std::wstring path;  // in the \\?\ form
};

Opened& At(HostHandle handle) {
  return *reinterpret_cast<Opened*>(handle);
}

HANDLE System(HostHandle handle) {
  return At(handle).handle;
}

std::wstring PathOf(HostHandle directory, const std::string& name) {
  std::wstring path = At(directory).path;
  if (name == ".") return path;
  if (!path.ends_with(L'\\')) path += L'\\';
  return path + FromUtf8(name).native();
}

Descriptor Open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition,
                DWORD flags) {
  const HANDLE handle =
      CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Descriptor();
  return Descriptor(reinterpret_cast<HostHandle>(new Opened{handle, path}));
}

// Keeps what was opened if it is a directory or a file, as demanded, and no link.
Descriptor UnlessLink(Descriptor opened, bool directory) {
  FILE_ATTRIBUTE_TAG_INFO facts;
  if (!opened.IsOpen()) return opened;
  if (!GetFileInformationByHandleEx(System(opened.Number()), FileAttributeTagInfo, &facts,
                                    sizeof facts)) {
    return Descriptor();
  }
  const bool isDirectory = (facts.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (isDirectory == directory && !IsLinkTag(facts.FileAttributes, facts.ReparseTag)) return opened;
  SetLastError(isDirectory ? ERROR_ALREADY_EXISTS : ERROR_DIRECTORY);
  return Descriptor();
}

FILETIME HostTime(std::uint64_t fileTime) {
  return {.dwLowDateTime = static_cast<DWORD>(fileTime),
          .dwHighDateTime = static_cast<DWORD>(fileTime >> 32)};
}

void SetTime(HANDLE file, std::uint64_t lastWrite) {
  const FILETIME time = HostTime(lastWrite);
  if (!SetFileTime(file, nullptr, nullptr, &time)) FailBySystem();
}

// The result of FSCTL_GET_REPARSE_POINT for a symbolic link or a junction.  Lengths are in bytes;
// offsets count from the first name.
struct LinkData {
  DWORD tag;
  WORD bytes;
  WORD reserved;
  WORD substituteOffset;
  WORD substituteBytes;
  WORD printOffset;
  WORD printBytes;
  // Next come four bytes of flags (for a symbolic link only), then the names.
};

}  // namespace

void Descriptor::Close() {
  if (IsOpen()) Finish();
}

bool Descriptor::Finish() {
  const std::unique_ptr<Opened> opened(&At(std::exchange(number, kNotOpen)));
  return CloseHandle(opened->handle) != 0;
}

const char* const kTemporaryVariable = "TMP";

std::string LastSystemError() {
  return HostErrorText(static_cast<int>(GetLastError()));
}

void FailBySystem() {
  throw FileFailure(LastSystemError());
}

Descriptor OpenDirectory(const fs::path& path) {
  return Open(SystemPath(path), FILE_LIST_DIRECTORY, kNoDeleting, OPEN_EXISTING,
              FILE_FLAG_BACKUP_SEMANTICS);
}

Descriptor OpenFolder(HostHandle in, const std::string& name) {
  return UnlessLink(Open(PathOf(in, name), FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, kNoDeleting,
                         OPEN_EXISTING, kDirectoryItself),
                    true);
}

Descriptor OpenOrMakeFolder(HostHandle in, const std::string& name, bool& isNew) {
  isNew = false;
  Descriptor opened = OpenFolder(in, name);
  if (opened.IsOpen() || GetLastError() != ERROR_FILE_NOT_FOUND) return opened;
  isNew = CreateDirectoryW(PathOf(in, name).c_str(), nullptr) != 0;
  if (!isNew && GetLastError() != ERROR_ALREADY_EXISTS) return opened;
  return OpenFolder(in, name);
}

fs::path PathIn(HostHandle directory, const std::string& name) {
  return PathOf(directory, name);
}

std::vector<std::string> NamesIn(HostHandle directory) {
  // Read by the handle: a search opens the directory anew, without sharing it with who may delete
  // it.
  std::vector<std::string> names;
  alignas(FILE_ID_BOTH_DIR_INFO) std::array<char, 16 << 10> block;
  for (auto kind = FileIdBothDirectoryRestartInfo;
       GetFileInformationByHandleEx(System(directory), kind, block.data(), block.size());
       kind = FileIdBothDirectoryInfo) {
    const FILE_ID_BOTH_DIR_INFO* entry = nullptr;
    for (std::size_t at = 0; entry == nullptr || entry->NextEntryOffset != 0;
         at += entry->NextEntryOffset) {
      entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(block.data() + at);
      const fs::path name(std::wstring(entry->FileName, entry->FileNameLength / sizeof(wchar_t)));
      if (name != L"." && name != L"..") names.push_back(Shown(name));
    }
  }
  return names;
}

// A folder is held if nobody else can open it with the right to delete it.
Descriptor MakeHeldFolder(HostHandle in, const std::string& name) {
  if (!CreateDirectoryW(PathOf(in, name).c_str(), nullptr)) {
    if (GetLastError() == ERROR_ALREADY_EXISTS) return Descriptor();
    throw FileFailure("can't create a directory here: " + LastSystemError());
  }
  Descriptor directory = OpenFolder(in, name);
  if (!directory.IsOpen() && GetLastError() != ERROR_FILE_NOT_FOUND &&
      GetLastError() != ERROR_SHARING_VIOLATION) {
    throw FileFailure("can't create a directory here: " + LastSystemError());
  }
  return directory;
}

Descriptor HoldLeftover(HostHandle in, const std::string& name) {
  return UnlessLink(Open(PathOf(in, name), DELETE | FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES,
                         kShareAll, OPEN_EXISTING, kDirectoryItself),
                    true);
}

void RemoveHeldFolder(HostHandle in, const std::string& name, Descriptor& folder) {
  folder.Close();
  RemoveEmptyFolder(in, name);
}

bool RemoveFile(HostHandle in, const std::string& name) {
  const std::wstring path = PathOf(in, name);
  if (DeleteFileW(path.c_str())) return true;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return isLink && RemoveDirectoryW(path.c_str());
  }
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  return DeleteFileW(path.c_str());
}

void RemoveEmptyFolder(HostHandle in, const std::string& name) {
  RemoveDirectoryW(PathOf(in, name).c_str());
}

std::optional<Occupant> LookAt(HostHandle in, const std::string& name) {
  WIN32_FIND_DATAW found;
  const HANDLE find = FindFirstFileW(PathOf(in, name).c_str(), &found);
  if (find == INVALID_HANDLE_VALUE) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return std::nullopt;
    FailBySystem();
  }
  FindClose(find);
  const bool isLink = IsLinkTag(found.dwFileAttributes, found.dwReserved0);
  const bool isDirectory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const bool isReadOnly = (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  return Occupant{.isDirectory = isDirectory && !isLink,
                  .isFile = !isDirectory && !isLink,
                  .isLink = isLink,
                  .isReadOnly = isReadOnly && !isDirectory,
                  .size = JoinHalves(found.nFileSizeHigh, found.nFileSizeLow),
                  .time = SecondsOf(found.ftLastWriteTime),
                  .nanoseconds = NanosecondsOfFileTime(Ticks(found.ftLastWriteTime))};
}

std::string LinkTarget(HostHandle in, const std::string& name) {
  const Descriptor link =
      Open(PathOf(in, name), FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING, kDirectoryItself);
  std::vector<unsigned char> bytes(MAXIMUM_REPARSE_DATA_BUFFER_SIZE);
  DWORD got = 0;
  if (!link.IsOpen() ||
      !DeviceIoControl(System(link.Number()), FSCTL_GET_REPARSE_POINT, nullptr, 0, bytes.data(),
                       static_cast<DWORD>(bytes.size()), &got, nullptr) ||
      got < sizeof(LinkData)) {
    return "";
  }
  LinkData data;
  std::copy_n(bytes.data(), sizeof data, reinterpret_cast<unsigned char*>(&data));
  if (!IsLinkTag(FILE_ATTRIBUTE_REPARSE_POINT, data.tag)) return "";
  const std::size_t begin = sizeof data + (data.tag == IO_REPARSE_TAG_SYMLINK ? 4 : 0) +
                            (data.printBytes > 0 ? data.printOffset : data.substituteOffset);
  const std::size_t count = data.printBytes > 0 ? data.printBytes : data.substituteBytes;
  if (begin + count > got) return "";
  std::wstring target(count / 2, L'\0');
  std::copy_n(bytes.data() + begin, target.size() * 2,
              reinterpret_cast<unsigned char*>(target.data()));
  return fs::path(target).generic_string();
}

bool IsLink(HostHandle in, const std::string& name) {
  const std::optional<Occupant> occupant = LookAt(in, name);
  return occupant && occupant->isLink;
}

Descriptor OpenFile(HostHandle in, const std::string& name) {
  return UnlessLink(
      Open(PathOf(in, name), GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT),
      false);
}

std::size_t ReadBlock(HostHandle file, std::span<char> block) {
  std::size_t got = 0;
  while (got < block.size()) {
    DWORD bytes = 0;
    if (!ReadFile(System(file), block.data() + got, static_cast<DWORD>(block.size() - got), &bytes,
                  nullptr)) {
      FailBySystem();
    }
    if (bytes == 0) break;
    got += bytes;
  }
  return got;
}

void CopyFileIn(HostHandle from, const std::string& name, HostHandle to,
                const std::string& newName) {
  constexpr DWORD kFlags = COPY_FILE_FAIL_IF_EXISTS | COPY_FILE_COPY_SYMLINK;
  if (!CopyFileExW(PathOf(from, name).c_str(), PathOf(to, newName).c_str(), nullptr, nullptr,
                   nullptr, kFlags)) {
    FailBySystem();
  }
}

Move MoveTo(HostHandle from, const std::string& name, HostHandle to, const std::string& newName,
            bool replace) {
  const std::wstring source = PathOf(from, name);
  const std::wstring target = PathOf(to, newName);
  if (MoveFileExW(source.c_str(), target.c_str(), replace ? MOVEFILE_REPLACE_EXISTING : 0)) {
    return Move::Done;
  }
  const DWORD error = GetLastError();
  if (!replace && (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS)) {
    return Move::Occupied;
  }
  if (error == ERROR_NOT_SAME_DEVICE) return Move::OtherFileSystem;
  // Windows doesn't replace a read-only file; here replacing it is permitted.
  const DWORD attributes = replace ? GetFileAttributesW(target.c_str()) : INVALID_FILE_ATTRIBUTES;
  const bool isReadOnly = attributes != INVALID_FILE_ATTRIBUTES &&
                          (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
                          (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  if (isReadOnly && SetFileAttributesW(target.c_str(), FILE_ATTRIBUTE_NORMAL)) {
    if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) return Move::Done;
    const DWORD second = GetLastError();
    SetFileAttributesW(target.c_str(), attributes);
    SetLastError(second);
    FailBySystem();
  }
  SetLastError(error);
  FailBySystem();
}

void MakeLink(HostHandle in, const std::string& name, const fs::path& target,
              std::uint64_t lastWrite) {
  const std::wstring path = PathOf(in, name);
  fs::path native = target;
  native.make_preferred();
  // Windows tells links to directories from others.  Without a target the link is one to a file.
  const fs::path absolute = SystemPath(fs::path(At(in).path) / native);
  const DWORD attributes = GetFileAttributesW(absolute.c_str());
  const bool isDirectory =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const DWORD kind = isDirectory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
  // Most users may make links only in developer mode, with this flag.
  constexpr DWORD kUnprivileged = 0x2;
  if (!CreateSymbolicLinkW(path.c_str(), native.c_str(), kind | kUnprivileged) &&
      !CreateSymbolicLinkW(path.c_str(), native.c_str(), kind)) {
    FailBySystem();
  }
  const Descriptor link =
      Open(path, FILE_WRITE_ATTRIBUTES, kShareAll, OPEN_EXISTING, kDirectoryItself);
  const FILETIME time = HostTime(lastWrite);
  if (link.IsOpen()) SetFileTime(System(link.Number()), nullptr, nullptr, &time);
}

void FinishDirectory(HostHandle directory, unsigned int /*mode*/, std::uint64_t lastWrite) {
  const Descriptor folder = Open(PathOf(directory, "."), FILE_WRITE_ATTRIBUTES, kShareAll,
                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  if (!folder.IsOpen()) FailBySystem();
  SetTime(System(folder.Number()), lastWrite);
}

// Windows has only one of the permission bits: whether the owner may write.
void FinishFile(Descriptor& file, unsigned int mode, std::uint64_t lastWrite) {
  SetTime(System(file.Number()), lastWrite);
  FILE_BASIC_INFO facts{};  // zeros: leaves the times unchanged
  facts.FileAttributes = FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY;
  constexpr unsigned int kOwnerMayWrite = 0200;
  const bool readOnly = mode != 0 && (mode & kOwnerMayWrite) == 0;
  if (readOnly &&
      !SetFileInformationByHandle(System(file.Number()), FileBasicInfo, &facts, sizeof facts)) {
    FailBySystem();
  }
  if (!file.Finish()) FailBySystem();
}

Descriptor CreateNewFile(HostHandle in, const std::string& name) {
  Descriptor file = Open(PathOf(in, name), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE,
                         CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
  if (!file.IsOpen()) FailBySystem();
  return file;
}

unsigned int ModeOf(HostHandle /*file*/) {
  return 0;
}

void WriteAll(HostHandle file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    if (!WriteFile(System(file), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   nullptr)) {
      FailBySystem();
    }
    bytes = bytes.subspan(written);
  }
}

void Flush(HostHandle file) {
  if (!FlushFileBuffers(System(file))) FailBySystem();
}

void Reserve(HostHandle file, std::uint64_t bytes) {
  LARGE_INTEGER size;
  size.QuadPart = static_cast<LONGLONG>(bytes);
  if (!SetFilePointerEx(System(file), size, nullptr, FILE_BEGIN) || !SetEndOfFile(System(file))) {
    FailBySystem();
  }
}

// Creating the mapping gives the file its size.
std::span<unsigned char> ReserveAndMap(HostHandle file, std::uint64_t bytes) {
  const HANDLE mapping =
      CreateFileMappingW(System(file), nullptr, PAGE_READWRITE, static_cast<DWORD>(bytes >> 32),
                         static_cast<DWORD>(bytes), nullptr);
  if (mapping == nullptr) FailBySystem();
  void* const address = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
  const DWORD error = GetLastError();
  CloseHandle(mapping);
  SetLastError(error);
  if (address == nullptr) FailBySystem();
  return {static_cast<unsigned char*>(address), static_cast<std::size_t>(bytes)};
}

void Unmap(std::span<unsigned char> contents) {
  if (!contents.empty()) UnmapViewOfFile(contents.data());
}

}  // namespace kozor::program
