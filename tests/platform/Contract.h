// Contract.h - common code of the contract tests.  They use only Win32 names, so the same sources
// also run against the real calls on Windows.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "platform/win32/Win32.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

constexpr DWORD kNonsense = 0xDEADBEEF;
constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

using Names = std::vector<std::string>;

// A call must fail and set this error.  The last error is set to nonsense first, to show that the
// call sets it.
#define EXPECT_FAILS_WITH(wantedError, failed)       \
  do {                                               \
    SetLastError(::kozor::test::kNonsense);          \
    EXPECT_TRUE(failed);                             \
    EXPECT_EQ(GetLastError(), DWORD{(wantedError)}); \
  } while (false)

// Whether the calls are Wine's.  Tests mark the lines where Wine is known to differ from Windows.
inline bool UnderWine() {
  const HMODULE system = LoadLibraryA("ntdll.dll");
  const bool wine = system != nullptr && GetProcAddress(system, "wine_get_version") != nullptr;
  if (system != nullptr) FreeLibrary(system);
  return wine;
}

// Text as the _mbs functions take it.
inline const unsigned char* Mbs(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.c_str());
}

// An open file, closed by the destructor.
class OpenFile {
 public:
  OpenFile(const std::string& path, DWORD access, DWORD share, DWORD disposition,
           DWORD flags = FILE_ATTRIBUTE_NORMAL)
      : handle(CreateFileA(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
  ~OpenFile() {
    if (IsOpen()) CloseHandle(handle);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool IsOpen() const { return handle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle; }

 private:
  HANDLE handle;
};

// Opens and closes a file.
inline bool Opens(const std::string& path, DWORD access = GENERIC_READ,
                  DWORD disposition = OPEN_EXISTING) {
  return OpenFile(path, access, FILE_SHARE_READ, disposition).IsOpen();
}

// The contents of a file of at most 64 KiB.
inline std::string ReadText(const std::string& path) {
  const OpenFile file(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  EXPECT_TRUE(file.IsOpen()) << path << ": " << GetLastError();
  std::string text(64 * 1024, '\0');
  DWORD got = 0;
  EXPECT_TRUE(ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &got, nullptr));
  text.resize(got);
  return text;
}

// The names that a search returns, including "." and "..", in its order.
inline Names Search(const std::string& mask) {
  Names names;
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

inline Names SearchWithoutDots(const std::string& mask) {
  Names names = Search(mask);
  std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
  return names;
}

// A folder, used through the calls under test.
class WinFolder {
 public:
  explicit WinFolder(std::string libraryPath) : root(std::move(libraryPath)) {}

  std::string Path(const std::string& name = "") const {
    return name.empty() ? root : root + '\\' + name;
  }

  void Write(const std::string& name, const std::string& text) const {
    const OpenFile file(Path(name), GENERIC_WRITE, 0, CREATE_ALWAYS);
    ASSERT_TRUE(file.IsOpen()) << name << ": " << GetLastError();
    DWORD written = 0;
    EXPECT_TRUE(
        WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    EXPECT_EQ(written, text.size());
  }

  std::string Read(const std::string& name) const { return ReadText(Path(name)); }

  bool MakeDirectory(const std::string& name) const {
    return CreateDirectoryA(Path(name).c_str(), nullptr);
  }
  bool DropDirectory(const std::string& name) const { return RemoveDirectoryA(Path(name).c_str()); }
  bool Delete(const std::string& name) const { return DeleteFileA(Path(name).c_str()); }
  bool Move(const std::string& from, const std::string& to, DWORD flags = 0) const {
    return MoveFileExA(Path(from).c_str(), Path(to).c_str(), flags);
  }
  DWORD Attributes(const std::string& name) const { return GetFileAttributesA(Path(name).c_str()); }
  bool SetAttributes(const std::string& name, DWORD attributes) const {
    return SetFileAttributesA(Path(name).c_str(), attributes);
  }
  bool Exists(const std::string& name) const { return Attributes(name) != INVALID_FILE_ATTRIBUTES; }

 private:
  const std::string root;
};

class ContractTest : public ::testing::Test {
 protected:
  const TestFolder host;  // what the host shows; for tests of our implementations
  const WinFolder folder{host.Lib()};
};

}  // namespace kozor::test
