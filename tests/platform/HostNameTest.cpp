// HostNameTest.cpp - host names in the library: code pages, forbidden characters, case.
#include <unistd.h>

#include <tuple>

#include "platform/win32/PosixAdmin.h"
#include "tests/platform/Contract.h"
#include "tests/support/CodePageScope.h"

namespace kozor::test {
namespace {

class PlatformHostName : public ContractTest {
 protected:
  Names List(const char* mask = "*") const { return SearchWithoutDots(folder.Path(mask)); }
  bool Opens(const std::string& name) const { return test::Opens(folder.Path(name)); }
  bool Make(const std::string& name) const {
    return test::Opens(folder.Path(name), GENERIC_WRITE, CREATE_NEW);
  }
};

TEST_F(PlatformHostName, ComesAndGoesInBothCodePages) {
  host.WriteFile("日本語.txt", "x");
  EXPECT_EQ(List(), Names{"\x93\xFA\x96{\x8C\xEA.txt"});
  EXPECT_TRUE(Opens("\x93\xFA\x96{\x8C\xEA.txt"));
  EXPECT_TRUE(folder.MakeDirectory("\x95\x5C\x83\x5C")) << "a trail byte 0x5C is no separator";
  EXPECT_TRUE(folder.MakeDirectory("\x95\x5C\x83\x5C\\\x95\x5C"));
  EXPECT_TRUE(host.Exists("表ソ/表"));

  const CodePageScope utf8(CP_UTF8);
  for (const char* name : {"é", "😀", "ไทย"}) {
    host.WriteFile(name, "x");
    EXPECT_TRUE(Opens(name)) << name;
  }
  EXPECT_EQ(List(), (Names{"é", "ไทย", "日本語.txt", "表ソ", "😀"}));
}

TEST_F(PlatformHostName, WhatCannotBeSaidIsListedButNamesNothing) {
  const std::tuple<UINT, const char*, const char*> rows[] = {
      {932, "a😀b", "a?b"},      {932, "ไทย.txt", "???.txt"},        {932, "a\xFF\xFE", "a??"},
      {932, "a\\b", "a?b"},     {932, "tab\there", "tab?here"},     {932, "<a>|\"*:", "?a?????"},
      {CP_UTF8, "a\xFF", "a?"}, {CP_UTF8, "new\nline", "new?line"},
  };
  for (const auto& [codePage, name, listed] : rows) {
    SCOPED_TRACE(listed);
    const CodePageScope page(codePage);
    host.WriteFile(name, "x");
    EXPECT_EQ(List(), Names{listed});
    EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !Opens(listed));
    EXPECT_EQ(::unlink(host.Path(name).c_str()), 0);
  }
  for (const char* name : {"a\x81", "a\x85\x40", "a\xFC\xFC"}) EXPECT_FALSE(Make(name));
  const CodePageScope utf8(CP_UTF8);
  for (const char* name : {"a\xFF", "\xC0\xAF", "\xED\xA0\x80"}) EXPECT_FALSE(Make(name));
}

TEST_F(PlatformHostName, OtherReadingsOfACharacterAreFoundAfterTheExactOne) {
  const char* const name = "a\x81\x60z";
  host.WriteFile("a〜z", "wave dash");
  EXPECT_EQ(List(), Names{name});
  EXPECT_TRUE(Opens(name));
  EXPECT_FALSE(Make(name)) << "spelt the same, as far as the code page can tell";
  EXPECT_EQ(KzSetCaseSensitive(1), 0);
  EXPECT_TRUE(Opens(name));
  EXPECT_EQ(KzSetCaseSensitive(0), 1);
  host.WriteFile("a～z", "full-width tilde");
  EXPECT_EQ(List(), (Names{"a?z", name})) << "only one can have the name";
}

TEST_F(PlatformHostName, IsFoundWithoutRegardToCaseTheExactSpellingFirst) {
  host.WriteFile("Dir/ReadMe.TXT", "x");
  EXPECT_TRUE(Opens("dir\\readme.txt"));
  EXPECT_FALSE(Opens("dir\\readme.tx"));
  EXPECT_TRUE(folder.MakeDirectory("DIR\\New")) << "the directory above is looked up";
  EXPECT_EQ(host.List(), (Names{"Dir/", "Dir/New/", "Dir/ReadMe.TXT"}));

  host.WriteFile("name", "lower");
  host.WriteFile("NAME", "upper");
  EXPECT_EQ(Search(folder.Path("name")), Names{"name"});
  EXPECT_EQ(List("n*"), (Names{"NAME", "name"}));
  EXPECT_TRUE(folder.Delete("name"));
  EXPECT_FALSE(host.Exists("name"));
  EXPECT_TRUE(Opens("name")) << "NAME is left";

  host.WriteFile("ＡｂΣжÉ", "x");
  const CodePageScope utf8(CP_UTF8);
  EXPECT_TRUE(Opens("ａＢσЖé"));
}

TEST_F(PlatformHostName, IsCreatedExactlyUnlessToldOtherwise) {
  const auto make = [&](const char* name, DWORD disposition) {
    return test::Opens(folder.Path(name), GENERIC_WRITE, disposition);
  };
  host.WriteFile("a", "lower");
  host.WriteFile("b", "b");
  EXPECT_TRUE(make("A", CREATE_ALWAYS));
  EXPECT_FAILS_WITH(ERROR_FILE_EXISTS, !make("A", CREATE_NEW));
  EXPECT_TRUE(make("B", OPEN_ALWAYS));
  EXPECT_TRUE(folder.MakeDirectory("d"));
  EXPECT_TRUE(folder.MakeDirectory("D"));
  EXPECT_FAILS_WITH(ERROR_ALREADY_EXISTS, !folder.MakeDirectory("D"));
  EXPECT_TRUE(folder.Move("b", "D\\x"));
  EXPECT_TRUE(folder.Move("a", "D\\X"));
  EXPECT_EQ(host.List(), (Names{"A", "B", "D/", "D/X", "D/x", "d/"}));
  EXPECT_EQ(ReadText(folder.Path("D\\X")), "lower");

  KzSetCaseSensitive(1);
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !Opens("D\\..\\b"));
  EXPECT_EQ(List("b*"), Names{"B"}) << "masks ignore case all the same";
  KzSetCaseSensitive(0);

