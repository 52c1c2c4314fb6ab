// AttributeTest.cpp - where attributes are kept on the host, and what links and special files look
// like.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>

#include "tests/platform/Contract.h"
#include "tests/support/FailCall.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

constexpr const char* kStored = "user.DOSATTRIB";

class Attribute : public ::testing::Test {
 protected:
  void SetUp() override {
    folder.WriteFile("f", "x");
    const bool kept = ::setxattr(folder.Path("f").c_str(), kStored, "0x20", 4, 0) == 0;
    if (!kept) GTEST_SKIP() << "no extended attributes on " << folder.Path();
    ::removexattr(folder.Path("f").c_str(), kStored);
  }

  std::string Stored(const char* name) const {
    char text[64];
    const ssize_t length = ::getxattr(folder.Path(name).c_str(), kStored, text, sizeof text);
    return length < 0 ? "" : std::string(text, static_cast<std::size_t>(length));
  }

  void Store(const char* name, const std::string& text) const {
    ASSERT_EQ(::setxattr(folder.Path(name).c_str(), kStored, text.data(), text.size(), 0), 0);
  }

  mode_t Mode(const char* name) const {
    struct stat facts {};
    EXPECT_EQ(::stat(folder.Path(name).c_str(), &facts), 0);
    return facts.st_mode & 0777;
  }

  DWORD Get(const std::string& name) const {
    return GetFileAttributesA((folder.Lib() + '\\' + name).c_str());
  }
  bool Set(const std::string& name, DWORD attributes) const {
    return SetFileAttributesA((folder.Lib() + '\\' + name).c_str(), attributes) != FALSE;
  }

  TestFolder folder;
};

