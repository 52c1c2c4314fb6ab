// Host.cpp - see ../Host.h.  The POSIX implementation.
#include "tests/support/Host.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

#include "platform/win32/PosixAdmin.h"
#include "tests/support/Ability.h"

namespace kozor::test {

namespace fs = std::filesystem;

bool Can(Ability /*ability*/) {
  return true;
}

const char* const kTextLineEnd = "\n";
const char* const kProgramEnd = ".run";

fs::path MakeTestDirectory() {
  std::string pattern = (fs::temp_directory_path() / "kozor-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("can't make " + pattern);
  return pattern;
}

void UseMemory() {
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
}

void MakeRemovable(const fs::path& directory) {
  std::error_code ignored;
  for (fs::recursive_directory_iterator it(directory, ignored), end; it != end;
       it.increment(ignored)) {
    if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
      fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }
}

std::string LibraryPathOf(const fs::path& path) {
  std::string library = "C:" + path.string();
  std::replace(library.begin(), library.end(), '/', '\\');
  return library;
}

std::string ShellPathOf(const fs::path& path) {
  return path.string();
}

std::string ShellProgram(const fs::path& program) {
  return program.string();
}

void SetReadOnly(const fs::path& path, bool readOnly) {
  if (chmod(path.c_str(), readOnly ? 0444 : 0644) != 0) throw std::runtime_error("chmod");
}

bool MapShare(const char* share, const fs::path& directory) {
  return KzMapShare(share, directory.empty() ? nullptr : directory.c_str()) != 0;
}

void SetEnvironment(const char* name, const char* value) {
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

void SetTimeZone(const char* zone) {
  SetEnvironment("TZ", zone);
  tzset();
}

std::int64_t TimeOf(const fs::path& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) throw std::runtime_error("no " + path.string());
  return info.st_mtim.tv_sec;
}

void SetTimeOf(const fs::path& path, std::int64_t seconds) {
  const std::array<timespec, 2> times{timespec{seconds, 0}, timespec{seconds, 0}};
  if (utimensat(AT_FDCWD, path.c_str(), times.data(), 0) != 0) {
    throw std::runtime_error("can't set the time of " + path.string());
  }
}

CommandResult RunCommand(const std::string& command) {
  CommandResult result{-1, {}};
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return result;
  std::array<char, 4096> buffer{};
  for (std::size_t got; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
    result.output.append(buffer.data(), got);
  }
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

bool HaveProgram(std::string_view name) {
  return RunCommand("command -v " + std::string(name)).status == 0;
}

}  // namespace kozor::test
