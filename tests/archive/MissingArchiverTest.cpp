// MissingArchiverTest.cpp - a machine without the archiver, or with one that lacks an entry point.
#include <gtest/gtest.h>

#include "Selection.h"
#include "ZorArchive.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

class NoReport : public ZorArchive {
 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    ADD_FAILURE() << "a report in phase " << param.phase;
    return 0;
  }
};

// All operations that need the archiver, on an existing archive.
void ExpectNoneWorks() {
  TestFolder folder;
  folder.WriteFile("a.lzh", "old");
  const std::string path = folder.Lib("a.lzh");
  const ZorFind find = Selection(folder.Lib(), {"*.*"});
  NoReport archive;
  unsigned char buffer[4];
  const auto expectUnavailable = [&](int result) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(archive.GetError(), ZorErrorEngineUnavailable);
  };
  expectUnavailable(archive.IsEnabled());
  expectUnavailable(archive.IsArchive(path.c_str()));
  expectUnavailable(archive.Compress(find, path.c_str(), 0, 0));
  expectUnavailable(archive.CompressMem(path.c_str(), "m", buffer, sizeof buffer, 0));
  expectUnavailable(archive.CompressDir(folder.Lib().c_str(), path.c_str(), 0));
  expectUnavailable(archive.Extract(path.c_str(), folder.Lib("out").c_str(), nullptr));
  expectUnavailable(archive.ExtractMem(path.c_str(), "m", buffer, sizeof buffer));
  expectUnavailable(archive.GetFileInfo(path.c_str(), "m", nullptr, nullptr, nullptr));
  expectUnavailable(archive.Delete(find, path.c_str()));
  EXPECT_EQ(folder.List(), std::vector<std::string>{"a.lzh"});
}

TEST(ArchiveMissingArchiver, MakesEveryArchiveOperationFailAndChangesNothing) {
  ExpectNoneWorks();
  // Nor does it hide that the archive is missing.
  ZorArchive archive;
  EXPECT_EQ(archive.GetFileInfo("C:\\none\\a.lzh", "m", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorArchiveNotFound);
}

TEST(ArchiveMissingArchiver, IsWhatAnIncompleteOneCountsAs) {
  const auto folder = std::filesystem::absolute(INCOMPLETE_ARCHIVER_FOLDER);  // with a drive
  ASSERT_NE(SetDllDirectoryA(LibraryPathOf(folder).c_str()), 0);
  HMODULE module = LoadLibraryA("UNLHA32.DLL");
  ASSERT_NE(module, nullptr);
  EXPECT_NE(GetProcAddress(module, "UnlhaExtractMem"), nullptr);
  FreeLibrary(module);
  ExpectNoneWorks();
  SetDllDirectoryA(nullptr);
}

}  // namespace
}  // namespace kozor::test
