// HostNameTest.cpp - host names as the library sees them: code pages, forbidden characters, case.
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/win32/PosixAdmin.h"
#include "tests/platform/Contract.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

using Names = std::vector<std::string>;

class HostName : public ::testing::Test {
 protected:
  // What is listed, without "." and "..".
  Names List(const std::string& mask = "*") const {
    Names names = Search(folder.Lib() + '\\' + mask);
    std::erase_if(names, [](const std::string& name) { return name == "." || name == ".."; });
    return names;
  }

  bool Opens(const std::string& name) const {
    const OpenFile file(folder.Lib() + '\\' + name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    return file.IsOpen();
  }

  TestFolder folder;
};

class CaseSensitiveScope {
 public:
  CaseSensitiveScope() : before(KzSetCaseSensitive(1)) {}
  ~CaseSensitiveScope() { KzSetCaseSensitive(before); }
  CaseSensitiveScope(const CaseSensitiveScope&) = delete;
  CaseSensitiveScope& operator=(const CaseSensitiveScope&) = delete;

 private:
  int before;
};

TEST_F(HostName, ComesAndGoesInCodePage932) {
  folder.WriteFile("日本語.txt", "x");
  EXPECT_EQ(List(), Names{"\x93\xFA\x96{\x8C\xEA.txt"});
  EXPECT_TRUE(Opens("\x93\xFA\x96{\x8C\xEA.txt"));
  const std::string name = folder.Lib() + "\\\x95\x5C\x83\x5C";
  EXPECT_TRUE(CreateDirectoryA(name.c_str(), nullptr)) << "a trail byte 0x5C is no separator";
  EXPECT_TRUE(CreateDirectoryA((name + "\\\x95\x5C").c_str(), nullptr));
  EXPECT_TRUE(folder.Exists("表ソ/表"));
}

TEST_F(HostName, ComesAndGoesInUtf8) {
  const CodePageScope utf8(CP_UTF8);
  for (const char* name : {"日本語", "é", "😀", "ไทย"}) {
    folder.WriteFile(name, "x");
    EXPECT_TRUE(Opens(name)) << name;
  }
  EXPECT_EQ(List(), (Names{"é", "ไทย", "日本語", "😀"}));
}

TEST_F(HostName, WhatCannotBeSaidIsListedButNamesNothing) {
  struct Row {
    UINT page;
    const char* host;
    const char* listed;
  };
  const Row rows[] = {
      {932, "a😀b", "a?b"},        {932, "ไทย.txt", "???.txt"}, {932, "a\xFF\xFE", "a??"},
      {932, "a\\b", "a?b"},       {932, "a:b", "a?b"},         {932, "tab\there", "tab?here"},
      {932, "<a>|\"*", "?a????"}, {CP_UTF8, "a\xFF", "a?"},    {CP_UTF8, "new\nline", "new?line"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.listed);
    const CodePageScope page(row.page);
    folder.WriteFile(row.host, "x");
    EXPECT_EQ(List(), Names{row.listed});
    EXPECT_FALSE(Opens(row.listed));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME);
    EXPECT_EQ(::unlink(folder.Path(row.host).c_str()), 0);
  }
}

TEST_F(HostName, BytesThatAreNoCharacterNameNothing) {
  folder.WriteFile("ab", "x");
  for (const char* name : {"a\x81", "\x81", "a\x85\x40", "a\xFC\xFC"}) EXPECT_FALSE(Opens(name));
  const CodePageScope utf8(CP_UTF8);
  for (const char* name : {"a\xFF", "\xC0\xAF", "\xED\xA0\x80"}) EXPECT_FALSE(Opens(name));
}

TEST_F(HostName, OtherReadingsOfACharacterAreFoundBehindTheExactOne) {
  folder.WriteFile("a〜b", "wave dash");
  EXPECT_EQ(List(), Names{"a\x81\x60"
                          "b"});
  EXPECT_TRUE(
      Opens("a\x81\x60"
            "b"));
  {
    const CaseSensitiveScope exact;
    EXPECT_TRUE(
        Opens("a\x81\x60"
              "b"));
  }
  folder.WriteFile("a～b", "full-width tilde");
  EXPECT_EQ(List(), (Names{"a?b",
                           "a\x81\x60"
                           "b"}))
      << "only one can have the name";
}

TEST_F(HostName, IsFoundWithoutRegardToCase) {
  folder.WriteFile("Dir/Sub/ReadMe.TXT", "x");
  EXPECT_TRUE(Opens("dir\\SUB\\readme.txt"));
  EXPECT_TRUE(Opens("Dir\\Sub\\ReadMe.TXT"));
  EXPECT_FALSE(Opens("dir\\SUB\\readme.tx"));
  folder.WriteFile("ＡｂΣжÉ", "x");
  const CodePageScope utf8(CP_UTF8);
  EXPECT_TRUE(Opens("ａＢσЖé"));
}

TEST_F(HostName, ExactSpellingComesFirst) {
  folder.WriteFile("name", "lower");
  folder.WriteFile("NAME", "upper");
  const WIN32_FIND_DATAA wanted = [&] {
    WIN32_FIND_DATAA data{};
    FindClose(FindFirstFileA((folder.Lib() + "\\name").c_str(), &data));
    return data;
  }();
  EXPECT_STREQ(wanted.cFileName, "name");
  EXPECT_EQ(List(), (Names{"NAME", "name"}));
  EXPECT_TRUE(DeleteFileA((folder.Lib() + "\\name").c_str()));
  EXPECT_FALSE(folder.Exists("name"));
  EXPECT_TRUE(Opens("name")) << "NAME is left";
}

