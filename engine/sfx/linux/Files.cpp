// Files.cpp - see ../Files.h.  The Linux implementation.
#include "engine/sfx/Files.h"

#include <cerrno>
#include <cstdio>

#include "engine/sfx/linux/SystemCalls.h"
#include "platform/base/Clock.h"

namespace kozor::sfx::host {
namespace {

constexpr int kDirectory = O_PATH | O_DIRECTORY;

// With a full disk, a store to a hole in a mapped file would be a fatal signal.
long Reserve(int file, std::uint64_t bytes) {
  long result;
  do {
    result = AllocateBlocks(file, bytes);
  } while (result == -EINTR);
  if (result != -EOPNOTSUPP && result != -ENOSYS) return result;
  static std::uint8_t zeros[4096];  // not constant: a constant would make the program larger
  while (bytes != 0) {
    const long written = Write(file, zeros, bytes < sizeof zeros ? bytes : sizeof zeros);
    if (written < 0 && written != -EINTR) return written;
    if (written > 0) bytes -= static_cast<std::uint64_t>(written);
  }
  return 0;
}

}  // namespace

const Handle kNameTaken = -EEXIST;

void Close(Handle file) {
  CloseFile(static_cast<int>(file));
}

Handle OpenDirectory(std::string_view path) {
  const std::string whole(path);
  const int opened = OpenAt(AT_FDCWD, whole.c_str(), kDirectory);
  if (opened != -ENOENT) return opened;
  for (std::size_t end = whole.find('/', 1);; end = whole.find('/', end + 1)) {
    const long made = MakeDirectoryAt(AT_FDCWD, whole.substr(0, end).c_str());
    if (made < 0 && made != -EEXIST) return made;
    if (end == std::string::npos) break;
  }
  return OpenAt(AT_FDCWD, whole.c_str(), kDirectory);
}

Handle OpenFolder(Handle in, const std::string& name) {
  const int above = static_cast<int>(in);
  const int opened = OpenAt(above, name.c_str(), kDirectory | O_NOFOLLOW);
  if (opened != -ENOENT) return opened;
  const long made = MakeDirectoryAt(above, name.c_str());
  if (made < 0 && made != -EEXIST) return made;
  return OpenAt(above, name.c_str(), kDirectory | O_NOFOLLOW);
}

long SetFolderTime(Handle in, const std::string& name, std::uint64_t fileTime) {
  const timespec time = TimespecOfFileTime<timespec>(fileTime);
  return SetTimesAt(static_cast<int>(in), name.c_str(), {time, time});
}

bool IsTaken(Handle in, const std::string& name) {
  struct statx ignored;
  return FactsAt(static_cast<int>(in), name.c_str(), 0, ignored) == 0;
}

Handle MakeFile(Handle in, const std::string& name, Access access) {
  return OpenAt(static_cast<int>(in), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW,
                access == Access::ReadOnly ? 0444 : 0666);
}

long ReserveAndMap(Handle file, std::uint64_t bytes, std::span<std::uint8_t>& contents) {
  const int number = static_cast<int>(file);
  if (const long reserved = Reserve(number, bytes); reserved < 0) return reserved;
  const long address = Map(bytes, PROT_READ | PROT_WRITE, MAP_SHARED, number);
  if (address < 0) return address;
  contents = {reinterpret_cast<std::uint8_t*>(address), static_cast<std::size_t>(bytes)};
  return 0;
}

void Unmap(std::span<std::uint8_t> contents) {
  UnmapBytes(contents.data(), contents.size());
}

long FinishFile(Handle file, std::uint64_t fileTime, Access) {
  const timespec time = TimespecOfFileTime<timespec>(fileTime);
  SetTimesAt(static_cast<int>(file), nullptr, {time, time});
  return 0;
}

long Rename(Handle in, Handle, const std::string& from, const std::string& to, Existing existing) {
  const int directory = static_cast<int>(in);
  if (existing == Existing::IsReplaced) return RenameAt(directory, from.c_str(), to.c_str(), 0);
  const long renamed = RenameAt(directory, from.c_str(), to.c_str(), RENAME_NOREPLACE);
  if (renamed != -EINVAL && renamed != -ENOSYS) return renamed;
  const long linked = LinkAt(directory, from.c_str(), to.c_str());
  if (linked == 0) UnlinkAt(directory, from.c_str());
  return linked;
}

void Remove(Handle in, Handle, const std::string& name) {
  UnlinkAt(static_cast<int>(in), name.c_str());
}

std::uint64_t ProcessId() {
  return static_cast<std::uint64_t>(Call(SYS_getpid, 0));
}

}  // namespace kozor::sfx::host
