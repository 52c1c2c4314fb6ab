// FileContractTest.cpp - opening files, and operations on open files.
#include <cstring>
#include <tuple>

#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

using PlatformFileContract = ContractTest;

TEST_F(PlatformFileContract, DispositionsDecideByWhetherTheFileExists) {
  // A disposition, whether the file exists, the error, and the contents afterwards.
  const std::tuple<DWORD, bool, DWORD, const char*> rows[] = {
      {CREATE_NEW, false, ERROR_SUCCESS, ""},
      {CREATE_NEW, true, ERROR_FILE_EXISTS, "old"},
      {CREATE_ALWAYS, false, ERROR_SUCCESS, ""},
      {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, ""},
      {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, "none"},
      {OPEN_EXISTING, true, ERROR_SUCCESS, "old"},
      {OPEN_ALWAYS, false, ERROR_SUCCESS, ""},
      {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, "old"},
      {TRUNCATE_EXISTING, true, ERROR_SUCCESS, ""},
  };
  for (const auto& [disposition, exists, error, contents] : rows) {
    for (const DWORD access : {DWORD{0}, DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, kReadWrite}) {
      SCOPED_TRACE(testing::Message() << "access " << access << ", disposition " << disposition
                                      << ", exists " << exists);
      // Emptying takes the right to write; but CREATE_ALWAYS doesn't ask for it.
      if (disposition == TRUNCATE_EXISTING && (access & GENERIC_WRITE) == 0) continue;
      folder.Delete("f");
      if (exists) folder.Write("f", "old");
      SetLastError(kNonsense);
      const bool opens = Opens(folder.Path("f"), access, disposition);
      EXPECT_EQ(GetLastError(), error);
      EXPECT_EQ(opens, error == ERROR_SUCCESS || error == ERROR_ALREADY_EXISTS);
      EXPECT_EQ(folder.Exists("f") ? folder.Read("f") : "none", contents);
    }
  }
}

TEST_F(PlatformFileContract, OpeningRefusesWhatIsNoFileInReach) {
  folder.Write("f", "x");
  folder.MakeDirectory("d");
  const std::tuple<std::string, DWORD, DWORD, DWORD> rows[] = {
      {folder.Path("none\\f"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_PATH_NOT_FOUND},
      {folder.Path("d"), GENERIC_READ, OPEN_EXISTING, ERROR_ACCESS_DENIED},
      {folder.Path("d"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
      {folder.Path("d"), GENERIC_WRITE, CREATE_NEW, ERROR_FILE_EXISTS},
      {folder.Path("a?b"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_INVALID_NAME},
      {folder.Path("a<b"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_INVALID_NAME},
      {folder.Path("f"), GENERIC_READ, 6, ERROR_INVALID_PARAMETER},
  };
  for (const auto& [path, access, disposition, error] : rows) {
    SCOPED_TRACE(path);
    EXPECT_FAILS_WITH(error, !Opens(path, access, disposition));
  }
}

TEST_F(PlatformFileContract, HandlesAllowOnlyWhatTheyWereOpenedFor) {
  HANDLE closed = nullptr;
  char byte = 'y';
  DWORD count = 99;
  {
    const OpenFile file(folder.Path("f"), GENERIC_WRITE, 0, CREATE_NEW);
    closed = file.Get();
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !ReadFile(file.Get(), &byte, 1, &count, nullptr));
  }
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !ReadFile(closed, &byte, 1, &count, nullptr));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !CloseHandle(closed));
  const OpenFile file(folder.Path("f"), GENERIC_READ, 0, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !WriteFile(file.Get(), &byte, 1, &count, nullptr));
  EXPECT_EQ(count, 0U);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !FlushFileBuffers(file.Get()));
}

TEST_F(PlatformFileContract, FilePointerCountsIn32BitsUnlessGivenMore) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
  const HANDLE f = file.Get();
  SetFilePointer(f, 10, nullptr, FILE_BEGIN);
  ASSERT_TRUE(SetEndOfFile(f));
  EXPECT_EQ(SetFilePointer(f, -3, nullptr, FILE_END), 7U);
  EXPECT_FAILS_WITH(ERROR_NEGATIVE_SEEK,
                    SetFilePointer(f, -8, nullptr, FILE_CURRENT) == INVALID_SET_FILE_POINTER);
  EXPECT_EQ(SetFilePointer(f, 0, nullptr, FILE_CURRENT), 7U) << "failures move nothing";

  LONG high = 0;
  SetLastError(kNonsense);
  EXPECT_EQ(SetFilePointer(f, -1, &high, FILE_BEGIN), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{NO_ERROR}) << "a position that looks like an error";
  if (!UnderWine()) {
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER,
                      SetFilePointer(f, 1, nullptr, FILE_CURRENT) == INVALID_SET_FILE_POINTER);
  }
  EXPECT_EQ(SetFilePointer(f, 6, &high, FILE_CURRENT), 5U);
  EXPECT_EQ(high, 1);
}

