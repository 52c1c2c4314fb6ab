// NameContractTest.cpp - creating, moving, removing and describing files and directories by name.
#include <utility>

#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

using PlatformNameContract = ContractTest;

TEST_F(PlatformNameContract, EveryCallTellsWhatIsMissing) {
  folder.Write("f", "x");
  const std::pair<const char*, DWORD> rows[] = {{"none", ERROR_FILE_NOT_FOUND},
                                                {"none\\x", ERROR_PATH_NOT_FOUND},
                                                {"f\\x", ERROR_PATH_NOT_FOUND},
                                                {"f?", ERROR_INVALID_NAME},
                                                {"*.txt", ERROR_INVALID_NAME}};
  for (const auto& [name, error] : rows) {
    SCOPED_TRACE(name);
    WIN32_FILE_ATTRIBUTE_DATA data;
    EXPECT_FAILS_WITH(error, !Opens(folder.Path(name)));
    EXPECT_FAILS_WITH(error, !folder.Exists(name));
    EXPECT_FAILS_WITH(
        error, !GetFileAttributesExA(folder.Path(name).c_str(), GetFileExInfoStandard, &data));
    EXPECT_FAILS_WITH(error, !folder.SetAttributes(name, FILE_ATTRIBUTE_ARCHIVE));
    EXPECT_FAILS_WITH(error, !folder.Delete(name));
    EXPECT_FAILS_WITH(error, !folder.DropDirectory(name));
    EXPECT_FAILS_WITH(error, !folder.Move(name, "g"));
  }
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !Opens(""));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !CreateDirectoryA("", nullptr));
}

TEST_F(PlatformNameContract, DirectoriesAreMadeOneLevelAtATimeAndRemovedEmpty) {
  folder.Write("f", "x");
  EXPECT_TRUE(folder.MakeDirectory("d"));
  EXPECT_TRUE(folder.MakeDirectory("d\\e\\"));
  const std::pair<const char*, DWORD> rows[] = {
      {"D\\e", ERROR_ALREADY_EXISTS}, {"f", ERROR_ALREADY_EXISTS}, {"a\\b", ERROR_PATH_NOT_FOUND},
      {"f\\b", ERROR_PATH_NOT_FOUND}, {"a|b", ERROR_INVALID_NAME},
  };
  for (const auto& [name, error] : rows) {
    SCOPED_TRACE(name);
    EXPECT_FAILS_WITH(error, !folder.MakeDirectory(name));
  }
  EXPECT_FAILS_WITH(ERROR_DIR_NOT_EMPTY, !folder.DropDirectory("d"));
  EXPECT_FAILS_WITH(ERROR_DIRECTORY, !folder.DropDirectory("f"));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Delete("d"));
  EXPECT_TRUE(folder.DropDirectory("d\\e\\"));
  if (!UnderWine()) {
    ASSERT_TRUE(folder.SetAttributes("d", FILE_ATTRIBUTE_READONLY));
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.DropDirectory("d"));
    ASSERT_TRUE(folder.SetAttributes("d", FILE_ATTRIBUTE_NORMAL));
  }
  EXPECT_TRUE(folder.DropDirectory("D"));
  EXPECT_FALSE(folder.Exists("d"));
}

TEST_F(PlatformNameContract, MoveGivesAnotherNameInOneStep) {
  folder.Write("f", "f");
  folder.Write("g", "g");
  folder.MakeDirectory("d");
  EXPECT_FAILS_WITH(ERROR_ALREADY_EXISTS, !folder.Move("f", "g"));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !folder.Move("f", "x\\y"));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !folder.Move("f", "d", MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("f") + folder.Read("g"), "fg");

  EXPECT_TRUE(folder.Move("f", "g", MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
  EXPECT_FALSE(folder.Exists("f"));
  EXPECT_EQ(folder.Read("g"), "f");
  EXPECT_TRUE(folder.Move("g", "d\\h", MOVEFILE_WRITE_THROUGH));
  EXPECT_TRUE(folder.Move("d", "e"));
  EXPECT_EQ(folder.Read("e\\h"), "f");
  if (UnderWine()) return;  // it keeps the old spelling
  EXPECT_TRUE(folder.Move("e\\h", "E\\H"));
  EXPECT_EQ(Search(folder.Path("e\\h")), Names{"H"});
}

TEST_F(PlatformNameContract, AttributesGoThereAndComeBack) {
  if (UnderWine()) GTEST_SKIP() << "Wine's files always have the archive attribute";
  folder.Write("f", "x");
  folder.MakeDirectory("d");
  EXPECT_EQ(folder.Attributes("f"), DWORD{FILE_ATTRIBUTE_ARCHIVE});
  EXPECT_EQ(folder.Attributes("d\\"), DWORD{FILE_ATTRIBUTE_DIRECTORY});
  for (const DWORD attributes : {0x01U, 0x02U, 0x04U, 0x20U, 0x27U, 0x26U, 0x100U, 0x80U}) {
    EXPECT_TRUE(folder.SetAttributes("f", attributes));
    EXPECT_EQ(folder.Attributes("f"), attributes);
  }
  EXPECT_TRUE(folder.SetAttributes("f", FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(folder.Attributes("f"), DWORD{FILE_ATTRIBUTE_HIDDEN});
  EXPECT_TRUE(folder.SetAttributes("d", 0x17));
  EXPECT_EQ(folder.Attributes("d"), 0x17U);
  folder.Write("d\\inside", "x");
}

TEST_F(PlatformNameContract, PathsAreWorkedOutInTheText) {
  folder.MakeDirectory("d");
  folder.Write("f", "x");
  for (const char* name : {"d\\..\\f", "none\\..\\f", ".\\d\\.\\..\\f", "d\\\\..\\f", "d/../F"}) {
    EXPECT_TRUE(folder.Exists(name)) << name;
  }
  const std::string drive = folder.Path().substr(0, 2);
  EXPECT_TRUE(Opens(drive + "\\..\\..\\.." + folder.Path("f").substr(2)));
}

}  // namespace
}  // namespace kozor::test
