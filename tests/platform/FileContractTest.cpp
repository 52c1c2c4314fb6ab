// FileContractTest.cpp - opening, reading, writing and measuring files.
#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE Open(const std::string& path, DWORD access, DWORD disposition,
            DWORD flags = FILE_ATTRIBUTE_NORMAL) {
  return CreateFileA(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition, flags, nullptr);
}

class FileContract : public ::testing::Test {
 protected:
  WinFolder folder;
};

TEST_F(FileContract, DispositionsDecideByWhetherTheFileExists) {
  struct Row {
    DWORD disposition;
    bool exists;
    DWORD error;  // of the call, 0 for success
    bool opens;
    const char* contents;
  };
  const Row rows[] = {
      {CREATE_NEW, false, ERROR_SUCCESS, true, ""},
      {CREATE_NEW, true, ERROR_FILE_EXISTS, false, "old"},
      {CREATE_ALWAYS, false, ERROR_SUCCESS, true, ""},
      {CREATE_ALWAYS, true, ERROR_ALREADY_EXISTS, true, ""},
      {OPEN_EXISTING, false, ERROR_FILE_NOT_FOUND, false, nullptr},
      {OPEN_EXISTING, true, ERROR_SUCCESS, true, "old"},
      {OPEN_ALWAYS, false, ERROR_SUCCESS, true, ""},
      {OPEN_ALWAYS, true, ERROR_ALREADY_EXISTS, true, "old"},
      {TRUNCATE_EXISTING, false, ERROR_FILE_NOT_FOUND, false, nullptr},
      {TRUNCATE_EXISTING, true, ERROR_SUCCESS, true, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << "disposition " << row.disposition << ", exists " << row.exists);
    DeleteFileA(folder.Path("f").c_str());
    if (row.exists) folder.Write("f", "old");
    SetLastError(kNonsense);
    const HANDLE file = Open(folder.Path("f"), kReadWrite, row.disposition);
    EXPECT_EQ(GetLastError(), row.error);
    EXPECT_EQ(file != INVALID_HANDLE_VALUE, row.opens);
    if (row.opens) CloseHandle(file);
    EXPECT_EQ(folder.Exists("f"), row.contents != nullptr);
    if (row.contents != nullptr) {
      EXPECT_EQ(folder.Read("f"), row.contents);
    }
  }
}

TEST_F(FileContract, OpeningRefusesWhatIsNoFileInReach) {
  folder.Write("f", "x");
  folder.MakeDirectory("d");
  struct Row {
    std::string path;
    DWORD access;
    DWORD disposition;
    DWORD error;
  };
  const Row rows[] = {
      {"", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
      {folder.Path("none"), GENERIC_READ, OPEN_EXISTING, ERROR_FILE_NOT_FOUND},
      {folder.Path("none\\f"), GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
      {folder.Path("none\\f"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_PATH_NOT_FOUND},
      {folder.Path("f\\g"), GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
      {folder.Path("d"), GENERIC_READ, OPEN_EXISTING, ERROR_ACCESS_DENIED},
      {folder.Path("d"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
      {folder.Path("d"), GENERIC_WRITE, CREATE_NEW, ERROR_FILE_EXISTS},
      {folder.Path("f*"), GENERIC_READ, OPEN_EXISTING, ERROR_INVALID_NAME},
      {folder.Path("a?b"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_INVALID_NAME},
      {folder.Path("a<b"), GENERIC_WRITE, CREATE_ALWAYS, ERROR_INVALID_NAME},
      {"Q:\\none\\f", GENERIC_READ, OPEN_EXISTING, ERROR_PATH_NOT_FOUND},
      {folder.Path("f"), GENERIC_READ, 6, ERROR_INVALID_PARAMETER},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_FAILS_WITH(row.error,
                      Open(row.path, row.access, row.disposition) == INVALID_HANDLE_VALUE);
  }
}

TEST_F(FileContract, ReadingGivesFewerBytesOnlyAtTheEnd) {
  folder.Write("f", "0123456789");
  const OpenFile file(folder.Path("f"), GENERIC_READ, 0, OPEN_EXISTING);
  char buffer[8];
  DWORD got = 99;
  EXPECT_TRUE(ReadFile(file.Get(), buffer, 8, &got, nullptr));
  EXPECT_EQ(std::string(buffer, got), "01234567");
  EXPECT_TRUE(ReadFile(file.Get(), buffer, 8, &got, nullptr));
  EXPECT_EQ(std::string(buffer, got), "89");
  EXPECT_TRUE(ReadFile(file.Get(), buffer, 8, &got, nullptr));
  EXPECT_EQ(got, 0U);
}

TEST_F(FileContract, HandlesAllowOnlyWhatTheyWereOpenedFor) {
  folder.Write("f", "x");
  char byte = 'y';
  DWORD count = 99;
  {
    const OpenFile file(folder.Path("f"), GENERIC_READ, 0, OPEN_EXISTING);
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !WriteFile(file.Get(), &byte, 1, &count, nullptr));
    EXPECT_EQ(count, 0U);
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !FlushFileBuffers(file.Get()));
    if (!UnderWine()) {
      const FILETIME time{1, 2};
      EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !SetEndOfFile(file.Get()));
      EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !SetFileTime(file.Get(), nullptr, nullptr, &time));
      EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, Open(folder.Path("f"), GENERIC_READ,
                                                      TRUNCATE_EXISTING) == INVALID_HANDLE_VALUE);
    }
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, CreateFileMappingA(file.Get(), nullptr, PAGE_READWRITE,
                                                              0, 0, nullptr) == nullptr);
  }
  const OpenFile file(folder.Path("f"), GENERIC_WRITE, 0, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !ReadFile(file.Get(), &byte, 1, &count, nullptr));
  const OpenFile facts(folder.Path("f"), 0, 0, OPEN_EXISTING);
  EXPECT_TRUE(facts.IsOpen()) << "asking for facts disturbs nobody";
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !ReadFile(facts.Get(), &byte, 1, &count, nullptr));
}

