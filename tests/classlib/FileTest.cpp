// FileTest.cpp - CFile: opening, positions, failures, and what can be asked of a path.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/classlib/ClassLib.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::Bytes;
using kozor::test::CodePageScope;
using kozor::test::TestFolder;

// The cause of the CFileException that `action` throws, 0 for none.
template <class Action>
int CauseOf(Action action) {
  try {
    action();
    return CFileException::none;
  } catch (CFileException* error) {
    const int cause = error->m_cause;
    error->Delete();
    return cause;
  }
}

class File : public testing::Test {
 protected:
  // The cause with which opening fails, 0 if it doesn't.
  int Open(const char* name, unsigned int flags) {
    CFile file;
    CFileException error;
    const int result = file.Open(folder.Lib(name).c_str(), flags, &error);
    EXPECT_EQ(result == 0, error.m_cause != 0);
    EXPECT_EQ(result != 0, file.IsOpen());
    return error.m_cause;
  }

  TestFolder folder;
};

TEST_F(File, OpeningTellsWhyItFails) {
  folder.WriteFile("file", "12345");
  folder.WriteFile("readonly", "12345");
  ASSERT_TRUE(SetFileAttributesA(folder.Lib("readonly").c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Open("file", CFile::modeRead), CFileException::none);
  EXPECT_EQ(Open("missing", CFile::modeRead), CFileException::fileNotFound);
  EXPECT_EQ(Open("missing/file", CFile::modeRead), CFileException::badPath);
  EXPECT_EQ(Open("", CFile::modeRead), CFileException::accessDenied);  // a directory
  EXPECT_EQ(Open("readonly", CFile::modeRead), CFileException::none);
  EXPECT_EQ(Open("readonly", CFile::modeWrite), CFileException::accessDenied);
  EXPECT_EQ(Open("readonly", CFile::modeCreate | CFile::modeWrite), CFileException::accessDenied);
  EXPECT_EQ(CauseOf([&] { CFile file(folder.Lib("missing").c_str(), CFile::modeRead); }),
            CFileException::fileNotFound);
}

TEST_F(File, CreatingEmptiesAnExistingFileUnlessToldNotTo) {
  folder.WriteFile("file", "12345");
  EXPECT_EQ(Open("file", CFile::modeWrite), 0);
  EXPECT_EQ(Open("file", CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite), 0);
  EXPECT_EQ(folder.ReadFile("file").size(), 5u);
  EXPECT_EQ(Open("file", CFile::modeCreate | CFile::modeWrite), 0);
  EXPECT_EQ(folder.ReadFile("file").size(), 0u);
}

TEST_F(File, SharesAsTheFlagsSay) {
  folder.WriteFile("file", "12345");
  const struct {
    unsigned int first, second;
    int cause;
  } rows[] = {
      {CFile::modeRead | CFile::shareExclusive, CFile::modeRead | CFile::shareDenyNone, 11},
      {CFile::modeRead | CFile::shareDenyWrite, CFile::modeRead | CFile::shareDenyWrite, 0},
      {CFile::modeRead | CFile::shareDenyWrite, CFile::modeWrite | CFile::shareDenyNone, 11},
      {CFile::modeWrite | CFile::shareDenyRead, CFile::modeRead | CFile::shareDenyNone, 11},
      {CFile::modeWrite | CFile::shareDenyNone, CFile::modeWrite | CFile::shareDenyNone, 0},
  };
  for (const auto& row : rows) {
    CFile holder(folder.Lib("file").c_str(), row.first);
    EXPECT_EQ(Open("file", row.second), row.cause) << row.first << ' ' << row.second;
  }
}

TEST_F(File, HasOneFileOpenAtATime) {
  folder.WriteFile("file", "12345");
  CFile file(folder.Lib("file").c_str(), CFile::modeRead);
  EXPECT_FALSE(file.Open(folder.Lib("file").c_str(), CFile::modeRead | CFile::shareDenyNone));
  file.Close();
  file.Close();
  EXPECT_TRUE(file.Open(folder.Lib("file").c_str(), CFile::modeRead));
}

TEST_F(File, ReadsWritesAndSeeks) {
  CFile file(folder.Lib("file").c_str(), CFile::modeCreate | CFile::modeReadWrite);
  file.Write("0123456789", 10);
  EXPECT_EQ(file.Seek(-4, CFile::end), 6u);
  EXPECT_EQ(file.Seek(1, CFile::current), 7u);
  char buffer[8];
  EXPECT_EQ(file.Read(buffer, 8), 3u);
  EXPECT_EQ(std::string(buffer, 3), "789");
  EXPECT_EQ(CauseOf([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
  EXPECT_EQ(file.Seek(0, CFile::current), 10u);

  EXPECT_EQ(file.Seek(0x1'0000'0001, CFile::begin), 0x1'0000'0001u);
  file.Write("x", 1);
  EXPECT_EQ(file.GetLength(), 0x1'0000'0002u);
  file.Flush();
  CFileStatus status;
  ASSERT_TRUE(CFile::GetStatus(folder.Lib("file").c_str(), status));
  EXPECT_EQ(status.m_size, 0x1'0000'0002u);
}

TEST_F(File, ThrowsWhenTheHandleIsNoGood) {
  folder.WriteFile("file", "12345");
  CFile file(folder.Lib("file").c_str(), CFile::modeRead);
  EXPECT_EQ(CauseOf([&] { file.Write("x", 1); }), CFileException::accessDenied);
  file.Close();
  char byte;
  EXPECT_EQ(CauseOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
}

TEST_F(File, RemovesFilesButNotReadOnlyOnes) {
  folder.WriteFile("file", "12345");
  const std::string path = folder.Lib("file");
  ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(CauseOf([&] { CFile::Remove(path.c_str()); }), CFileException::accessDenied);
  ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL));
  CFile::Remove(path.c_str());
  EXPECT_EQ(CauseOf([&] { CFile::Remove(path.c_str()); }), CFileException::fileNotFound);
}

TEST_F(File, StatusFindsEntriesOfDirectoriesOnly) {
  const CodePageScope japanese(932);
  folder.WriteFile("dir/file", "12345");
  folder.WriteFile("\xE8\xA1\xA8/file", "1");  // in code page 932 the name ends in the byte 0x5C
  ASSERT_TRUE(SetFileAttributesA(folder.Lib("dir/file").c_str(), FILE_ATTRIBUTE_HIDDEN));
  const std::string root = folder.Lib();
  const struct {
    std::string path;
    int attribute;  // -1: not found
  } rows[] = {{root + "\\dir\\file", CFile::hidden},
              {root + "\\dir", CFile::directory},
              {root + "\\dir\\", CFile::directory},
              {root + "\\\x95\x5C", CFile::directory},
              {root + "\\\x95\x5C\\", CFile::directory},
              {root + "\\none", -1},
              {root + "\\dir\\f*", -1},
              {root + "\\dir\\fil?", -1},
              {"C:\\", -1},
              {"", -1}};
  for (const auto& row : rows) {
    CFileStatus status{};
    status.m_size = 99;
    EXPECT_EQ(CFile::GetStatus(row.path.c_str(), status), row.attribute >= 0) << row.path;
    EXPECT_EQ(status.m_attribute, row.attribute >= 0 ? row.attribute : 0) << row.path;
    EXPECT_EQ(status.m_size == 99, row.attribute < 0) << row.path;
  }
}

}  // namespace
