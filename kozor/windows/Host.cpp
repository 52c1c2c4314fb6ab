// Host.cpp - see ../Host.h.  The Windows implementation.
#include "kozor/Host.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <system_error>

#include "kozor/Failure.h"
#include "kozor/HostFiles.h"
#include "kozor/windows/Wide.h"
#include "platform/base/ByteOrder.h"
#include "platform/text/CodePage.h"
#include "platform/text/Path.h"
#include "platform/text/WindowsName.h"
#include "platform/win32/CodePages.h"
#include "platform/win32/windows/Paths.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::atomic<int> stopSignal{0};

// The root of an absolute path: "C:\", "\\server\share".
std::wstring_view RootOf(const std::wstring& path) {
  const std::wstring_view root = text::BasicPath<wchar_t>(path).Root();
  const bool isShare = root.starts_with(L"\\\\") && !root.starts_with(L"\\\\?");
  return std::wstring_view(path).substr(0, root.size() + (isShare ? 0 : 1));
}

BOOL WINAPI NoteEvent(DWORD event) {
  const bool ask = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  stopSignal = ask ? SIGINT : SIGTERM;
  // When the console closes, the process ends as soon as this returns, but the run needs time to
  // end properly.  Its end also ends this thread.
  if (!ask) Sleep(INFINITE);
  return TRUE;
}

// Text goes to consoles and pipes in UTF-8.  The console's code pages are restored at the end.
void SetUpConsole() {
  static const UINT kOutputPage = GetConsoleOutputCP();
  static const UINT kInputPage = GetConsoleCP();
  std::atexit([] {
    SetConsoleOutputCP(kOutputPage);
    SetConsoleCP(kInputPage);
  });
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
  const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  if (GetConsoleMode(errors, &mode)) {
    SetConsoleMode(errors, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
  for (FILE* const file : {stdin, stdout}) _setmode(_fileno(file), _O_BINARY);
}

std::string ToUtf8(std::wstring_view wide, DWORD flags) {
  if (wide.empty()) return "";
  const auto units = static_cast<int>(wide.size());
  std::string utf8(wide.size() * 3, '\0');
  utf8.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_UTF8, flags, wide.data(), units, utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

FileVersion VersionIn(const BY_HANDLE_FILE_INFORMATION& facts) {
  return {JoinHalves(facts.nFileSizeHigh, facts.nFileSizeLow),
          static_cast<std::int64_t>(Ticks(facts.ftLastWriteTime))};
}

// Null if it can't be opened.
using OwnedHandle = std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)>;
OwnedHandle OpenFor(const fs::path& path, DWORD access, DWORD flags = FILE_FLAG_BACKUP_SEMANTICS) {
  const HANDLE handle = CreateFileW(SystemPath(path).c_str(), access, kShareAll, nullptr,
                                    OPEN_EXISTING, flags, nullptr);
  return {handle == INVALID_HANDLE_VALUE ? nullptr : handle, &CloseHandle};
}

// Why a file or the entries of a directory can't be read; empty if they can.
std::string ReadingProblem(const fs::path& path, bool isDirectory) {
  if (!isDirectory) {
    if (OpenFor(path, GENERIC_READ)) return "";
    const DWORD error = GetLastError();
    return error == ERROR_ACCESS_DENIED ? "permission denied"
                                        : HostErrorText(static_cast<int>(error));
  }
  WIN32_FIND_DATAW found;
  const HANDLE find = FindFirstFileW(SystemPath(path / L"*").c_str(), &found);
  if (find == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_NOT_FOUND) {
    return "can't read the directory: " + HostErrorText(static_cast<int>(GetLastError()));
  }
  if (find != INVALID_HANDLE_VALUE) FindClose(find);
  return "";
}

bool IsConsole(DWORD standardHandle) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(standardHandle), &mode) != 0;
}

}  // namespace

std::wstring SystemPath(const fs::path& path) {
  std::wstring result;
  windows::ToSystemPath(std::wstring_view(path.native()), result);
  return result;
}

