// Host.cpp - see ../Host.h.  The POSIX implementation.
#include "kozor/Host.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <new>

#include "kozor/Failure.h"
#include "kozor/HostFiles.h"
#include "platform/classlib/ClassLib.h"
#include "platform/text/CodePage.h"
#include "platform/win32/PosixAdmin.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOwnDrive = "V:";
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t stopSignal = 0;

extern "C" void NoteSignal(int signal) {
  stopSignal = signal;
}

// `flags` is SA_RESTART, or 0 to let signals interrupt system calls.
void CatchSignals(int flags) {
  struct sigaction action {};
  action.sa_handler = NoteSignal;
  action.sa_flags = flags;
  sigemptyset(&action.sa_mask);
  for (const int signal : kStopSignals) {
    struct sigaction old {};
    sigaction(signal, nullptr, &old);
    if (old.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

bool SameDevice(const fs::path& a, const fs::path& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev;
}

// Where the calls that take an open directory find a file.
struct Place {
  int folder;
  const char* name;
};
Place PlaceOf(const fs::path& path, HostHandle folder) {
  const std::string& whole = path.native();
  if (folder == kNotOpen) return {AT_FDCWD, whole.c_str()};
  return {static_cast<int>(folder), whole.c_str() + whole.rfind('/') + 1};
}

// Why the entries of a directory can't be read; empty if they can.  Asks for few of them: the
// search reads them all.
std::string ReadingProblem(const Place& place) {
  alignas(dirent64) std::array<char, 1024> entries;
  const int directory = openat(place.folder, place.name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool canRead = directory >= 0 && getdents64(directory, entries.data(), entries.size()) >= 0;
  const int error = errno;
  if (directory >= 0) close(directory);
  return canRead ? "" : "can't read the directory: " + HostErrorText(error);
}

// Whether a file has contents beyond its size, as those of /proc, which all have the size 0.  The
// library stores as many bytes as the size says.
bool HasContentsBeyondSize(const fs::path& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (file < 0) return false;
  char byte = 0;
  struct stat info {};
  const bool hasContents = read(file, &byte, 1) == 1 && fstat(file, &info) == 0;
  close(file);
  return hasContents && info.st_size == 0;  // else it has grown since
}

FileVersion VersionIn(const struct stat& info) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return {static_cast<std::uint64_t>(info.st_size),
          info.st_mtim.tv_sec * kNanoseconds + info.st_mtim.tv_nsec};
}

// `path` is absolute and contains no link.
fs::path MountPointOf(fs::path path) {
  while (!fs::exists(path)) path = path.parent_path();
  while (path.has_relative_path() && SameDevice(path, path.parent_path())) {
    path = path.parent_path();
  }
  return path;
}

}  // namespace

void SetUpHost() {
  KzSetActiveCodePage(text::kUtf8);
  KzSetCaseSensitive(1);
  CatchSignals(SA_RESTART);
  // A file that exceeds the size limit makes the write fail instead of ending the process.
  std::signal(SIGXFSZ, SIG_IGN);
  // Without it the C library looks at this file again for each time that it converts.
  setenv("TZ", ":/etc/localtime", 0);
}

void FlushFilesAtClose() {
  KzSetFlushAtClose(1);
}

void FollowLinks(bool on) {
  KzSetSearchFollowsLinks(on ? 1 : 0);
}

bool ChooseNamePage(unsigned int page) {
  return KzSetNameCodePage(page) != 0;
}

void SetEnvironment(const char* name, const std::string& value) {
  if (setenv(name, value.c_str(), 1) != 0) throw std::bad_alloc();
}

std::vector<std::string> CommandWords(int count, char** words) {
  return {words + 1, words + count};
}

bool CanBeMade(const std::string& /*name*/) {
  return true;
}

std::string Shown(const fs::path& path) {
  return path.string();
}

int StopSignal() {
  return stopSignal;
}

std::string LibraryPath(const fs::path& path) {
  std::string libraryPath;
  if (!KzHostToLibraryPath(AbsolutePath(path).c_str(), libraryPath)) {
    throw Failure(path.string() + ": unsupported path (names can't contain control " +
                  "characters or any of \\ : * ? \" < > |)");
  }
  return libraryPath;
}

bool CanBeExpressed(const fs::path& path) {
  std::string ignored;
  return KzHostToLibraryPath(path.c_str(), ignored) != 0;
}

fs::path HostPath(const std::string& libraryPath) {
  std::string path;
  if (!KzLibraryToHostPath(libraryPath.c_str(), path)) {
    throw Failure(libraryPath + ": not a path on this system");
  }
  return path;
}

fs::path AbsolutePath(const fs::path& path) {
  fs::path result;
  for (const fs::path& part : fs::absolute(path)) {
    if (part == "..") {
      result = Canonical(result).value_or(result).parent_path();
    } else if (!part.empty() && part != ".") {
      result /= part;
    }
  }
  return result;
}

fs::path AbsolutePathIn(const fs::path& directory, const std::string& word) {
  return AbsolutePath(directory / word);
}

std::optional<fs::path> Canonical(const fs::path& path) {
  std::error_code error;
  fs::path real = fs::canonical(path, error);
  return error ? std::nullopt : std::optional(std::move(real));
}

fs::path CallPath(const fs::path& path) {
  return path;
}

bool IsDirectory(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

void MakeDirectories(const fs::path& path) {
  std::error_code ignored;
  fs::create_directories(path, ignored);
}

std::uint64_t FreeBytesAt(const fs::path& path) {
  std::error_code error;
  const fs::space_info space = fs::space(path, error);
  return error ? 0 : space.available;
}

bool Exists(const fs::path& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

std::optional<FileVersion> VersionOf(const fs::path& path, HostHandle folder) {
  const Place place = PlaceOf(path, folder);
  struct stat info {};
  if (fstatat(place.folder, place.name, &info, 0) != 0) return std::nullopt;
  return VersionIn(info);
}

FileState Inspect(const fs::path& path, HostHandle folder) {
  const Place place = PlaceOf(path, folder);
  FileState state;
  struct stat info {};
  const bool isThere = fstatat(place.folder, place.name, &info, AT_SYMLINK_NOFOLLOW) == 0;
  state.isLink = isThere && S_ISLNK(info.st_mode);
  if (!isThere || (state.isLink && fstatat(place.folder, place.name, &info, 0) != 0)) {
    state.leadsNowhere = isThere && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP);
    state.isRefused = !state.leadsNowhere && errno != ENOENT;
    state.problem = state.leadsNowhere ? "a broken link"
                    : state.isRefused  ? HostErrorText(errno)
                                       : "no such file";
    return state;
  }
  state.isDirectory = S_ISDIR(info.st_mode);
  state.time = info.st_mtim.tv_sec;
  state.mode = info.st_mode & 0777;
  state.version = VersionIn(info);
  state.identity = {info.st_dev, info.st_ino};
  if (!state.isDirectory && !S_ISREG(info.st_mode)) {
    state.problem = "not a regular file or directory";
    return state;
  }
  if (faccessat(place.folder, place.name, state.isDirectory ? R_OK | X_OK : R_OK, 0) != 0) {
    state.problem = "permission denied";
  } else if (state.isDirectory) {
    state.problem = ReadingProblem(place);
  } else if (info.st_size == 0 && HasContentsBeyondSize(path)) {
    state.problem = "its size is 0, but it has contents";
  }
  state.isRefused = !state.problem.empty();
  return state;
}

bool IsLink(const fs::path& path) {
  std::error_code ignored;
  return fs::is_symlink(path, ignored);
}

LinkState InspectLink(const fs::path& path) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0) FailBySystem();
  std::error_code error;
  const fs::path target = fs::read_symlink(path, error);
  if (error) throw FileFailure(HostErrorText(error.value()));
  return {target.string(), info.st_mtim.tv_sec};
}

// std::localtime looks each time whether the system's time zone has changed.
bool LocalTime(std::int64_t secondsSince1970, std::tm& local) {
  const std::time_t time = secondsSince1970;
  return localtime_r(&time, &local) != nullptr;
}

void UseOwnDrive(const fs::path& path, const std::function<void(const std::string&)>& use) {
  struct OwnDrive {
    explicit OwnDrive(const fs::path& mountPoint) {
      if (mountPoint.has_relative_path()) DefineDosDeviceA(0, kOwnDrive, mountPoint.c_str());
    }
    ~OwnDrive() { DefineDosDeviceA(DDD_REMOVE_DEFINITION, kOwnDrive, nullptr); }
    OwnDrive(const OwnDrive&) = delete;
    OwnDrive& operator=(const OwnDrive&) = delete;
  };
  const fs::path real = WeaklyCanonical(path);
  const OwnDrive drive(MountPointOf(real));
  use(LibraryPath(real));
}

bool InputIsTerminal() {
  return isatty(STDIN_FILENO) != 0;
}

bool ErrorsGoToTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

int TerminalWidth() {
  struct winsize size {};
  constexpr int kUsualWidth = 80;
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col
                                                                         : kUsualWidth;
}

InterruptibleInput::InterruptibleInput() {
  CatchSignals(0);
}

InterruptibleInput::~InterruptibleInput() {
  CatchSignals(SA_RESTART);
}

}  // namespace kozor::program
