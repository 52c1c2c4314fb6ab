// Contract.h - what the contract tests share.  They use Win32 names alone, so the same sources also
// run against the real calls on Windows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/win32/Win32.h"

namespace kozor::test {

constexpr DWORD kNonsense = 0xDEADBEEF;

// A call must fail and leave this error.  The last error is nonsense before, so it was the call
// that set it.
#define EXPECT_FAILS_WITH(wantedError, failed)       \
  do {                                               \
    SetLastError(::kozor::test::kNonsense);          \
    EXPECT_TRUE(failed);                             \
    EXPECT_EQ(GetLastError(), DWORD{(wantedError)}); \
  } while (false)

// Whether the calls are Wine's.  Where those are known to differ from Windows, a test says so at
// the line.
inline bool UnderWine() {
  const HMODULE system = LoadLibraryA("ntdll.dll");
  const bool wine = system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
  if (system != nullptr) FreeLibrary(system);
  return wine;
}

// A new empty directory below the temporary one, removed with all that is in it.
class WinFolder {
 public:
  WinFolder() {
    char temporary[1024];
    char unique[MAX_PATH];
    GetTempPathA(sizeof temporary, temporary);
    GetTempFileNameA(temporary, "kzc", 0, unique);
    DeleteFileA(unique);
    CreateDirectoryA(unique, nullptr);
    root = unique;
  }
  ~WinFolder() { RemoveAll(root); }
  WinFolder(const WinFolder&) = delete;
  WinFolder& operator=(const WinFolder&) = delete;

  std::string Path(const std::string& name = "") const {
    return name.empty() ? root : root + '\\' + name;
  }

  void Write(const std::string& name, const std::string& text) const {
    const HANDLE file = CreateFileA(Path(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << name << ": " << GetLastError();
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    EXPECT_EQ(written, text.size());
    EXPECT_TRUE(CloseHandle(file));
  }

  std::string Read(const std::string& name) const {
    const HANDLE file = CreateFileA(Path(name).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << name << ": " << GetLastError();
    std::string text(64 * 1024, '\0');
    DWORD got = 0;
    EXPECT_TRUE(ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &got, nullptr));
    CloseHandle(file);
    text.resize(got);
    return text;
  }

  void MakeDirectory(const std::string& name) const {
    EXPECT_TRUE(CreateDirectoryA(Path(name).c_str(), nullptr)) << name << ": " << GetLastError();
  }

  bool Exists(const std::string& name) const {
    return GetFileAttributesA(Path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
  }

 private:
  static void RemoveAll(const std::string& directory) {
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA((directory + "\\*").c_str(), &data);
    if (find == INVALID_HANDLE_VALUE) return;
    do {
      const std::string name = data.cFileName;
      const std::string path = directory + '\\' + name;
      if (name == "." || name == "..") continue;
      SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
      const bool isDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
      const bool isLink = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      if (isDirectory && !isLink) {
        RemoveAll(path);
      } else if (isDirectory) {
        RemoveDirectoryA(path.c_str());
      } else {
        DeleteFileA(path.c_str());
      }
    } while (FindNextFileA(find, &data));
    FindClose(find);
    RemoveDirectoryA(directory.c_str());
  }

  std::string root;
};

// An open file that closes itself.
class OpenFile {
 public:
  OpenFile(const std::string& path, DWORD access, DWORD share, DWORD disposition,
           DWORD flags = FILE_ATTRIBUTE_NORMAL)
      : handle(CreateFileA(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
  ~OpenFile() { Close(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool IsOpen() const { return handle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle; }
  void Close() {
    if (IsOpen()) CloseHandle(handle);
    handle = INVALID_HANDLE_VALUE;
  }

 private:
  HANDLE handle;
};

inline bool operator==(const FILETIME& a, const FILETIME& b) {
  return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

// Names that a search gives, "." and ".." included, in its order.
inline std::vector<std::string> Search(const std::string& mask) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(mask.c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) return names;
  do {
    names.emplace_back(data.cFileName);
  } while (FindNextFileA(find, &data));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
  FindClose(find);
  return names;
}

}  // namespace kozor::test
