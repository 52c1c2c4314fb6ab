// AttributeTest.cpp - how attributes are kept on the host, and how links and special files appear.
#include <sys/stat.h>
#include <sys/xattr.h>

#include "tests/platform/Contract.h"
#include "tests/support/FailCall.h"

namespace kozor::test {
namespace {

constexpr const char* kStored = "user.DOSATTRIB";

class PlatformAttribute : public ContractTest {
 protected:
  void SetUp() override {
    host.WriteFile("f", "x");
    if (!Store("f", "0x20")) GTEST_SKIP() << "no extended attributes on " << host.Path();
    ::removexattr(host.Path("f").c_str(), kStored);
  }

  std::string Stored(const char* name) const {
    char text[64];
    const ssize_t length = ::getxattr(host.Path(name).c_str(), kStored, text, sizeof text);
    return length < 0 ? "" : std::string(text, static_cast<std::size_t>(length));
  }

  bool Store(const char* name, const std::string& text) const {
    return ::setxattr(host.Path(name).c_str(), kStored, text.data(), text.size(), 0) == 0;
  }

  mode_t Mode(const char* name) const {
    return static_cast<mode_t>(std::filesystem::status(host.Path(name)).permissions());
  }
  void SetMode(const char* name, mode_t mode) const {
    ASSERT_EQ(::chmod(host.Path(name).c_str(), mode), 0);
  }
};

TEST_F(PlatformAttribute, AreTextInAnExtendedAttribute) {
  EXPECT_TRUE(folder.SetAttributes("f", 0x22));
  EXPECT_EQ(Stored("f"), "0x22");
  EXPECT_TRUE(folder.SetAttributes("f", FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(Stored("f"), "0x0");
  EXPECT_TRUE(folder.SetAttributes("f", 0x20));
  EXPECT_EQ(Stored("f"), "") << "what a file has anyway isn't stored";
  for (const auto& [text, attributes] : {std::pair<std::string, DWORD>{"0x26", 0x26},
                                         {std::string("0x22\0more", 9), 0x22},
                                         {"0x30", 0x20},
                                         {"rubbish", 0x20},
                                         {"0x", 0x20}}) {
    EXPECT_TRUE(Store("f", text));
    EXPECT_EQ(folder.Attributes("f"), attributes) << text;
  }
}

TEST_F(PlatformAttribute, ReadOnlyIsInTheModeBitsTooButOfDirectories) {
  SetMode("f", 0664);
  const mode_t mask = ::umask(002);
  EXPECT_TRUE(folder.SetAttributes("f", 0x21));
  EXPECT_EQ(Mode("f"), 0444U);
  EXPECT_EQ(Stored("f"), "0x21");
  EXPECT_TRUE(folder.SetAttributes("f", 0x20));
  EXPECT_EQ(Mode("f"), 0664U);
  SetMode("f", 0440);
  EXPECT_EQ(folder.Attributes("f"), 0x21U);
  EXPECT_TRUE(folder.SetAttributes("f", 0x20));
  EXPECT_EQ(Mode("f"), 0660U);
  ::umask(mask);

  std::filesystem::create_directory(host.Path("d"));
  const mode_t mode = Mode("d");
  EXPECT_TRUE(folder.SetAttributes("d", FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Mode("d"), mode);
  EXPECT_EQ(folder.Attributes("d"), 0x11U);
}

TEST_F(PlatformAttribute, NamesWithADotAreHiddenUnlessSaidOtherwise) {
  host.WriteFile(".f", "x");
  EXPECT_EQ(folder.Attributes(".f"), 0x22U);
  EXPECT_TRUE(folder.SetAttributes(".f", 0x20));
  EXPECT_EQ(folder.Attributes(".f"), 0x20U);
  EXPECT_TRUE(folder.SetAttributes(".f", 0x22));
  EXPECT_EQ(Stored(".f"), "");
  EXPECT_TRUE(Opens(folder.Path(".f"), GENERIC_WRITE, CREATE_ALWAYS))
      << "a dot alone doesn't keep a file from being replaced";
}

TEST_F(PlatformAttribute, AFileSystemWithoutThemStillTakesReadOnly) {
  const FailCall<&posix::SystemCalls::setxattr> noSetting(1, EOPNOTSUPP, Failing::Always);
  const FailCall<&posix::SystemCalls::getxattr> noGetting(1, EOPNOTSUPP, Failing::Always);
  EXPECT_TRUE(folder.SetAttributes("f", 0x23));
  EXPECT_EQ(folder.Attributes("f"), 0x21U);
  EXPECT_TRUE(folder.SetAttributes("f", 0x02));
  EXPECT_EQ(folder.Attributes("f"), 0x20U);
}

TEST_F(PlatformAttribute, StoringThatFailsChangesNothing) {
  SetMode("f", 0444);
  const FailCall<&posix::SystemCalls::setxattr> failing(1, ENOSPC);
  EXPECT_FAILS_WITH(ERROR_DISK_FULL, !folder.SetAttributes("f", 0x22));
  EXPECT_EQ(Mode("f"), 0444U);
}

class PlatformLink : public PlatformAttribute {
 protected:
  void Make(const char* target, const char* name) const {
    std::filesystem::create_symlink(target, host.Path(name));
  }
};

TEST_F(PlatformLink, IsWhatItPointsToAndGoesAlone) {
  host.WriteFile("d/inside", "x");
  Make("f", "lf");
  Make("d", "ld");
  EXPECT_EQ(folder.Attributes("lf"), 0x420U);
  EXPECT_EQ(folder.Attributes("ld"), 0x410U);
  EXPECT_EQ(folder.Attributes("ld\\inside"), 0x20U);
  EXPECT_EQ(Search(folder.Path("ld/i*")), Names{"inside"});
  WIN32_FIND_DATAA data;
  FindClose(FindFirstFileA(folder.Path("lf").c_str(), &data));
  EXPECT_EQ(data.nFileSizeLow, 1U);

  ASSERT_TRUE(folder.SetAttributes("f", 0x21));
  EXPECT_TRUE(folder.Delete("lf"));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Delete("ld"));
  EXPECT_TRUE(folder.DropDirectory("ld"));
  EXPECT_EQ(host.List(), (Names{"d/", "d/inside", "f"}));
}

TEST_F(PlatformLink, ToNothingIsListedButNotOpened) {
  Make("nowhere", "l");
  Make("loop", "loop");
  EXPECT_EQ(folder.Attributes("l"), 0x420U);
  EXPECT_EQ(Search(folder.Path("l")), Names{"l"});
  for (const DWORD disposition : {CREATE_NEW, CREATE_ALWAYS, OPEN_ALWAYS, OPEN_EXISTING}) {
    EXPECT_FALSE(Opens(folder.Path("l"), GENERIC_WRITE, disposition));
    EXPECT_FALSE(Opens(folder.Path("loop"), GENERIC_WRITE, disposition));
  }
  EXPECT_FALSE(host.Exists("nowhere")) << "nothing is made where a link points";
  EXPECT_TRUE(folder.Delete("l"));
}

TEST_F(PlatformLink, SpecialFilesNeitherHangNorOpen) {
  ASSERT_EQ(::mkfifo(host.Path("fifo").c_str(), 0666), 0);
  Make("fifo", "link");
  Make("/dev/zero", "zero");
  for (const char* name : {"fifo", "link", "zero"}) {
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
      EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !Opens(folder.Path(name), access, OPEN_ALWAYS));
    }
    EXPECT_TRUE(folder.Delete(name)) << name;
  }
}

}  // namespace
}  // namespace kozor::test