// std::filesystem doesn't know shares with every compiler, and shortens names that end in dots.
fs::path AbsolutePath(const fs::path& path) {
  std::wstring plain = windows::WithoutPrefix(SystemPath(path));
  const std::size_t rootBytes = RootOf(plain).size();
  while (plain.size() > rootBytes && plain.ends_with(L'\\')) plain.pop_back();
  return plain;
}

fs::path AbsolutePathIn(const fs::path& directory, const std::string& word) {
  fs::path path = FromUtf8(word);
  path.make_preferred();
  const std::wstring& native = path.native();
  if (native.starts_with(L"\\\\")) return AbsolutePath(path);
  if (native.starts_with(L"\\")) {
    return AbsolutePath(fs::path(std::wstring(RootOf(AbsolutePath(directory).native())) + native));
  }
  return AbsolutePath(directory / path);
}

std::optional<fs::path> Canonical(const fs::path& path) {
  const OwnedHandle opened = OpenFor(path, FILE_READ_ATTRIBUTES);
  if (!opened) return std::nullopt;
  std::wstring real(GetFinalPathNameByHandleW(opened.get(), nullptr, 0, 0), L'\0');
  const auto room = static_cast<DWORD>(real.size());
  real.resize(GetFinalPathNameByHandleW(opened.get(), real.data(), room, 0));
  // Some disks have no such name for their files.
  return real.empty() ? AbsolutePath(path) : AbsolutePath(fs::path(real));
}

fs::path CallPath(const fs::path& path) {
  return SystemPath(path);
}

void SetUpHost() {
  KzSetActiveCodePage(text::kUtf8);
  SetUpConsole();
  SetConsoleCtrlHandler(NoteEvent, TRUE);
  SetErrorMode(SEM_FAILCRITICALERRORS);  // an empty drive is an error, without a dialog
}

std::vector<std::string> CommandWords(int /*count*/, char** /*words*/) {
  std::vector<std::string> result;
  int count = 0;
  LPWSTR* const words = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 1; words != nullptr && i < count; ++i) result.push_back(ToUtf8(words[i], 0));
  LocalFree(words);
  return result;
}

bool CanBeMade(const std::string& name) {
  return !text::IsNameForbiddenByWindows(std::string_view(name));
}

std::string Shown(const fs::path& path) {
  return ToUtf8(path.native(), 0);
}

// Links are followed by searches here.
void FollowLinks(bool /*on*/) {}

bool ChooseNamePage(unsigned int page) {
  return KzSetNameCodePage(page) != 0;
}

void SetEnvironment(const char* name, const std::string& value) {
  _putenv_s(name, value.c_str());
}

// Nothing to do: on Windows each flush takes place when it is requested.
void FlushFilesAtClose() {}

int StopSignal() {
  return stopSignal;
}

bool CanBeExpressed(const fs::path& path) {
  const std::size_t name = ToUtf8(path.filename().native(), WC_ERR_INVALID_CHARS).size();
  const bool isText = !ToUtf8(path.native(), WC_ERR_INVALID_CHARS).empty();
  const std::wstring_view names =
      std::wstring_view(path.native()).substr(RootOf(path.native()).size());
  const bool isForbidden = std::any_of(names.begin(), names.end(), [](wchar_t c) {
    return c < L' ' || std::wstring_view(L":*?\"<>|").find(c) != std::wstring_view::npos;
  });
  return isText && !isForbidden && name < MAX_PATH;
}

std::string LibraryPath(const fs::path& path) {
  const fs::path complete = AbsolutePath(path);
  if (!CanBeExpressed(complete)) {
    throw Failure(Shown(path) + ": unsupported path");
  }
  return Shown(complete);
}

fs::path HostPath(const std::string& libraryPath) {
  return FromUtf8(libraryPath);
}

