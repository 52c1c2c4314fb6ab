// NameContractTest.cpp - making, moving, removing and describing files and directories by name.
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

class NameContract : public ::testing::Test {
 protected:
  WinFolder folder;
};

TEST_F(NameContract, CreateDirectoryMakesOneLevel) {
  folder.Write("f", "x");
  EXPECT_TRUE(CreateDirectoryA(folder.Path("d").c_str(), nullptr));
  EXPECT_TRUE(CreateDirectoryA(folder.Path("d\\e\\").c_str(), nullptr));
  struct Row {
    std::string path;
    DWORD error;
  };
  const Row rows[] = {
      {folder.Path("d"), ERROR_ALREADY_EXISTS},
      {folder.Path("D\\E"), ERROR_ALREADY_EXISTS},
      {folder.Path("f"), ERROR_ALREADY_EXISTS},
      {folder.Path("a\\b"), ERROR_PATH_NOT_FOUND},
      {folder.Path("f\\b"), ERROR_PATH_NOT_FOUND},
      {folder.Path("a|b"), ERROR_INVALID_NAME},
      {"", ERROR_PATH_NOT_FOUND},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_FAILS_WITH(row.error, !CreateDirectoryA(row.path.c_str(), nullptr));
  }
}

TEST_F(NameContract, RemoveDirectoryTakesEmptyDirectoriesOnly) {
  folder.Write("f", "x");
  folder.MakeDirectory("d");
  folder.MakeDirectory("d\\e");
  EXPECT_FAILS_WITH(ERROR_DIR_NOT_EMPTY, !RemoveDirectoryA(folder.Path("d").c_str()));
  EXPECT_FAILS_WITH(ERROR_DIRECTORY, !RemoveDirectoryA(folder.Path("f").c_str()));
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !RemoveDirectoryA(folder.Path("none").c_str()));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !RemoveDirectoryA(folder.Path("none\\x").c_str()));
  EXPECT_TRUE(RemoveDirectoryA(folder.Path("d\\e\\").c_str()));
  if (!UnderWine()) {
    ASSERT_TRUE(SetFileAttributesA(folder.Path("d").c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !RemoveDirectoryA(folder.Path("d").c_str()));
    ASSERT_TRUE(SetFileAttributesA(folder.Path("d").c_str(), FILE_ATTRIBUTE_NORMAL));
  }
  EXPECT_TRUE(RemoveDirectoryA(folder.Path("d").c_str()));
  EXPECT_FALSE(folder.Exists("d"));
}

TEST_F(NameContract, DeleteFileTakesFilesOnly) {
  folder.MakeDirectory("d");
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !DeleteFileA(folder.Path("d").c_str()));
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !DeleteFileA(folder.Path("none").c_str()));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !DeleteFileA(folder.Path("none\\x").c_str()));
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME, !DeleteFileA(folder.Path("*.txt").c_str()));
  folder.Write("f", "x");
  EXPECT_TRUE(DeleteFileA(folder.Path("F").c_str())) << "case doesn't matter";
  EXPECT_FALSE(folder.Exists("f"));
}

TEST_F(NameContract, MoveGivesAnotherNameInOneStep) {
  folder.Write("f", "f");
  folder.Write("g", "g");
  folder.MakeDirectory("d");
  const std::string f = folder.Path("f");
  const std::string g = folder.Path("g");
  EXPECT_FAILS_WITH(ERROR_ALREADY_EXISTS, !MoveFileExA(f.c_str(), g.c_str(), 0));
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !MoveFileExA(folder.Path("none").c_str(), g.c_str(), 0));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND, !MoveFileExA(f.c_str(), folder.Path("x\\y").c_str(), 0));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                    !MoveFileExA(f.c_str(), folder.Path("d").c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("f") + folder.Read("g"), "fg");

  EXPECT_TRUE(
      MoveFileExA(f.c_str(), g.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
  EXPECT_FALSE(folder.Exists("f"));
  EXPECT_EQ(folder.Read("g"), "f");
  EXPECT_TRUE(MoveFileExA(g.c_str(), folder.Path("d\\h").c_str(), MOVEFILE_WRITE_THROUGH));
  EXPECT_EQ(folder.Read("d\\h"), "f");
  EXPECT_TRUE(MoveFileExA(folder.Path("d").c_str(), folder.Path("e").c_str(), 0));
  EXPECT_EQ(folder.Read("e\\h"), "f");
}

TEST_F(NameContract, MoveChangesTheSpellingOfAName) {
  if (UnderWine()) GTEST_SKIP() << "Wine keeps the old spelling";
  folder.Write("Name", "x");
  EXPECT_TRUE(MoveFileExA(folder.Path("name").c_str(), folder.Path("NAME").c_str(), 0));
  EXPECT_EQ(Search(folder.Path("name")), std::vector<std::string>{"NAME"});
}

TEST_F(NameContract, AttributesGoThereAndComeBack) {
  if (UnderWine()) GTEST_SKIP() << "Wine's files always have the archive attribute";
  folder.Write("f", "x");
  folder.MakeDirectory("d");
  const std::string f = folder.Path("f");
  const std::string d = folder.Path("d");
  EXPECT_EQ(GetFileAttributesA(f.c_str()), DWORD{FILE_ATTRIBUTE_ARCHIVE});
  EXPECT_EQ(GetFileAttributesA(d.c_str()), DWORD{FILE_ATTRIBUTE_DIRECTORY});
  EXPECT_EQ(GetFileAttributesA((d + '\\').c_str()), DWORD{FILE_ATTRIBUTE_DIRECTORY});
  for (const DWORD attributes : {0x01U, 0x02U, 0x04U, 0x20U, 0x27U, 0x26U, 0x100U}) {
    EXPECT_TRUE(SetFileAttributesA(f.c_str(), attributes));
    EXPECT_EQ(GetFileAttributesA(f.c_str()), attributes);
  }
  EXPECT_TRUE(SetFileAttributesA(f.c_str(), FILE_ATTRIBUTE_NORMAL));
  EXPECT_EQ(GetFileAttributesA(f.c_str()), DWORD{FILE_ATTRIBUTE_NORMAL});
  EXPECT_TRUE(SetFileAttributesA(f.c_str(), FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(GetFileAttributesA(f.c_str()), DWORD{FILE_ATTRIBUTE_HIDDEN});
  EXPECT_TRUE(SetFileAttributesA(d.c_str(), 0x17));
  EXPECT_EQ(GetFileAttributesA(d.c_str()), 0x17U);
  folder.Write("d\\inside", "x");
}

TEST_F(NameContract, AttributesOfWhatIsNotThere) {
  folder.Write("f", "x");
  WIN32_FILE_ATTRIBUTE_DATA data;
  const std::string none = folder.Path("none");
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND,
                    GetFileAttributesA(none.c_str()) == INVALID_FILE_ATTRIBUTES);
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND, !SetFileAttributesA(none.c_str(), 0x20));
  EXPECT_FAILS_WITH(ERROR_PATH_NOT_FOUND,
                    GetFileAttributesA((none + "\\x").c_str()) == INVALID_FILE_ATTRIBUTES);
  EXPECT_FAILS_WITH(ERROR_INVALID_NAME,
                    GetFileAttributesA(folder.Path("f?").c_str()) == INVALID_FILE_ATTRIBUTES);
  EXPECT_FAILS_WITH(ERROR_FILE_NOT_FOUND,
                    !GetFileAttributesExA(none.c_str(), GetFileExInfoStandard, &data));
  ASSERT_TRUE(GetFileAttributesExA(folder.Path("f").c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.nFileSizeLow, 1U);
  EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_ARCHIVE});
}