  EXPECT_EQ(KzSetCaseBlindCreation(1), 0);
  EXPECT_FAILS_WITH(ERROR_FILE_EXISTS, !make("d\\..\\b", CREATE_NEW));
  EXPECT_FAILS_WITH(ERROR_ALREADY_EXISTS, !folder.Move("A", "b"));
  EXPECT_TRUE(folder.Move("A", "a")) << "respelt";
  EXPECT_EQ(KzSetCaseBlindCreation(0), 1);
  EXPECT_EQ(host.List(), (Names{"B", "D/", "D/X", "D/x", "a", "d/"}));
}

// Large directories are cached; the cache must never be wrong.
TEST_F(PlatformHostName, LargeDirectoriesAreSearchedAsSmallOnesAre) {
  for (int i = 0; i < 600; ++i) ASSERT_TRUE(Make("File" + std::to_string(i)));
  for (int i = 0; i < 600; i += 7) {
    EXPECT_FALSE(Make("File" + std::to_string(i))) << i;
    EXPECT_TRUE(Opens("FILE" + std::to_string(i))) << i;
  }
  EXPECT_TRUE(folder.Delete("FILE599"));
  EXPECT_FALSE(Opens("file599"));
  EXPECT_TRUE(folder.Move("file598", "Moved"));
  EXPECT_FALSE(Opens("FILE598"));
  EXPECT_TRUE(Opens("MOVED"));
  EXPECT_TRUE(folder.MakeDirectory("Sub"));
  EXPECT_FALSE(folder.MakeDirectory("Sub"));
  EXPECT_TRUE(folder.DropDirectory("SUB"));
  EXPECT_TRUE(folder.MakeDirectory("SUB"));
  host.WriteFile("Foreign", "made by another program");
  ::usleep(20'000);  // the host's time stamps have a coarse resolution
  EXPECT_TRUE(Opens("FOREIGN"));
  host.WriteFile("double", "x");
  host.WriteFile("DOUBLE", "x");
  ::usleep(20'000);
  EXPECT_TRUE(Opens("Double"));
  EXPECT_TRUE(folder.Delete("DOUBLE"));
  EXPECT_TRUE(Opens("Double")) << "the other one is left";
}

TEST_F(PlatformHostName, LongPathsAndNamesWork) {
  const std::string name(255, 'n');
  std::string path;
  for (int i = 0; i < 8; ++i) {
    path += (path.empty() ? "" : "\\") + name;
    ASSERT_TRUE(folder.MakeDirectory(path)) << GetLastError();
  }
  EXPECT_TRUE(Make(path + "\\f"));
  EXPECT_EQ(Search(folder.Path(path.substr(0, path.size() - 1) + "*")), Names{name});
  EXPECT_FAILS_WITH(ERROR_FILENAME_EXCED_RANGE, !folder.MakeDirectory(name + 'n'));
}

TEST_F(PlatformHostName, HostAndLibraryPathsCorrespond) {
  std::string library;
  std::string back;
  EXPECT_TRUE(KzHostToLibraryPath("/日本/表.txt", library));
  EXPECT_EQ(library, "C:\\\x93\xFA\x96{\\\x95\x5C.txt");
  EXPECT_TRUE(KzLibraryToHostPath(library.c_str(), back));
  EXPECT_EQ(back, "/日本/表.txt");
  EXPECT_TRUE(KzHostToLibraryPath("/", library));
  EXPECT_EQ(library, "C:\\");
  EXPECT_TRUE(KzHostToLibraryPath("../a//b/", library));
  EXPECT_EQ(library, "..\\a\\b\\");
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !KzHostToLibraryPath("/a/😀", library));
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !KzHostToLibraryPath("a:b", library));
  EXPECT_EQ(library, "..\\a\\b\\") << "a failure leaves it alone";
  EXPECT_TRUE(KzLibraryToHostPath("a\\.\\b", back));
  EXPECT_EQ(back, "a/b");
  host.WriteFile("Spelt", "x");
  EXPECT_TRUE(KzLibraryToHostPath(folder.Path("sPELT").c_str(), back));
  EXPECT_EQ(back, host.Path("Spelt"));
}

}  // namespace
}  // namespace kozor::test