bool Exists(const fs::path& path) {
  return GetFileAttributesW(SystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsDirectory(const fs::path& path) {
  const DWORD attributes = GetFileAttributesW(SystemPath(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void MakeDirectories(const fs::path& path) {
  if (IsDirectory(path) || !path.has_relative_path()) return;
  MakeDirectories(path.parent_path());
  std::wstring name;
  if (windows::ToSystemPath(std::wstring_view(path.native()), name, windows::Use::Make)) {
    CreateDirectoryW(name.c_str(), nullptr);
  }
}

std::uint64_t FreeBytesAt(const fs::path& path) {
  ULARGE_INTEGER free;
  return GetDiskFreeSpaceExW(SystemPath(path).c_str(), &free, nullptr, nullptr) ? free.QuadPart : 0;
}

bool IsLink(const fs::path& path) {
  WIN32_FIND_DATAW found;
  const HANDLE find = FindFirstFileW(SystemPath(path).c_str(), &found);
  if (find == INVALID_HANDLE_VALUE) return false;
  FindClose(find);
  return IsLinkTag(found.dwFileAttributes, found.dwReserved0);
}

std::optional<FileVersion> VersionOf(const fs::path& path, HostHandle /*folder*/) {
  const OwnedHandle opened = OpenFor(path, FILE_READ_ATTRIBUTES);
  BY_HANDLE_FILE_INFORMATION facts;
  if (!opened || !GetFileInformationByHandle(opened.get(), &facts)) return std::nullopt;
  return VersionIn(facts);
}

FileState Inspect(const fs::path& path, HostHandle /*folder*/) {
  FileState state;
  state.isLink = IsLink(path);
  const OwnedHandle opened = OpenFor(path, FILE_READ_ATTRIBUTES);
  BY_HANDLE_FILE_INFORMATION facts;
  if (!opened || !GetFileInformationByHandle(opened.get(), &facts)) {
    const DWORD error = GetLastError();
    state.isRefused = error == ERROR_ACCESS_DENIED;
    state.leadsNowhere = state.isLink && !state.isRefused;
    state.problem = state.isRefused      ? "permission denied"
                    : state.leadsNowhere ? "a broken link"
                                         : "no such file";
    return state;
  }
  state.isDirectory = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const bool isReadOnly = (facts.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  state.time = SecondsOf(facts.ftLastWriteTime);
  state.mode = state.isDirectory ? 0755 : isReadOnly ? 0444 : 0644;
  state.version = VersionIn(facts);
  state.identity = {facts.dwVolumeSerialNumber,
                    JoinHalves(facts.nFileIndexHigh, facts.nFileIndexLow)};
  state.problem = ReadingProblem(path, state.isDirectory);
  state.isRefused = !state.problem.empty();
  return state;
}

LinkState InspectLink(const fs::path& path) {
  const OwnedHandle link = OpenFor(path, FILE_READ_ATTRIBUTES,
                                   FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
  FILETIME time;
  if (!link || !GetFileTime(link.get(), nullptr, nullptr, &time)) FailBySystem();
  const Descriptor parent = OpenDirectory(path.parent_path());
  if (!parent.IsOpen()) FailBySystem();
  return {LinkTarget(parent.Number(), path.filename().string()), SecondsOf(time)};
}

bool LocalTime(std::int64_t secondsSince1970, std::tm& local) {
  const std::time_t time = secondsSince1970;
  return localtime_s(&local, &time) == 0;
}

void UseOwnDrive(const fs::path& path, const std::function<void(const std::string&)>& use) {
  use(LibraryPath(path));
}

bool InputIsTerminal() {
  return IsConsole(STD_INPUT_HANDLE);
}

bool ErrorsGoToTerminal() {
  return IsConsole(STD_ERROR_HANDLE);
}

int TerminalWidth() {
  constexpr int kUsualWidth = 80;
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return kUsualWidth;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

// Ctrl-C interrupts a read from the console by itself.
InterruptibleInput::InterruptibleInput() = default;
InterruptibleInput::~InterruptibleInput() = default;

std::string HostErrorText(int number) {
  switch (number) {
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return "the disk is full";
    case ERROR_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
      return "permission denied";
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return "another program has it open";
    case ERROR_WRITE_PROTECT:
      return "the disk is write-protected";
    case ERROR_FILENAME_EXCED_RANGE:
      return "the name is too long for this file system";
    case ERROR_INVALID_NAME:
      return "this file system can't store such a file";
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS:
      return "a directory is in the way";
    case ERROR_DIRECTORY:
      return "a file is in the way";
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return "no such file or directory";
    default:
      return std::system_category().message(number);
  }
}

}  // namespace kozor::program
