// MappingContractTest.cpp - files mapped into memory.
#include <cstring>

#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;

class MappingContract : public ::testing::Test {
 protected:
  static HANDLE Map(const OpenFile& file, DWORD protection, DWORD size) {
    return CreateFileMappingA(file.Get(), nullptr, protection, 0, size, nullptr);
  }

  WinFolder folder;
};

TEST_F(MappingContract, WhatIsStoredInAViewIsInTheFile) {
  {
    OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_ALWAYS);
    const HANDLE mapping = Map(file, PAGE_READWRITE, 5000);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(GetFileSize(file.Get(), nullptr), 5000U);
    auto* const view = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view[4999], 0) << "a grown file is zero";
    EXPECT_TRUE(CloseHandle(mapping));
    std::memcpy(view, "start", 5);
    std::memcpy(view + 3971, "end", 3);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(SetFilePointer(file.Get(), -1026, nullptr, FILE_END), 3974U);
    EXPECT_TRUE(SetEndOfFile(file.Get()));
  }
  const std::string text = folder.Read("f");
  ASSERT_EQ(text.size(), 3974U);
  EXPECT_EQ(text.substr(0, 5) + text.substr(3971), "startend");
}

TEST_F(MappingContract, MappingsRefuseWhatTheyCannotGive) {
  const OpenFile empty(folder.Path("empty"), kReadWrite, 0, CREATE_ALWAYS);
  EXPECT_FAILS_WITH(ERROR_FILE_INVALID, Map(empty, PAGE_READWRITE, 0) == nullptr);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, Map(empty, 0, 10) == nullptr);
  folder.Write("f", "0123456789");
  const OpenFile file(folder.Path("f"), GENERIC_READ, 0, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_NOT_ENOUGH_MEMORY, Map(file, PAGE_READONLY, 11) == nullptr);
  const HANDLE mapping = Map(file, PAGE_READONLY, 0);
  ASSERT_NE(mapping, nullptr);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                    MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0) == nullptr);
  EXPECT_FAILS_WITH(ERROR_MAPPED_ALIGNMENT,
                    MapViewOfFile(mapping, FILE_MAP_READ, 0, 100, 0) == nullptr);
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE,
                    MapViewOfFile(file.Get(), FILE_MAP_READ, 0, 0, 0) == nullptr);
  const void* const view = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(std::memcmp(view, "0123456789", 10), 0);
  EXPECT_TRUE(UnmapViewOfFile(view));
  EXPECT_FAILS_WITH(ERROR_INVALID_ADDRESS, !UnmapViewOfFile(view));
  EXPECT_TRUE(CloseHandle(mapping));
}

TEST_F(MappingContract, PartsAreMappedFromTheirOffset) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_ALWAYS);
  const HANDLE mapping = Map(file, PAGE_READWRITE, 0x20010);
  ASSERT_NE(mapping, nullptr);
  auto* const whole = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0));
  auto* const part = static_cast<char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0x20000, 16));
  ASSERT_NE(whole, nullptr);
  ASSERT_NE(part, nullptr);
  whole[0x2000F] = 'z';
  EXPECT_EQ(part[15], 'z');
  EXPECT_TRUE(UnmapViewOfFile(whole));
  EXPECT_TRUE(UnmapViewOfFile(part));
  EXPECT_TRUE(CloseHandle(mapping));
}

}  // namespace
}  // namespace kozor::test