TEST_F(FileContract, HandlesThatAreNoneAreToldApart) {
  folder.Write("f", "x");
  const HANDLE file = Open(folder.Path("f"), GENERIC_READ, OPEN_EXISTING);
  EXPECT_TRUE(CloseHandle(file));
  char byte = 0;
  DWORD count = 0;
  WIN32_FIND_DATAA data;
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !CloseHandle(file));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !ReadFile(file, &byte, 1, &count, nullptr));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE,
                    !WriteFile(INVALID_HANDLE_VALUE, &byte, 1, &count, nullptr));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, GetFileSize(nullptr, nullptr) == INVALID_FILE_SIZE);
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !FindNextFileA(INVALID_HANDLE_VALUE, &data));
  EXPECT_FAILS_WITH(ERROR_INVALID_HANDLE, !FindClose(INVALID_HANDLE_VALUE));
}

TEST_F(FileContract, FilePointerMovesInAllWays) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
  const HANDLE f = file.Get();
  DWORD written = 0;
  ASSERT_TRUE(WriteFile(f, "0123456789", 10, &written, nullptr));
  EXPECT_EQ(SetFilePointer(f, 4, nullptr, FILE_BEGIN), 4U);
  EXPECT_EQ(SetFilePointer(f, -1, nullptr, FILE_CURRENT), 3U);
  EXPECT_EQ(SetFilePointer(f, -3, nullptr, FILE_END), 7U);
  EXPECT_FAILS_WITH(ERROR_NEGATIVE_SEEK,
                    SetFilePointer(f, -8, nullptr, FILE_CURRENT) == INVALID_SET_FILE_POINTER);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER,
                    SetFilePointer(f, 0, nullptr, 3) == INVALID_SET_FILE_POINTER);
  EXPECT_EQ(SetFilePointer(f, 0, nullptr, FILE_CURRENT), 7U) << "failures move nothing";

  LONG high = 1;
  EXPECT_EQ(SetFilePointer(f, 5, &high, FILE_BEGIN), 5U);
  EXPECT_EQ(high, 1);
  if (!UnderWine()) {
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER,
                      SetFilePointer(f, 1, nullptr, FILE_CURRENT) == INVALID_SET_FILE_POINTER);
  }
  high = -1;
  EXPECT_FAILS_WITH(ERROR_NEGATIVE_SEEK,
                    SetFilePointer(f, -1, &high, FILE_BEGIN) == INVALID_SET_FILE_POINTER);
}

TEST_F(FileContract, FilePointerCanStandOnThePositionThatLooksLikeAnError) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
  LARGE_INTEGER position;
  position.QuadPart = 0xFFFFFFFF;
  ASSERT_TRUE(SetFilePointerEx(file.Get(), position, nullptr, FILE_BEGIN));
  SetLastError(kNonsense);
  EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
  EXPECT_EQ(GetLastError(), DWORD{NO_ERROR});
}

