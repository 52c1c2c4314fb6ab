// Host.cpp - see ../Host.h.  The Windows implementation.  Shell commands are run by sh: under Wine
// by the host's /bin/sh, on Windows by one on the PATH.
#include "tests/support/Host.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/Ability.h"

namespace kozor::test {

namespace fs = std::filesystem;

namespace {

bool UnderWine() {
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

std::wstring SystemPath(const fs::path& path) {
  return L"\\\\?\\" + fs::path(path).make_preferred().native();
}

class File {
 public:
  File(const fs::path& path, DWORD access)
      : handle(CreateFileW(SystemPath(path).c_str(), access,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {
    if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("no " + path.string());
  }
  ~File() { CloseHandle(handle); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  HANDLE Get() const { return handle; }

 private:
  HANDLE handle;
};

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;

// Starts a process.  Wine gives no usable handle for a program of the host, so nobody waits here.
bool Start(std::wstring commandLine) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &start, &process)) {
    return false;
  }
  CloseHandle(process.hProcess);
  CloseHandle(process.hThread);
  return true;
}

std::string ReadText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

bool Can(Ability ability) {
  const bool differsUnderWine = ability == Ability::KeepingAttributes ||
                                ability == Ability::MappingDrives ||
                                ability == Ability::ChangingWithinATick;
  return differsUnderWine && !UnderWine();
}

const char* const kTextLineEnd = "\r\n";
const char* const kProgramEnd = ".exe";

fs::path MakeTestDirectory() {
  const char* const given = std::getenv("KOZOR_TEST_DIRECTORY");
  const fs::path parent = given != nullptr ? fs::path(given) : fs::temp_directory_path();
  for (unsigned number = GetCurrentProcessId() * 64;; ++number) {
    const fs::path path = parent / ("kozor-test-" + std::to_string(number));
    if (fs::create_directory(path)) return path;
  }
}

void UseMemory() {}

void MakeRemovable(const fs::path& directory) {
  std::error_code ignored;
  for (fs::recursive_directory_iterator it(directory, ignored), end; it != end;
       it.increment(ignored)) {
    SetFileAttributesW(SystemPath(it->path()).c_str(), FILE_ATTRIBUTE_NORMAL);
  }
}

std::string LibraryPathOf(const fs::path& path) {
  return fs::path(path).make_preferred().string();
}

// Under Wine the host's root is drive Z:.
std::string ShellPathOf(const fs::path& path) {
  std::string text = path.generic_string();
  if (UnderWine() && text.size() > 2 && text[1] == ':') text.erase(0, 2);
  return text;
}

std::string ShellProgram(const fs::path& program) {
  return (UnderWine() ? "wine " : "") + ShellPathOf(program);
}

void SetReadOnly(const fs::path& path, bool readOnly) {
  SetFileAttributesW(SystemPath(path).c_str(),
                     readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
}

bool MapShare(const char* /*share*/, const fs::path& /*directory*/) {
  return false;
}

void SetEnvironment(const char* name, const char* value) {
  _putenv_s(name, value != nullptr ? value : "");
}

void SetTimeZone(const char* /*zone*/) {}

std::int64_t TimeOf(const fs::path& path) {
  const File file(path, FILE_READ_ATTRIBUTES);
  FILETIME time;
  GetFileTime(file.Get(), nullptr, nullptr, &time);
  const ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
  return static_cast<std::int64_t>(ticks.QuadPart) / kTicksPerSecond - kSecondsTo1970;
}

void SetTimeOf(const fs::path& path, std::int64_t seconds) {
  const File file(path, FILE_WRITE_ATTRIBUTES);
  ULARGE_INTEGER ticks;
  ticks.QuadPart = static_cast<std::uint64_t>((seconds + kSecondsTo1970) * kTicksPerSecond);
  const FILETIME time{ticks.LowPart, ticks.HighPart};
  if (!SetFileTime(file.Get(), nullptr, &time, &time)) {
    throw std::runtime_error("can't set the time of " + path.string());
  }
}

// The shell writes its output and then the status into files, because under Wine neither the pipes
// nor the status of the host's programs get here.  What is read is a copy: Wine may hold the file
// that a program of ours wrote for a moment longer than that runs, and then it can't be opened.
CommandResult RunCommand(const std::string& command) {
  const fs::path folder = MakeTestDirectory();
  const std::string there = ShellPathOf(folder);
  {
    std::ofstream script(folder / "command.sh", std::ios::binary);
    script << "cd '" << there << "' && (cd / && { " << command
           << "\n}) > written 2>&1 < /dev/null\n"
           << "echo $? > new && cp written output && mv new status\n";
  }
  const std::wstring shell = UnderWine() ? L"Z:\\bin\\sh " : L"sh ";
  CommandResult result{-1, {}};
  if (Start(shell + fs::path(there + "/command.sh").native())) {
    constexpr DWORD kWaitMilliseconds = 5;
    constexpr int kMostWaits = 24'000;
    for (int waits = 0; !fs::exists(folder / "status") && waits < kMostWaits; ++waits) {
      Sleep(kWaitMilliseconds);
    }
    const std::string status = ReadText(folder / "status");
    if (!status.empty()) result = {std::atoi(status.c_str()), ReadText(folder / "output")};
  }
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  return result;
}

bool HaveProgram(std::string_view name) {
  return RunCommand("command -v " + std::string(name)).status == 0;
}

}  // namespace kozor::test
