// HostFiles.cpp - see ../HostFiles.h.  The POSIX implementation.
#include "kozor/HostFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string_view>
#include <system_error>

#include "kozor/Failure.h"
#include "platform/base/Clock.h"

namespace kozor::program {

namespace {

constexpr int kOpenDirectory = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int kReadDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kReadFile = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
constexpr mode_t kAnyMode = 0777;  // reduced by the process's umask
constexpr std::size_t kBlockBytes = 1 << 16;

int File(HostHandle handle) {
  return static_cast<int>(handle);
}

void SetTime(HostHandle file, std::uint64_t lastWrite) {
  const timespec time = TimespecOfFileTime<timespec>(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  if (futimens(File(file), times.data()) != 0) FailBySystem();
}

}  // namespace

void Descriptor::Close() {
  if (IsOpen()) close(File(number));
  number = kNotOpen;
}

bool Descriptor::Finish() {
  return close(File(std::exchange(number, kNotOpen))) == 0;
}

std::string HostErrorText(int number) {
  switch (number) {
    case ENOSPC:
    case EDQUOT:
      return "the disk is full";
    case EFBIG:
      return "the file is too large for this file system";
    case EACCES:
    case EPERM:
      return "permission denied";
    case EROFS:
      return "the file system is read-only";
    case ENAMETOOLONG:
      return "the name is too long for this file system";
    case EILSEQ:
    case EINVAL:
      return "this file system can't store such a file";
    case EISDIR:
    case ENOTEMPTY:
    case EEXIST:
      return "a directory is in the way";
    case ENOTDIR:
      return "a file is in the way";
    default:
      return std::generic_category().message(number);
  }
}

const char* const kTemporaryVariable = "TMPDIR";

std::string LastSystemError() {
  return HostErrorText(errno);
}

void FailBySystem() {
  throw FileFailure(LastSystemError());
}

Descriptor OpenDirectory(const std::filesystem::path& path) {
  return Descriptor(open(path.c_str(), kOpenDirectory));
}

Descriptor OpenFolder(HostHandle in, const std::string& name) {
  return Descriptor(openat(File(in), name.c_str(), kOpenDirectory | O_NOFOLLOW));
}

Descriptor OpenOrMakeFolder(HostHandle in, const std::string& name, bool& isNew) {
  isNew = false;
  Descriptor opened = OpenFolder(in, name);
  if (opened.IsOpen() || errno != ENOENT) return opened;
  isNew = mkdirat(File(in), name.c_str(), kAnyMode) == 0;
  if (!isNew && errno != EEXIST) return opened;
  return OpenFolder(in, name);
}

std::filesystem::path PathIn(HostHandle directory, const std::string& name) {
  return "/proc/self/fd/" + std::to_string(directory) + "/" + name;
}

std::vector<std::string> NamesIn(HostHandle directory) {
  std::vector<std::string> names;
  const int own = openat(File(directory), ".", kReadDirectory);
  if (own < 0) return names;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(own), &closedir);
  if (!stream) {
    close(own);
    return names;
  }
  while (const dirent* const entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

// A folder is held by an advisory lock.  Before the new folder is locked, another run may take it
// for a leftover and remove it.
Descriptor MakeHeldFolder(HostHandle in, const std::string& name) {
  if (mkdirat(File(in), name.c_str(), 0700) != 0) {
    if (errno == EEXIST) return Descriptor();
    throw FileFailure("can't create a directory here: " + HostErrorText(errno));
  }
  Descriptor directory(openat(File(in), name.c_str(), kReadDirectory));
  if (!directory.IsOpen()) {
    if (errno == ENOENT) return directory;
    throw FileFailure("can't create a directory here: " + HostErrorText(errno));
  }
  const int file = File(directory.Number());
  if (flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return Descriptor();
  struct stat state {};
  const bool stands = fstat(file, &state) == 0 && state.st_nlink > 0;
  return stands ? std::move(directory) : Descriptor();
}

Descriptor HoldLeftover(HostHandle in, const std::string& name) {
  Descriptor folder(openat(File(in), name.c_str(), kReadDirectory));
  const int file = File(folder.Number());
  struct stat state {};
  const bool ours = folder.IsOpen() && fstat(file, &state) == 0 && state.st_uid == geteuid() &&
                    flock(file, LOCK_EX | LOCK_NB) == 0;
  return ours ? std::move(folder) : Descriptor();
}

void RemoveHeldFolder(HostHandle in, const std::string& name, Descriptor& folder) {
  RemoveEmptyFolder(in, name);
  folder.Close();
}

bool RemoveFile(HostHandle in, const std::string& name) {
  return unlinkat(File(in), name.c_str(), 0) == 0;
}

void RemoveEmptyFolder(HostHandle in, const std::string& name) {
  unlinkat(File(in), name.c_str(), AT_REMOVEDIR);
}

std::optional<Occupant> LookAt(HostHandle in, const std::string& name) {
  struct stat state {};
  if (fstatat(File(in), name.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return std::nullopt;
    FailBySystem();
  }
  return Occupant{.isDirectory = S_ISDIR(state.st_mode),
                  .isFile = S_ISREG(state.st_mode),
                  .isLink = S_ISLNK(state.st_mode),
                  .isReadOnly = S_ISREG(state.st_mode) && (state.st_mode & 0222) == 0,
                  .size = static_cast<std::uint64_t>(state.st_size),
                  .time = state.st_mtim.tv_sec,
                  .nanoseconds = static_cast<std::int32_t>(state.st_mtim.tv_nsec)};
}

std::string LinkTarget(HostHandle in, const std::string& name) {
  std::array<char, 4096> target{};
  const ssize_t bytes = readlinkat(File(in), name.c_str(), target.data(), target.size());
  return bytes < 0 ? "" : std::string(target.data(), static_cast<std::size_t>(bytes));
}

bool IsLink(HostHandle in, const std::string& name) {
  struct stat state {};
  return fstatat(File(in), name.c_str(), &state, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISLNK(state.st_mode);
}

Descriptor OpenFile(HostHandle in, const std::string& name) {
  return Descriptor(openat(File(in), name.c_str(), kReadFile));
}

std::size_t ReadBlock(HostHandle file, std::span<char> block) {
  std::size_t got = 0;
  while (got < block.size()) {
    const ssize_t bytes = read(File(file), block.data() + got, block.size() - got);
    if (bytes == 0) break;
    if (bytes < 0 && errno == EINTR) continue;
    if (bytes < 0) FailBySystem();
    got += static_cast<std::size_t>(bytes);
  }
  return got;
}

void CopyFileIn(HostHandle from, const std::string& name, HostHandle to,
                const std::string& newName) {
  const Descriptor source = OpenFile(from, name);
  struct stat state {};
  if (!source.IsOpen() || fstat(File(source.Number()), &state) != 0) FailBySystem();
  Descriptor target(
      openat(File(to), newName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!target.IsOpen()) FailBySystem();
  std::vector<char> block(kBlockBytes);
  while (const std::size_t got = ReadBlock(source.Number(), block)) {
    WriteAll(target.Number(), std::as_bytes(std::span(block).first(got)));
  }
  const int file = File(target.Number());
  const std::array<timespec, 2> times = {state.st_atim, state.st_mtim};
  if (fchmod(file, state.st_mode & 07777) != 0) FailBySystem();
  if (futimens(file, times.data()) != 0) FailBySystem();
  if (!target.Finish()) FailBySystem();
}

Move MoveTo(HostHandle from, const std::string& name, HostHandle to, const std::string& newName,
            bool replace) {
  const auto rename = [&](unsigned flags) {
    return renameat2(File(from), name.c_str(), File(to), newName.c_str(), flags) == 0;
  };
  if (!replace) {
    if (rename(RENAME_NOREPLACE)) return Move::Done;
    if (errno == EEXIST) return Move::Occupied;
    // The file system doesn't support this flag, so check first.
    const bool isUnknown = errno == EINVAL || errno == ENOSYS;
    if (isUnknown && LookAt(to, newName)) return Move::Occupied;
    if (!isUnknown && errno != EXDEV) FailBySystem();
  }
  if (rename(0)) return Move::Done;
  if (errno != EXDEV) FailBySystem();
  return Move::OtherFileSystem;
}

void MakeLink(HostHandle in, const std::string& name, const std::filesystem::path& target,
              std::uint64_t lastWrite) {
  if (symlinkat(target.c_str(), File(in), name.c_str()) != 0) FailBySystem();
  const timespec time = TimespecOfFileTime<timespec>(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  utimensat(File(in), name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
}

void FinishDirectory(HostHandle directory, unsigned int mode, std::uint64_t lastWrite) {
  const timespec time = TimespecOfFileTime<timespec>(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  if (utimensat(File(directory), ".", times.data(), 0) != 0) FailBySystem();
  if (mode != 0 && fchmodat(File(directory), ".", mode, 0) != 0) FailBySystem();
}

void FinishFile(Descriptor& file, unsigned int mode, std::uint64_t lastWrite) {
  if (mode != 0 && fchmod(File(file.Number()), mode) != 0) FailBySystem();
  SetTime(file.Number(), lastWrite);
  if (!file.Finish()) FailBySystem();
}

Descriptor CreateNewFile(HostHandle in, const std::string& name) {
  Descriptor file(openat(File(in), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file.IsOpen()) FailBySystem();
  return file;
}

unsigned int ModeOf(HostHandle file) {
  struct stat state {};
  if (fstat(File(file), &state) != 0) FailBySystem();
  return state.st_mode & 07777;
}

void WriteAll(HostHandle file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(File(file), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) FailBySystem();
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void Flush(HostHandle file) {
  if (fsync(File(file)) != 0) FailBySystem();
}

void Reserve(HostHandle file, std::uint64_t bytes) {
  int error = 0;
  do {
    error = bytes == 0 ? 0 : posix_fallocate(File(file), 0, static_cast<off_t>(bytes));
  } while (error == EINTR);
  if (error != 0) throw FileFailure(HostErrorText(error));
}

std::span<unsigned char> ReserveAndMap(HostHandle file, std::uint64_t bytes) {
  Reserve(file, bytes);
  void* const address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, File(file), 0);
  if (address == MAP_FAILED) FailBySystem();
  return {static_cast<unsigned char*>(address), static_cast<std::size_t>(bytes)};
}

void Unmap(std::span<unsigned char> contents) {
  if (!contents.empty()) munmap(contents.data(), contents.size());
}

}  // namespace kozor::program