TEST_F(FileContract, EndOfFileIsSetAtTheFilePointer) {
  const OpenFile file(folder.Path("f"), kReadWrite, 0, CREATE_NEW);
  DWORD written = 0;
  ASSERT_TRUE(WriteFile(file.Get(), "0123456789", 10, &written, nullptr));
  SetFilePointer(file.Get(), 4, nullptr, FILE_BEGIN);
  EXPECT_TRUE(SetEndOfFile(file.Get()));
  EXPECT_EQ(GetFileSize(file.Get(), nullptr), 4U);
  SetFilePointer(file.Get(), 100'000, nullptr, FILE_BEGIN);
  EXPECT_TRUE(SetEndOfFile(file.Get()));
  DWORD high = 99;
  EXPECT_EQ(GetFileSize(file.Get(), &high), 100'000U);
  EXPECT_EQ(high, 0U);
  char tail[2] = {'x', 'x'};
  DWORD got = 0;
  SetFilePointer(file.Get(), 3, nullptr, FILE_BEGIN);
  ASSERT_TRUE(ReadFile(file.Get(), tail, 2, &got, nullptr));
  EXPECT_EQ(std::string(tail, 2), std::string("3\0", 2));
}

TEST_F(FileContract, ReadOnlyFilesResistWritingReplacingAndDeleting) {
  if (UnderWine()) GTEST_SKIP() << "root may write read-only files under Wine";
  folder.Write("f", "precious");
  folder.Write("g", "new");
  const std::string f = folder.Path("f");
  ASSERT_TRUE(SetFileAttributesA(f.c_str(), FILE_ATTRIBUTE_READONLY));
  for (const DWORD disposition : {OPEN_EXISTING, OPEN_ALWAYS, CREATE_ALWAYS, TRUNCATE_EXISTING}) {
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                      Open(f, GENERIC_WRITE, disposition) == INVALID_HANDLE_VALUE);
  }
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED, !DeleteFileA(f.c_str()));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                    !MoveFileExA(folder.Path("g").c_str(), f.c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("f"), "precious");
  EXPECT_TRUE(MoveFileExA(f.c_str(), folder.Path("h").c_str(), 0)) << "the name isn't protected";
  EXPECT_TRUE(SetFileAttributesA(folder.Path("h").c_str(), FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(DeleteFileA(folder.Path("h").c_str()));
}

TEST_F(FileContract, HiddenAndSystemFilesAreReplacedOnlyByWhoNamesTheAttribute) {
  if (UnderWine()) GTEST_SKIP() << "Wine replaces them";
  for (const DWORD attribute : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM}) {
    DeleteFileA(folder.Path("f").c_str());
    folder.Write("f", "x");
    ASSERT_TRUE(SetFileAttributesA(folder.Path("f").c_str(), attribute));
    EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                      Open(folder.Path("f"), GENERIC_WRITE, CREATE_ALWAYS) == INVALID_HANDLE_VALUE);
    const OpenFile file(folder.Path("f"), GENERIC_WRITE, 0, CREATE_ALWAYS, attribute);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(GetFileAttributesA(folder.Path("f").c_str()), attribute | FILE_ATTRIBUTE_ARCHIVE);
  }
}

TEST_F(FileContract, AFileMadeReadOnlyIsWrittenThroughTheHandleThatMadeIt) {
  {
    const OpenFile file(folder.Path("f"), GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_READONLY);
    DWORD written = 0;
    ASSERT_TRUE(file.IsOpen());
    EXPECT_TRUE(WriteFile(file.Get(), "x", 1, &written, nullptr));
  }
  EXPECT_EQ(GetFileAttributesA(folder.Path("f").c_str()),
            DWORD{FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE});
}

