// Host.cpp - see Host.h.  This is the POSIX side.
#include "Host.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "Failure.h"
#include "platform/classlib/ClassLib.h"
#include "platform/win32/PosixAdmin.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr unsigned int kUtf8 = 65001;
constexpr const char* kOwnDrive = "V:";
constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t stopSignal = 0;

extern "C" void NoteSignal(int signal) {
  stopSignal = signal;
}

// `flags` is SA_RESTART, or 0 to let signals end system calls.
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

// `path` is complete and goes through no link.
fs::path MountPointOf(fs::path path) {
  while (!fs::exists(path)) path = path.parent_path();
  while (path.has_relative_path() && SameDevice(path, path.parent_path())) {
    path = path.parent_path();
  }
  return path;
}

}  // namespace

void SetUpHost() {
  KzSetActiveCodePage(kUtf8);
  KzSetCaseSensitive(1);
  CatchSignals(SA_RESTART);
}

int StopSignal() {
  return stopSignal;
}

void StopIfAsked() {
  if (StopSignal() != 0) throw Interrupted();
}

std::string LibraryPath(const fs::path& path) {
  std::string libraryPath;
  if (!KzHostToLibraryPath(AbsolutePath(path).c_str(), libraryPath)) {
    throw Failure(path.string() + ": the library can't express this path (names may not hold " +
                  "control characters or any of \\ : * ? \" < > |)");
  }
  return libraryPath;
}

fs::path HostPath(const std::string& libraryPath) {
  std::string path;
  if (!KzLibraryToHostPath(libraryPath.c_str(), path)) {
    throw Failure(libraryPath + ": not a path of this machine");
  }
  return path;
}

fs::path AbsolutePath(const fs::path& path) {
  fs::path result;
  for (const fs::path& part : fs::absolute(path)) {
    if (part == "..") {
      std::error_code unresolved;
      const fs::path real = fs::canonical(result, unresolved);
      result = (unresolved ? result : real).parent_path();
    } else if (!part.empty() && part != ".") {
      result /= part;
    }
  }
  return result;
}

bool Exists(const fs::path& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

FileState Inspect(const fs::path& path) {
  FileState state;
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    const bool link = lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
    state.problem = link ? "a link that leads nowhere" : "no such file";
    return state;
  }
  state.isDirectory = S_ISDIR(info.st_mode);
  state.size = static_cast<std::uintmax_t>(info.st_size);
  if (!state.isDirectory && !S_ISREG(info.st_mode)) {
    state.problem = "neither a file nor a directory";
  } else if (access(path.c_str(), state.isDirectory ? R_OK | X_OK : R_OK) != 0) {
    state.problem = "no permission to read it";
  }
  return state;
}

std::string PathOnOwnDrive(const fs::path& path) {
  DefineDosDeviceA(DDD_REMOVE_DEFINITION, kOwnDrive, nullptr);
  const fs::path real = fs::weakly_canonical(path);
  const fs::path mountPoint = MountPointOf(real);
  if (mountPoint.has_relative_path()) DefineDosDeviceA(0, kOwnDrive, mountPoint.c_str());
  return LibraryPath(real);
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