TEST_F(PlatformFileContract, ReadOnlyFilesResistWritingReplacingAndDeleting) {
  if (UnderWine()) GTEST_SKIP() << "root may write read-only files under Wine";
  folder.Write("f", "precious");
  folder.Write("g", "new");
  ASSERT_TRUE(folder.SetAttributes("f", FILE_ATTRIBUTE_READONLY));
  for (const DWORD disposition :
       std::initializer_list<DWORD>{OPEN_EXISTING, OPEN_ALWAYS, CREATE_ALWAYS, TRUNCATE_EXISTING}) {
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !Opens(folder.Path("f"), GENERIC_WRITE, disposition));
  }
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Delete("f"));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Move("g", "f", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("f"), "precious");
  EXPECT_TRUE(folder.Move("f", "h")) << "the name isn't protected";
  EXPECT_TRUE(folder.SetAttributes("h", FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(folder.Delete("h"));
}

TEST_F(PlatformFileContract, HiddenAndSystemFilesAreReplacedOnlyByWhoNamesTheAttribute) {
  if (UnderWine()) GTEST_SKIP() << "Wine replaces them";
  for (const DWORD attribute :
       std::initializer_list<DWORD>{FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM}) {
    folder.Delete("f");
    folder.Write("f", "x");
    ASSERT_TRUE(folder.SetAttributes("f", attribute));
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !Opens(folder.Path("f"), GENERIC_WRITE, CREATE_ALWAYS));
    const OpenFile file(folder.Path("f"), GENERIC_WRITE, 0, CREATE_ALWAYS, attribute);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(folder.Attributes("f"), attribute | FILE_ATTRIBUTE_ARCHIVE);
  }
}

TEST_F(PlatformFileContract, SharingHoldsInBothDirections) {
  folder.Write("f", "x");
  constexpr DWORD kRead = GENERIC_READ;
  constexpr DWORD kWrite = GENERIC_WRITE;
  constexpr DWORD kShareRead = FILE_SHARE_READ;
  constexpr DWORD kShareWrite = FILE_SHARE_WRITE;
  const std::tuple<DWORD, DWORD, DWORD, DWORD, bool> rows[] = {
      {kRead, kShareRead, kRead, kShareRead, true},
      {kRead, 0, kRead, kShareAll, false},
      {kRead, kShareAll, kRead, 0, false},
      {kRead, kShareRead, kWrite, kShareAll, false},
      {kRead, kShareRead | kShareWrite, kWrite, kShareRead, true},
      {kRead, kShareRead | kShareWrite, kWrite, 0, false},
      {kWrite, kShareRead, kRead, kShareRead, false},
      {kWrite, kShareRead, kRead, kShareRead | kShareWrite, true},
      {kWrite, kShareWrite, kWrite, kShareWrite, true},
      {kWrite, kShareRead, kWrite, kShareAll, false},
      {kReadWrite, 0, 0, 0, true},
  };
  for (const auto& [firstAccess, firstShare, secondAccess, secondShare, agree] : rows) {
    SCOPED_TRACE(testing::Message()
                 << firstAccess << ' ' << firstShare << ' ' << secondAccess << ' ' << secondShare);
    const OpenFile first(folder.Path("f"), firstAccess, firstShare, OPEN_EXISTING);
    ASSERT_TRUE(first.IsOpen());
    SetLastError(kNonsense);
    const OpenFile second(folder.Path("f"), secondAccess, secondShare, OPEN_EXISTING);
    EXPECT_EQ(second.IsOpen(), agree);
    EXPECT_EQ(GetLastError(), agree ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION);
  }
  const OpenFile after(folder.Path("f"), kReadWrite, 0, OPEN_EXISTING);
  EXPECT_TRUE(after.IsOpen()) << "closing gives everything back";
}

