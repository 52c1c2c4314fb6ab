// WideCallsTest.cpp - on Windows: names that the system's narrow calls would alter, truncate or
// misread.
#include <windows.h>

#include <algorithm>

#include "platform/win32/CodePages.h"
#include "platform/win32/HostRules.h"
#include "tests/platform/Contract.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

class PlatformWideCalls : public ContractTest {
 protected:
  // The names in the folder, sorted.
  Names Listed() const {
    Names names;
    WIN32_FIND_DATAA data;
    const HANDLE find = FindFirstFileA(folder.Path("*").c_str(), &data);
    do {
      const std::string name = data.cFileName;
      if (name != "." && name != "..") names.push_back(name);
    } while (KzFindNextFile(find, &data));
    FindClose(find);
    std::sort(names.begin(), names.end());
    return names;
  }
  // Makes a file; its name is given in UTF-16.
  void WriteWide(const std::wstring& name) const {
    const std::string parent = folder.Path();
    std::wstring path = L"\\\\?\\" + std::wstring(parent.begin(), parent.end()) + L"\\" + name;
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
    CloseHandle(file);
  }
};

TEST_F(PlatformWideCalls, PathsMayBeLongerThanANarrowOneCan) {
  std::string name = "d";
  for (int i = 0; i < 40; ++i) {
    ASSERT_TRUE(folder.MakeDirectory(name)) << name.size() << " " << GetLastError();
    name += "\\0123456789";
  }
  ASSERT_TRUE(folder.MakeDirectory(name));
  folder.Write(name + "\\file", "deep");
  EXPECT_GT(folder.Path(name).size(), std::size_t{MAX_PATH});
  EXPECT_EQ(SearchWithoutDots(folder.Path(name) + "\\*"), Names{"file"});
  EXPECT_EQ(folder.Read(name + "\\..\\0123456789\\.\\file"), "deep");
  EXPECT_TRUE(folder.Move(name + "\\file", "up"));
  EXPECT_EQ(folder.Read("up"), "deep");
}

TEST_F(PlatformWideCalls, NoNameBecomesThatOfAnotherFile) {
  const CodePageScope japanese(932);
  folder.Write("a.txt", "plain");
  WriteWide(L"\u00E4.txt");
  WriteWide(L"\u8868");
  EXPECT_EQ(Listed(), (Names{"?.txt", "a.txt", "\x95\x5C"}));
  EXPECT_FALSE(Opens(folder.Path("?.txt")));
  EXPECT_TRUE(Opens(folder.Path("\x95\x5C")));
  const CodePageScope utf8(CP_UTF8);
  EXPECT_TRUE(Opens(folder.Path("\xC3\xA4.txt")));
}

TEST_F(PlatformWideCalls, TrailingDotsAndBlanksBelongToNames) {
  folder.Write("x", "without");
  WriteWide(L"x.");
  EXPECT_EQ(folder.Read("x."), "");
  EXPECT_EQ(folder.Read("x"), "without");
  EXPECT_TRUE(folder.Delete("x."));
  EXPECT_EQ(folder.Read("x"), "without");
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !Opens(folder.Path("x ")));
}

TEST_F(PlatformWideCalls, WhatWindowsCannotMakeIsNotMade) {
  folder.Write("x", "x");
  for (const char* name : {"nul", "aux.txt", "com1", "x.", "x ", "con"}) {
    SCOPED_TRACE(name);
    EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !Opens(folder.Path(name), GENERIC_WRITE, CREATE_ALWAYS));
    EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !Opens(folder.Path(name), GENERIC_WRITE, CREATE_NEW));
    EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !folder.MakeDirectory(name));
    EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !folder.Move("x", name));
    EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !Opens(folder.Path(name)));
  }
  EXPECT_EQ(SearchWithoutDots(folder.Path("*")), Names{"x"});
}

TEST_F(PlatformWideCalls, RelativePathsHangOnTheDirectory) {
  char before[MAX_PATH];
  GetCurrentDirectoryA(sizeof before, before);
  folder.Write("f", "here");
  ASSERT_TRUE(SetCurrentDirectoryA(folder.Path().c_str()));
  EXPECT_EQ(ReadText("f"), "here");
  EXPECT_EQ(ReadText(".\\none\\..\\f"), "here");
  EXPECT_EQ(ReadText(folder.Path().substr(0, 2) + "f"), "here");
  EXPECT_EQ(ReadText(folder.Path("f").substr(2)), "here");
  char full[MAX_PATH];
  EXPECT_EQ(GetFullPathNameA("f", sizeof full, full, nullptr), folder.Path("f").size());
  EXPECT_EQ(full, folder.Path("f"));
  SetCurrentDirectoryA(before);
}

}  // namespace
}  // namespace kozor::test