TEST_F(NameContract, PathsAreWorkedOutInTheText) {
  folder.MakeDirectory("d");
  folder.Write("f", "x");
  const std::string forward = [&] {
    std::string path = folder.Path("d/../F");
    for (char& c : path) c = c == '\\' ? '/' : c;
    return path;
  }();
  for (const std::string& path :
       {folder.Path("d\\..\\f"), folder.Path("none\\..\\f"), folder.Path(".\\d\\.\\..\\f"),
        folder.Path("d\\\\..\\f"), forward}) {
    EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << path;
  }
  const std::string drive = folder.Path().substr(0, 2);
  const std::string above = drive + "\\..\\..\\.." + folder.Path("f").substr(2);
  EXPECT_NE(GetFileAttributesA(above.c_str()), INVALID_FILE_ATTRIBUTES) << above;
}

TEST_F(NameContract, FullPathNames) {
  char current[1024];
  ASSERT_GT(GetCurrentDirectoryA(sizeof current, current), 2U);
  const std::string here = current;
  const std::string drive = here.substr(0, 2);
  const std::string separator = here.ends_with('\\') ? "" : "\\";
  struct Row {
    std::string name;
    std::string full;
    std::string filePart;
  };
  const Row rows[] = {
      {"f.txt", here + separator + "f.txt", "f.txt"},
      {"a\\.\\b\\..\\c", here + separator + "a\\c", "c"},
      {"a\\b\\", here + separator + "a\\b\\", ""},
      {"*.txt", here + separator + "*.txt", "*.txt"},
      {"\\x/y", drive + "\\x\\y", "y"},
      {drive + "\\..\\x", drive + "\\x", "x"},
      {drive + "\\", drive + "\\", ""},
      {"\\\\srv\\share\\..\\x\\y", "\\\\srv\\share\\x\\y", "y"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    char buffer[1024];
    LPSTR filePart = nullptr;
    const DWORD length = GetFullPathNameA(row.name.c_str(), sizeof buffer, buffer, &filePart);
    EXPECT_EQ(std::string(buffer, length), row.full);
    EXPECT_EQ(filePart == nullptr ? "" : filePart, row.filePart);
    EXPECT_EQ(GetFullPathNameA(row.name.c_str(), 3, buffer, nullptr), row.full.size() + 1);
  }
}

TEST_F(NameContract, TemporaryNamesAreMadeOnceEach) {
  char first[MAX_PATH];
  char second[MAX_PATH];
  const UINT number = GetTempFileNameA(folder.Path().c_str(), "prefix", 0, first);
  ASSERT_NE(number, 0U);
  ASSERT_NE(GetTempFileNameA(folder.Path().c_str(), "prefix", 0, second), 0U);
  EXPECT_STRNE(first, second);
  EXPECT_EQ(std::string(first).substr(0, folder.Path().size() + 4), folder.Path("pre"));
  EXPECT_EQ(Search(folder.Path("pre*.tmp")).size(), 2U);
  EXPECT_EQ(GetTempFileNameA(folder.Path().c_str(), "x", 0x1A2, first), 0x1A2U);
  EXPECT_FALSE(folder.Exists("x1A2.tmp")) << "a given number makes no file";
  EXPECT_FAILS_WITH(ERROR_DIRECTORY,
                    GetTempFileNameA(folder.Path("none").c_str(), "x", 0, first) == 0);
}

}  // namespace
}  // namespace kozor::test