TEST_F(PlatformFileContract, OpenFilesAreNeitherEmptiedNorDeletedNorMovedNorReplaced) {
  folder.Write("f", "precious");
  folder.Write("g", "y");
  const OpenFile open(folder.Path("f"), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION,
                    !Opens(folder.Path("f"), GENERIC_WRITE, CREATE_ALWAYS));
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !folder.Delete("f"));
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !folder.Move("f", "h"));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Move("g", "f", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("f") + folder.Read("g"), "preciousy");
}

TEST_F(PlatformFileContract, TimesAreKeptToTheStep) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
  const FILETIME wanted{0x23456780, 0x01C12345};
  FILETIME got{};
  EXPECT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &wanted));
  EXPECT_TRUE(GetFileTime(file.Get(), nullptr, nullptr, &got));
  EXPECT_EQ(got.dwLowDateTime, wanted.dwLowDateTime);
  EXPECT_EQ(got.dwHighDateTime, wanted.dwHighDateTime);
}

HANDLE Map(const OpenFile& file, DWORD protection, DWORD size) {
  return CreateFileMappingA(file.Get(), nullptr, protection, 0, size, nullptr);
}

TEST_F(PlatformFileContract, WhatIsStoredInAViewIsInTheFile) {
  {
    const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_ALWAYS);
    const HANDLE mapping = Map(file, PAGE_READWRITE, 0x20010);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(GetFileSize(file.Get(), nullptr), 0x20010U);
    auto* const whole = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    auto* const part = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0x20000, 16));
    ASSERT_NE(whole, nullptr);
    ASSERT_NE(part, nullptr);
    EXPECT_TRUE(CloseHandle(mapping)) << "views outlive it";
    EXPECT_EQ(part[15], 0) << "a grown file is zero";
    std::memcpy(whole, "start", 5);
    std::memcpy(whole + 0x20000, "end", 3);
    EXPECT_EQ(std::memcmp(part, "end", 3), 0);
    EXPECT_TRUE(UnmapViewOfFile(whole));
    EXPECT_TRUE(UnmapViewOfFile(part));
    EXPECT_FAILS_WITH(ERROR_INVALID_ADDRESS, !UnmapViewOfFile(part));
    for (const LONG size : {5, 7}) {
      SetFilePointer(file.Get(), size, nullptr, FILE_BEGIN);
      EXPECT_TRUE(SetEndOfFile(file.Get()));
    }
  }
  EXPECT_EQ(folder.Read("f"), std::string("start\0\0", 7));
}

TEST_F(PlatformFileContract, MappingsRefuseWhatTheyCannotGive) {
  const OpenFile empty(folder.Path("empty"), kReadWrite, 0, CREATE_ALWAYS);
  EXPECT_FAILS_WITH(ERROR_FILE_INVALID, Map(empty, PAGE_READWRITE, 0) == nullptr);
  folder.Write("f", "0123456789");
  const OpenFile file(folder.Path("f"), GENERIC_READ, 0, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, Map(file, PAGE_READWRITE, 0) == nullptr);
  EXPECT_FAILS_WITH(ERROR_NOT_ENOUGH_MEMORY, Map(file, PAGE_READONLY, 11) == nullptr);
  const HANDLE mapping = Map(file, PAGE_READONLY, 0);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                    MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0) == nullptr);
  EXPECT_FAILS_WITH(ERROR_MAPPED_ALIGNMENT,
                    MapViewOfFile(mapping, FILE_MAP_READ, 0, 100, 0) == nullptr);
  EXPECT_TRUE(CloseHandle(mapping));
}

}  // namespace
}  // namespace kozor::test
