// WorkFolder.cpp - see WorkFolder.h.
#include "WorkFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

#include "Failure.h"
#include "Host.h"
#include "platform/base/Clock.h"

namespace kozor::program {

namespace {

constexpr std::string_view kPrefix = ".kozor-";
constexpr std::size_t kDigits = 16;
constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string UniqueName() {
  std::random_device random;
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "%.*s%08x%08x", static_cast<int>(kPrefix.size()),
                kPrefix.data(), random(), random());
  return name.data();
}

bool IsWorkName(std::string_view name) {
  return name.size() == kPrefix.size() + kDigits && name.starts_with(kPrefix) &&
         name.find_first_not_of("0123456789abcdef", kPrefix.size()) == std::string_view::npos;
}

// The names in an open directory; none when it can't be read.
std::vector<std::string> NamesIn(int directory) {
  std::vector<std::string> names;
  const int own = openat(directory, ".", kFolder);
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

// Best-effort removal of everything in an open directory.
void Empty(int directory) {
  for (const std::string& name : NamesIn(directory)) {
    if (unlinkat(directory, name.c_str(), 0) == 0) continue;
    const Descriptor below(openat(directory, name.c_str(), kFolder));
    if (!below.IsOpen()) continue;
    Empty(below.Number());
    unlinkat(directory, name.c_str(), AT_REMOVEDIR);
  }
}

void RemoveLeftovers(int parent) {
  for (const std::string& name : NamesIn(parent)) {
    if (!IsWorkName(name)) continue;
    const Descriptor folder(openat(parent, name.c_str(), kFolder));
    struct stat state {};
    const bool ours =
        folder.IsOpen() && fstat(folder.Number(), &state) == 0 && state.st_uid == geteuid();
    if (!ours || flock(folder.Number(), LOCK_EX | LOCK_NB) != 0) continue;
    Empty(folder.Number());
    unlinkat(parent, name.c_str(), AT_REMOVEDIR);
  }
}

// Reserves the blocks of an empty file.
void Reserve(const Descriptor& file, std::uint64_t bytes) {
  int error = 0;
  do {
    error = bytes == 0 ? 0 : posix_fallocate(file.Number(), 0, static_cast<off_t>(bytes));
  } while (error == EINTR);
  if (error != 0) throw FileFailure(SystemErrorText(error));
}

}  // namespace

timespec HostTime(std::uint64_t fileTime) {
  timespec time{};
  time.tv_sec = UnixOfFileTime(fileTime);
  time.tv_nsec = NanosecondsOfFileTime(fileTime);
  return time;
}

void WriteAll(int file, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileFailure(SystemErrorText(errno));
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

void Descriptor::Close() {
  if (number >= 0) close(number);
  number = -1;
}

bool Descriptor::Finish() {
  return close(std::exchange(number, -1)) == 0;
}

WorkFolder::WorkFolder(int parentDirectory)
    : parent(openat(parentDirectory, ".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  RemoveLeftovers(parent.Number());
  while (!TryToMake()) {
  }
}

// Between its making and its locking another run may take the folder for a leftover.
bool WorkFolder::TryToMake() {
  name = UniqueName();
  if (mkdirat(parent.Number(), name.c_str(), 0700) != 0) {
    if (errno == EEXIST) return false;
    throw FileFailure("no directory can be made here: " + SystemErrorText(errno));
  }
  directory = Descriptor(openat(parent.Number(), name.c_str(), kFolder));
  if (!directory.IsOpen()) {
    if (errno == ENOENT) return false;
    throw FileFailure("no directory can be made here: " + SystemErrorText(errno));
  }
  if (flock(directory.Number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  struct stat state {};
  return fstat(directory.Number(), &state) == 0 && state.st_nlink > 0;
}

WorkFolder::~WorkFolder() {
  try {
    Empty(directory.Number());
  } catch (const std::exception&) {  // no memory: the next run removes it
  }
  unlinkat(parent.Number(), name.c_str(), AT_REMOVEDIR);
}

std::string WorkFolder::LibraryPathOf(const std::string& file) const {
  return LibraryPath("/proc/self/fd/" + std::to_string(directory.Number()) + "/" + file);
}

void WorkFolder::RequireRoom(std::uint64_t bytes) const {
  constexpr const char* kName = "room";
  const Descriptor file(
      openat(directory.Number(), kName, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file.IsOpen()) throw FileFailure(SystemErrorText(errno));
  Remove(kName);
  Reserve(file, bytes);
}

void WorkFolder::Remove(const std::string& file) const {
  unlinkat(directory.Number(), file.c_str(), 0);
}

TemporaryFolder::TemporaryFolder() try : parent(std::filesystem::temp_directory_path()) {
  const Descriptor directory(open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!directory.IsOpen()) throw FileFailure(SystemErrorText(errno));
  folder.emplace(directory.Number());
} catch (const FileFailure& failure) {
  throw Failure("the directory for temporaries (TMPDIR): " + std::string(failure.what()));
}

NewFile::NewFile(const WorkFolder& folder, const std::string& name, std::uint64_t bytes)
    : file(openat(folder.Directory(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666)) {
  constexpr std::uint64_t kMostInBuffer = 256 << 10;
  if (!file.IsOpen()) throw FileFailure(SystemErrorText(errno));
  const auto length = static_cast<std::size_t>(bytes);
  if (bytes > kMostInBuffer) {
    Map(length);
  } else {
    buffer = std::make_unique_for_overwrite<unsigned char[]>(length);
    contents = {buffer.get(), length};
  }
}

void NewFile::Map(std::size_t bytes) {
  Reserve(file, bytes);
  void* const address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.Number(), 0);
  if (address == MAP_FAILED) throw FileFailure(SystemErrorText(errno));
  contents = {static_cast<unsigned char*>(address), bytes};
}

void NewFile::Unmap() {
  if (!buffer && !contents.empty()) munmap(contents.data(), contents.size());
  contents = {};
}

void NewFile::Finish(unsigned int mode, std::uint64_t lastWrite) {
  if (buffer) WriteAll(file.Number(), std::as_bytes(contents));
  Unmap();
  if (mode != 0 && fchmod(file.Number(), mode) != 0) throw FileFailure(SystemErrorText(errno));
  const timespec time = HostTime(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  if (futimens(file.Number(), times.data()) != 0 || !file.Finish()) {
    throw FileFailure(SystemErrorText(errno));
  }
}

std::span<unsigned char> ScratchMemory::Get(std::uint64_t bytes) {
  constexpr std::uint64_t kMostInMemory = 4 << 20;
  file.reset();
  if (bytes <= kMostInMemory) {
    memory.resize(std::max<std::size_t>(memory.size(), bytes));
    return std::span(memory).first(static_cast<std::size_t>(bytes));
  }
  if (!folder) folder.emplace();
  file = std::make_unique<NewFile>(folder->Folder(), "scratch", bytes);
  folder->Folder().Remove("scratch");
  return file->Contents();
}

}  // namespace kozor::program