TEST_F(Attribute, OfAReplacedFileTellWhoMayReadTheNewOne) {
  folder.WriteFile("new", "y");
  ASSERT_EQ(::chmod(folder.Path("f").c_str(), 0600), 0);
  ASSERT_EQ(::chmod(folder.Path("new").c_str(), 0644), 0);
  ASSERT_TRUE(
      MoveFileExA(folder.Lib("new").c_str(), folder.Lib("f").c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(Mode("f") & 0777U, 0600U);
}

TEST_F(Attribute, AreTextInAnExtendedAttribute) {
  EXPECT_TRUE(Set("f", 0x22));
  EXPECT_EQ(Stored("f"), "0x22");
  EXPECT_TRUE(Set("f", FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(Stored("f"), "0x0");
  EXPECT_TRUE(Set("f", 0x20));
  EXPECT_EQ(Stored("f"), "") << "what a file has anyway isn't stored";
  struct Row {
    std::string text;
    DWORD attributes;
  };
  for (const Row& row : {Row{"0x26", 0x26},
                         {std::string("0x22\0more", 9), 0x22},
                         {"0x30", 0x20},
                         {"rubbish", 0x20},
                         {"0x", 0x20},
                         {"", 0x20}}) {
    Store("f", row.text);
    EXPECT_EQ(Get("f"), row.attributes) << row.text;
  }
}

TEST_F(Attribute, ReadOnlyIsInTheModeBitsToo) {
  ASSERT_EQ(::chmod(folder.Path("f").c_str(), 0664), 0);
  const mode_t mask = ::umask(002);
  EXPECT_TRUE(Set("f", 0x21));
  EXPECT_EQ(Mode("f"), 0444U);
  EXPECT_EQ(Stored("f"), "0x21");
  EXPECT_TRUE(Set("f", 0x20));
  EXPECT_EQ(Mode("f"), 0664U);
  ASSERT_EQ(::chmod(folder.Path("f").c_str(), 0440), 0);
  EXPECT_EQ(Get("f"), 0x21U);
  EXPECT_TRUE(Set("f", 0x20));
  EXPECT_EQ(Mode("f"), 0660U);
  ::umask(mask);
}

TEST_F(Attribute, AReadOnlyDirectoryKeepsItsModeBits) {
  std::filesystem::create_directory(folder.Path("d"));
  const mode_t mode = Mode("d");
  EXPECT_TRUE(Set("d", FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Mode("d"), mode);
  EXPECT_EQ(Get("d"), 0x11U);
}

TEST_F(Attribute, NamesWithADotAreHiddenUnlessSaidOtherwise) {
  folder.WriteFile(".f", "x");
  std::filesystem::create_directory(folder.Path(".d"));
  EXPECT_EQ(Get(".f"), 0x22U);
  EXPECT_EQ(Get(".d"), 0x12U);
  EXPECT_TRUE(Set(".f", 0x20));
  EXPECT_EQ(Get(".f"), 0x20U);
  EXPECT_TRUE(Set(".f", 0x22));
  EXPECT_EQ(Stored(".f"), "");
  const OpenFile file(folder.Lib() + "\\.f", GENERIC_WRITE, 0, CREATE_ALWAYS);
  EXPECT_TRUE(file.IsOpen()) << "a dot alone doesn't keep a file from being replaced";
}

TEST_F(Attribute, AFileSystemWithoutThemStillTakesReadOnly) {
  const FailCall<&posix::SystemCalls::setxattr> noSetting(1, EOPNOTSUPP, Failing::Always);
  const FailCall<&posix::SystemCalls::getxattr> noGetting(1, EOPNOTSUPP, Failing::Always);
  EXPECT_TRUE(Set("f", 0x23));
  EXPECT_EQ(Get("f"), 0x21U);
  EXPECT_TRUE(Set("f", 0x02));
  EXPECT_EQ(Get("f"), 0x20U);
}

TEST_F(Attribute, StoringThatFailsChangesNothing) {
  const mode_t mode = Mode("f");
  const FailCall<&posix::SystemCalls::setxattr> failing(1, ENOSPC);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, !Set("f", 0x23));
  EXPECT_EQ(Mode("f"), mode);
}

class Link : public Attribute {
 protected:
  void Make(const char* target, const char* name) const {
    std::filesystem::create_symlink(target, folder.Path(name));
  }
  std::string Lib(const char* name) const { return folder.Lib() + '\\' + name; }
};

TEST_F(Link, IsWhatItPointsTo) {
  folder.WriteFile("d/inside", "x");
  Make("f", "lf");
  Make("d", "ld");
  EXPECT_EQ(Get("lf"), 0x420U);
  EXPECT_EQ(Get("ld"), 0x410U);
  EXPECT_EQ(Get("ld\\inside"), 0x20U);
  EXPECT_EQ(Search(Lib("ld\\i*")), std::vector<std::string>{"inside"});
  WIN32_FIND_DATAA data;
  FindClose(FindFirstFileA(Lib("lf").c_str(), &data));
  EXPECT_EQ(data.nFileSizeLow, 1U);
}

TEST_F(Link, GoesAloneWhenRemoved) {
  folder.WriteFile("d/inside", "x");
  Make("f", "lf");
  Make("d", "ld");
  ASSERT_TRUE(Set("f", 0x21));
  EXPECT_TRUE(DeleteFileA(Lib("lf").c_str()));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !DeleteFileA(Lib("ld").c_str()));
  EXPECT_TRUE(RemoveDirectoryA(Lib("ld").c_str()));
  EXPECT_EQ(folder.List(), (std::vector<std::string>{"d/", "d/inside", "f"}));
}

TEST_F(Link, ToNothingIsListedButNotOpened) {
  Make("nowhere", "l");
  EXPECT_EQ(Get("l"), 0x420U);
  EXPECT_EQ(Search(Lib("l*")), std::vector<std::string>{"l"});
  for (const DWORD disposition : {CREATE_NEW, CREATE_ALWAYS, OPEN_ALWAYS, OPEN_EXISTING}) {
    const OpenFile file(Lib("l"), GENERIC_WRITE, 0, disposition);
    EXPECT_FALSE(file.IsOpen()) << disposition;
  }
  EXPECT_FALSE(folder.Exists("nowhere")) << "nothing is made where a link points";
  EXPECT_TRUE(DeleteFileA(Lib("l").c_str()));
}

TEST_F(Link, ThatLeadsToItselfEndsAtOnce) {
  Make("loop", "loop");
  Make(".", "here");
  const OpenFile file(Lib("loop"), GENERIC_READ, 0, OPEN_EXISTING);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(Get("here\\here\\here\\f"), 0x20U);
}

TEST_F(Link, SpecialFilesNeitherHangNorOpen) {
  ASSERT_EQ(::mkfifo(folder.Path("fifo").c_str(), 0666), 0);
  Make("fifo", "link");
  Make("/dev/zero", "zero");
  for (const char* name : {"fifo", "link", "zero"}) {
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
      EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                        CreateFileA(Lib(name).c_str(), access, 0, nullptr, OPEN_ALWAYS, 0,
                                    nullptr) == INVALID_HANDLE_VALUE);
    }
    EXPECT_TRUE(DeleteFileA(Lib(name).c_str())) << name;
  }
}

}  // namespace
}  // namespace kozor::test