TEST_F(HostName, NewFilesTakeTheDirectoriesThatAreThere) {
  folder.WriteFile("Dir/a", "x");
  EXPECT_TRUE(CreateDirectoryA((folder.Lib() + "\\DIR\\New").c_str(), nullptr));
  EXPECT_TRUE(folder.Exists("Dir/New"));
  const OpenFile file(folder.Lib() + "\\dir\\A", GENERIC_WRITE, 0, CREATE_ALWAYS);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(folder.List("Dir"), (Names{"New/", "a"})) << "the old file was written anew";
}

TEST_F(HostName, CaseCountsOnDemand) {
  folder.WriteFile("Name", "x");
  const CaseSensitiveScope exact;
  EXPECT_TRUE(Opens("Name"));
  EXPECT_FALSE(Opens("name"));
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  const OpenFile file(folder.Lib() + "\\NAME", GENERIC_WRITE, 0, CREATE_NEW);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(List("n*"), (Names{"NAME", "Name"})) << "masks ignore case all the same";
}

// Large directories are remembered; what is remembered must never be wrong.
TEST_F(HostName, LargeDirectoriesAreSearchedAsSmallOnesAre) {
  const auto lib = [&](const std::string& name) { return folder.Lib() + '\\' + name; };
  const auto make = [&](const std::string& name) {
    const OpenFile file(lib(name), GENERIC_WRITE, 0, CREATE_NEW);
    return file.IsOpen();
  };
  for (int i = 0; i < 600; ++i) ASSERT_TRUE(make("File" + std::to_string(i)));
  for (int i = 0; i < 600; i += 7) {
    EXPECT_FALSE(make("fILE" + std::to_string(i))) << i;
    EXPECT_TRUE(Opens("FILE" + std::to_string(i))) << i;
  }
  EXPECT_TRUE(DeleteFileA(lib("FILE599").c_str()));
  EXPECT_FALSE(Opens("file599"));
  EXPECT_TRUE(MoveFileExA(lib("file598").c_str(), lib("Moved").c_str(), 0));
  EXPECT_FALSE(Opens("FILE598"));
  EXPECT_TRUE(Opens("MOVED"));
  EXPECT_TRUE(CreateDirectoryA(lib("Sub").c_str(), nullptr));
  EXPECT_FALSE(CreateDirectoryA(lib("SUB").c_str(), nullptr));
  EXPECT_TRUE(RemoveDirectoryA(lib("SUB").c_str()));
  EXPECT_FALSE(Opens("none"));
  folder.WriteFile("Foreign", "made by another program");
  ::usleep(20'000);  // time stamps of the host go in steps
  EXPECT_TRUE(Opens("FOREIGN"));
  folder.WriteFile("double", "x");
  folder.WriteFile("DOUBLE", "x");
  ::usleep(20'000);
  EXPECT_TRUE(Opens("Double"));
  EXPECT_TRUE(DeleteFileA(lib("DOUBLE").c_str()));
  EXPECT_TRUE(Opens("Double")) << "the other one is left";
}

TEST_F(HostName, LongPathsAndNamesWork) {
  const std::string name(255, 'n');
  std::string path = folder.Lib();
  for (int i = 0; i < 8; ++i) {
    path += '\\' + name;
    ASSERT_TRUE(CreateDirectoryA(path.c_str(), nullptr)) << GetLastError();
  }
  const OpenFile file(path + "\\f", GENERIC_WRITE, 0, CREATE_NEW);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(Search(path.substr(0, path.size() - 1) + "*"), Names{name});
  EXPECT_FAILS_WITH(ERROR_FILENAME_EXCED_RANGE,
                    !CreateDirectoryA((folder.Lib() + '\\' + name + 'n').c_str(), nullptr));
}

TEST_F(HostName, HostAndLibraryPathsCorrespond) {
  std::string library = "untouched";
  std::string host;
  EXPECT_TRUE(KzHostToLibraryPath("/日本/表.txt", library));
  EXPECT_EQ(library, "C:\\\x93\xFA\x96{\\\x95\x5C.txt");
  EXPECT_TRUE(KzLibraryToHostPath(library.c_str(), host));
  EXPECT_EQ(host, "/日本/表.txt");
  EXPECT_TRUE(KzHostToLibraryPath("../a//b/", library));
  EXPECT_EQ(library, "..\\a\\b\\");
  EXPECT_TRUE(KzHostToLibraryPath("/", library));
  EXPECT_EQ(library, "C:\\");
  EXPECT_TRUE(KzLibraryToHostPath("a\\.\\b", host));
  EXPECT_EQ(host, "a/b");
  folder.WriteFile("Spelt", "x");
  EXPECT_TRUE(KzLibraryToHostPath((folder.Lib() + "\\sPELT").c_str(), host));
  EXPECT_EQ(host, folder.Path("Spelt"));
  library = "untouched";
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !KzHostToLibraryPath("/a/😀", library));
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !KzHostToLibraryPath("a:b", library));
  EXPECT_EQ(library, "untouched");
}

TEST_F(HostName, OnlyTwoCodePagesCanBeActive) {
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, !KzSetActiveCodePage(1252));
  EXPECT_EQ(GetACP(), 932U);
}

}  // namespace
}  // namespace kozor::test
