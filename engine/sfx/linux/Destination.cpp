// Destination.cpp - see Destination.h.
#include "engine/sfx/Destination.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include "engine/sfx/Console.h"
#include "engine/sfx/linux/SystemCalls.h"
#include "platform/base/Clock.h"

namespace kozor::sfx {
namespace {

constexpr int kDirectory = O_PATH | O_DIRECTORY;

timespec HostTime(std::uint64_t fileTime) {
  timespec time{};
  time.tv_sec = UnixOfFileTime(fileTime);
  time.tv_nsec = NanosecondsOfFileTime(fileTime);
  return time;
}

// Opens a subdirectory, making it first if it is missing.
int OpenBelow(int directory, const char* name) {
  const int opened = host::OpenAt(directory, name, kDirectory | O_NOFOLLOW);
  if (opened != -ENOENT) return opened;
  const long made = host::MakeDirectoryAt(directory, name);
  if (made < 0 && made != -EEXIST) return static_cast<int>(made);
  return host::OpenAt(directory, name, kDirectory | O_NOFOLLOW);
}

}  // namespace

Destination::~Destination() {
  CloseDirectory();
  if (root >= 0) host::Close(root);
}

void Destination::CloseDirectory() {
  if (directory >= 0) host::Close(directory);
  directory = -1;
}

long Destination::Open(std::string_view path) {
  const std::string whole(path);
  root = host::OpenAt(AT_FDCWD, whole.c_str(), kDirectory);
  if (root != -ENOENT) return root < 0 ? root : 0;
  for (std::size_t end = whole.find('/', 1);; end = whole.find('/', end + 1)) {
    const long made = host::MakeDirectoryAt(AT_FDCWD, whole.substr(0, end).c_str());
    if (made < 0 && made != -EEXIST) return made;
    if (end == std::string::npos) break;
  }
  root = host::OpenAt(AT_FDCWD, whole.c_str(), kDirectory);
  return root < 0 ? root : 0;
}

long Destination::Find(std::string_view name, Place& place) {
  const std::size_t separator = name.rfind('/');
  const std::size_t parentBytes = separator == std::string_view::npos ? 0 : separator + 1;
  std::string_view parent = name.substr(0, parentBytes);
  place.name = name.substr(parentBytes);
  if (parent.empty()) {
    place.directory = root;
    return 0;
  }
  if (directory < 0 || directoryName != parent) {
    CloseDirectory();
    directoryName = parent;
    int above = root;
    while (!parent.empty()) {
      const std::string component(parent.substr(0, parent.find('/')));
      parent.remove_prefix(component.size() + 1);
      const int opened = OpenBelow(above, component.c_str());
      if (above != root) host::Close(above);
      if (opened < 0) return opened;
      above = opened;
    }
    directory = above;
  }
  place.directory = directory;
  return 0;
}

long MakeDirectory(const Place& place) {
  const int made = OpenBelow(place.directory, place.name.c_str());
  if (made < 0) return made;
  host::Close(made);
  return 0;
}

long SetTime(const Place& place, std::uint64_t fileTime) {
  const timespec time = HostTime(fileTime);
  return host::SetTimesAt(place.directory, place.name.c_str(), {time, time});
}

bool IsTaken(const Place& place) {
  struct statx ignored;
  return host::FactsAt(place.directory, place.name.c_str(), 0, ignored) == 0;
}

NewFile::~NewFile() {
  if (!contents.empty()) host::Unmap(contents.data(), contents.size());
  if (file >= 0) host::Close(file);
  if (!temporaryName.empty()) host::UnlinkAt(place.directory, temporaryName.c_str());
}

long NewFile::Create(const Place& wanted, std::uint64_t bytes, Access access) {
  place = wanted;
  const unsigned mode = access == Access::ReadOnly ? 0444 : 0666;
  for (std::uint64_t number = 0; file < 0; ++number) {
    temporaryName = Join({".kozor-", Decimal(static_cast<std::uint64_t>(host::ProcessId())), "-",
                          Decimal(number), ".tmp"});
    file = host::OpenAt(place.directory, temporaryName.c_str(),
                        O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    if (file < 0 && file != -EEXIST) {
      temporaryName.clear();
      return file;
    }
  }
  if (bytes == 0) return 0;
  if (const long reserved = Reserve(bytes); reserved < 0) return reserved;
  const long address = host::Map(bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file);
  if (address < 0) return address;
  contents = {reinterpret_cast<std::uint8_t*>(address), static_cast<std::size_t>(bytes)};
  return 0;
}

// With a full disk, a store to a hole in a mapped file would be a fatal signal.
long NewFile::Reserve(std::uint64_t bytes) const {
  long result;
  do {
    result = host::Allocate(file, bytes);
  } while (result == -EINTR);
  if (result != -EOPNOTSUPP && result != -ENOSYS) return result;
  static std::uint8_t zeros[4096];  // not constant: a constant would make the program larger
  while (bytes != 0) {
    const long written = host::Write(file, zeros, bytes < sizeof zeros ? bytes : sizeof zeros);
    if (written < 0 && written != -EINTR) return written;
    if (written > 0) bytes -= static_cast<std::uint64_t>(written);
  }
  return 0;
}

long NewFile::Publish(std::uint64_t fileTime, Existing existing) {
  // Unmap first: stores through the mapping would change the time again.
  if (!contents.empty()) host::Unmap(contents.data(), contents.size());
  contents = {};
  const timespec time = HostTime(fileTime);
  host::SetTimesAt(file, nullptr, {time, time});
  const long result = TakeName(existing);
  if (result == 0) temporaryName.clear();
  return result;
}

long NewFile::TakeName(Existing existing) {
  const char* const from = temporaryName.c_str();
  const char* const to = place.name.c_str();
  if (existing == Existing::IsReplaced) return host::RenameAt(place.directory, from, to, 0);
  const long renamed = host::RenameAt(place.directory, from, to, RENAME_NOREPLACE);
  if (renamed != -EINVAL && renamed != -ENOSYS) return renamed;
  const long linked = host::LinkAt(place.directory, from, to);
  if (linked == 0) host::UnlinkAt(place.directory, from);
  return linked;
}

}  // namespace kozor::sfx
