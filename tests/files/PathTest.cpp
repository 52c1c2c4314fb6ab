// PathTest.cpp - splitting paths, including names whose last byte looks like a backslash.
#include "files/Path.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "ZorFileServices.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

std::string Shown(const char* begin, const char* end) {
  return begin == nullptr ? "-" : std::string(begin, end);
}

// "root|directory|file name", "-" for a piece that is absent.
std::string Cut(const char* path) {
  const char* root;
  const char* directory;
  const char* fileName;
  ZorSplitPath(path, &root, &directory, &fileName);
  EXPECT_EQ(ZorGetFileName(path), fileName);
  EXPECT_TRUE(root == nullptr || root == path);
  const char* end = path + strlen(path);
  const char* nameBegin = fileName != nullptr ? fileName : end;
  const char* directoryBegin = directory != nullptr ? directory : nameBegin;
  return Shown(root, directoryBegin) + "|" + Shown(directory, nameBegin) + "|" +
         Shown(fileName, end);
}

TEST(FilesPath, CutsIntoRootDirectoryAndFileName) {
  const CodePageScope japanese(932);
  const std::tuple<const char*, const char*, int> rows[] = {
      {"C:\\file.txt", "C:|\\|file.txt", 1},
      {"C:\\dir\\sub\\", "C:|\\dir\\sub\\|-", 0},
      {"C:\\", "C:|\\|-", 0},
      {"C:file.txt", "C:|-|file.txt", 0},
      {"C:dir\\file.txt", "C:|dir\\|file.txt", 0},
      {"dir\\file.txt", "-|dir\\|file.txt", 0},
      {"file.txt", "-|-|file.txt", 0},
      {"", "-|-|-", 0},
      {"::\\x", "::|\\|x", 1},
      {"C:\\a/b", "C:|\\|a/b", 1},
      {"C:\\a\\\\b", "C:|\\a\\\\|b", 1},
      {"\\\\srv\\share\\dir\\file.txt", "\\\\srv\\share|\\dir\\|file.txt", 1},
      {"\\\\srv\\share\\", "\\\\srv\\share|\\|-", 0},
      {"\\\\srv\\share", "\\\\srv\\share|-|-", 0},
      {"\\\\srv\\", "\\\\srv\\|-|-", 0},
      {"\\\\srv", "-|\\\\|srv", 0},
      {"\\", "-|\\|-", 0},
      // 0x95 0x5C is one character; so is 0x83 0x5C
      {"C:\\\x95\x5C", "C:|\\|\x95\x5C", 1},
      {"\x95\x5C\\\x83\x5C", "-|\x95\x5C\\|\x83\x5C", 0},
      {"\\\\s\x95\x5C\\share\\x", "\\\\s\x95\x5C\\share|\\|x", 1},
      {"a\x95", "-|-|a\x95", 0},
  };
  for (const auto& [path, pieces, isFull] : rows) {
    EXPECT_EQ(Cut(path), pieces) << path;
    EXPECT_EQ(ZorIsFullPath(path), isFull) << path;
  }
  const CodePageScope utf8(65001);
  EXPECT_EQ(Cut("C:\\\xE8\xA1\xA8\\\xE3\x82\xBD"), "C:|\\\xE8\xA1\xA8\\|\xE3\x82\xBD");
  EXPECT_EQ(Cut("\x95\x5Cx"), "-|\x95\x5C|x");  // here 0x5C is a backslash
}

TEST(FilesPath, SetsOneTrailingBackslash) {
  const CodePageScope japanese(932);
  const char* const rows[][3] = {{"C:", "C:\\", "C:"},
                                 {"a\\\\", "a\\\\", "a\\"},
                                 {"a\\b", "a\\b\\", "a\\b"},
                                 {"", "\\", ""},
                                 {"\\", "\\", ""},
                                 {"a\x95\x5C", "a\x95\x5C\\", "a\x95\x5C"},
                                 {"a\x95\x5C\\", "a\x95\x5C\\", "a\x95\x5C"}};
  for (const auto& [given, with, without] : rows) {
    CString path = given;
    ZorSetTrailingBackslash(path, 1);
    EXPECT_STREQ(path, with);
    EXPECT_EQ(path.GetLength(), static_cast<int>(strlen(path)));
    path = given;
    ZorSetTrailingBackslash(path, 0);
    EXPECT_STREQ(path, without);
  }
}

TEST(FilesPath, NullReadsAsTheEmptyText) {
  long time = 0;
  unsigned int attribute = 0;
  EXPECT_EQ(ZorGetFileName(nullptr), nullptr);
  EXPECT_EQ(ZorIsFullPath(nullptr), 0);
  EXPECT_EQ(ZorCreateDirectory(nullptr, 0, nullptr), 0);
  EXPECT_EQ(ZorRemoveDirectory(nullptr, 0), 1);
  EXPECT_EQ(ZorGetDiskSpace(nullptr, 1, nullptr), 0U);
  EXPECT_EQ(ZorGetDriveType(nullptr), DRIVE_UNKNOWN);
  EXPECT_EQ(ZorSetFileTimeStamp(nullptr, 0), 0);
  EXPECT_EQ(ZorGetFileTimeStamp(nullptr, time), 0);
  EXPECT_EQ(ZorSetFileAttribute(nullptr, 0), 0);
  EXPECT_EQ(ZorGetFileAttribute(nullptr, attribute), 0);
  EXPECT_STREQ(ZorTempDirectory(nullptr, 1), "");
  CFile file;
  CFileStatus status;
  EXPECT_EQ(file.Open(nullptr, CFile::modeRead), 0);
  EXPECT_EQ(CFile::GetStatus(nullptr, status), 0);
}

}  // namespace
}  // namespace kozor::test