TEST_F(FileContract, SharingHoldsInBothDirections) {
  folder.Write("f", "x");
  struct Row {
    DWORD firstAccess;
    DWORD firstShare;
    DWORD secondAccess;
    DWORD secondShare;
    bool agree;
  };
  constexpr DWORD kRead = GENERIC_READ;
  constexpr DWORD kWrite = GENERIC_WRITE;
  constexpr DWORD kShareRead = FILE_SHARE_READ;
  constexpr DWORD kShareWrite = FILE_SHARE_WRITE;
  const Row rows[] = {
      {kRead, kShareRead, kRead, kShareRead, true},
      {kRead, 0, kRead, kShareAll, false},
      {kRead, kShareAll, kRead, 0, false},
      {kRead, kShareRead, kWrite, kShareAll, false},
      {kRead, kShareRead | kShareWrite, kWrite, kShareRead, true},
      {kRead, kShareRead | kShareWrite, kWrite, 0, false},
      {kWrite, kShareRead, kRead, kShareRead, false},
      {kWrite, kShareRead, kRead, kShareRead | kShareWrite, true},
      {kWrite, kShareWrite, kWrite, kShareWrite, true},
      {kWrite, kShareRead, kWrite, kShareAll, false},
      {kReadWrite, 0, 0, 0, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    const OpenFile first(folder.Path("f"), row.firstAccess, row.firstShare, OPEN_EXISTING);
    ASSERT_TRUE(first.IsOpen());
    SetLastError(kNonsense);
    const OpenFile second(folder.Path("f"), row.secondAccess, row.secondShare, OPEN_EXISTING);
    EXPECT_EQ(second.IsOpen(), row.agree);
    EXPECT_EQ(GetLastError(), row.agree ? ERROR_SUCCESS : ERROR_SHARING_VIOLATION);
  }
  const OpenFile after(folder.Path("f"), kReadWrite, 0, OPEN_EXISTING);
  EXPECT_TRUE(after.IsOpen()) << "closing gives everything back";
}

TEST_F(FileContract, ARefusedOpenTruncatesNothing) {
  folder.Write("f", "precious");
  const OpenFile reader(folder.Path("f"), GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION,
                    Open(folder.Path("f"), GENERIC_WRITE, CREATE_ALWAYS) == INVALID_HANDLE_VALUE);
  EXPECT_EQ(folder.Read("f"), "precious");
}

TEST_F(FileContract, OpenFilesAreNeitherDeletedNorMovedNorReplaced) {
  folder.Write("f", "x");
  folder.Write("g", "y");
  const std::string f = folder.Path("f");
  const OpenFile open(f, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !DeleteFileA(f.c_str()));
  EXPECT_FAILS_WITH(ERROR_SHARING_VIOLATION, !MoveFileExA(f.c_str(), folder.Path("h").c_str(), 0));
  EXPECT_FAILS_WITH(ERROR_ACCESS_DENIED,
                    !MoveFileExA(folder.Path("g").c_str(), f.c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(folder.Read("g"), "y");
}

TEST_F(FileContract, DirectoriesOpenForWhoAsksForThem) {
  folder.MakeDirectory("d");
  const OpenFile directory(folder.Path("d"), GENERIC_READ, kShareAll, OPEN_EXISTING,
                           FILE_FLAG_BACKUP_SEMANTICS);
  ASSERT_TRUE(directory.IsOpen());
  BY_HANDLE_FILE_INFORMATION information;
  ASSERT_TRUE(GetFileInformationByHandle(directory.Get(), &information));
  EXPECT_NE(information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY, 0U);
}

TEST_F(FileContract, FileIndexTellsFilesApart) {
  folder.Write("f", "x");
  folder.Write("g", "x");
  const auto index = [&](const char* name) {
    const OpenFile file(folder.Path(name), GENERIC_READ, kShareAll, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION information{};
    EXPECT_TRUE(GetFileInformationByHandle(file.Get(), &information));
    EXPECT_EQ(information.nFileSizeLow, 1U);
    EXPECT_EQ(information.nNumberOfLinks, 1U);
    return static_cast<ULONGLONG>(information.nFileIndexHigh) << 32 | information.nFileIndexLow;
  };
  EXPECT_EQ(index("f"), index("F"));
  EXPECT_NE(index("f"), index("g"));
}

TEST_F(FileContract, TimesAreKeptToTheStep) {
  folder.Write("f", "x");
  const FILETIME wanted{0x23456780, 0x01C12345};
  const FILETIME access{0x6543210, 0x01C22222};
  {
    const OpenFile file(folder.Path("f"), kReadWrite, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_TRUE(SetFileTime(file.Get(), nullptr, &access, &wanted));
    const FILETIME none{0, 0};
    const FILETIME keep{0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_TRUE(SetFileTime(file.Get(), nullptr, &none, nullptr));
    EXPECT_TRUE(SetFileTime(file.Get(), nullptr, nullptr, &keep));
    FILETIME gotAccess;
    FILETIME gotWrite;
    EXPECT_TRUE(GetFileTime(file.Get(), nullptr, &gotAccess, &gotWrite));
    EXPECT_TRUE(gotAccess == access);
    EXPECT_TRUE(gotWrite == wanted);
  }
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(folder.Path("f").c_str(), &data);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  FindClose(find);
  EXPECT_TRUE(data.ftLastWriteTime == wanted);
}

}  // namespace
}  // namespace kozor::test
