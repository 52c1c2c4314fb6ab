// FileTest.cpp - CFile: opening, positions, failures, operations on paths; CStdioFile, which adds
// lines and a buffer; and the protocol of CFileFind.
#include <gtest/gtest.h>

#include <tuple>

#include "platform/classlib/ClassLib.h"
#include "tests/support/Ability.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

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

class ClassLibFile : public testing::Test {
 protected:
  // The cause with which opening fails, 0 if it doesn't.
  int Open(const char* name, unsigned int flags) const {
    CFile file;
    CFileException error;
    const int result = file.Open(folder.Lib(name).c_str(), flags, &error);
    EXPECT_EQ(result == 0, error.m_cause != 0);
    EXPECT_EQ(result != 0, file.IsOpen());
    return error.m_cause;
  }

  std::string Contents() const { return folder.ReadText("file"); }

  TestFolder folder;
  std::string path = folder.Lib("file");
};

TEST_F(ClassLibFile, OpeningTellsWhyItFails) {
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
}

TEST_F(ClassLibFile, CreatingEmptiesAnExistingFileUnlessToldNotTo) {
  folder.WriteFile("file", "12345");
  EXPECT_EQ(Open("file", CFile::modeWrite), 0);
  EXPECT_EQ(Open("file", CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite), 0);
  EXPECT_EQ(Contents(), "12345");
  EXPECT_EQ(Open("file", CFile::modeCreate | CFile::modeWrite), 0);
  EXPECT_EQ(Contents(), "");
}

TEST_F(ClassLibFile, SharesAsTheFlagsSay) {
  folder.WriteFile("file", "12345");
  const std::tuple<unsigned int, unsigned int, int> rows[] = {
      {CFile::modeRead | CFile::shareExclusive, CFile::modeRead | CFile::shareDenyNone, 11},
      {CFile::modeRead | CFile::shareDenyWrite, CFile::modeRead | CFile::shareDenyWrite, 0},
      {CFile::modeRead | CFile::shareDenyWrite, CFile::modeWrite | CFile::shareDenyNone, 11},
      {CFile::modeWrite | CFile::shareDenyRead, CFile::modeRead | CFile::shareDenyNone, 11},
      {CFile::modeWrite | CFile::shareDenyNone, CFile::modeWrite | CFile::shareDenyNone, 0},
  };
  for (const auto& [first, second, cause] : rows) {
    CFile holder(path.c_str(), first);
    EXPECT_EQ(Open("file", second), cause) << first << ' ' << second;
    EXPECT_FALSE(holder.Open(path.c_str(), second)) << "one file at a time";
  }
}

TEST_F(ClassLibFile, ReadsWritesAndSeeks) {
  CFile file(path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
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
  CFileStatus status;
  ASSERT_TRUE(CFile::GetStatus(path.c_str(), status));
  EXPECT_EQ(status.m_size, 0x1'0000'0002u);
}

TEST_F(ClassLibFile, ThrowsWhenTheHandleIsNoGood) {
  EXPECT_EQ(CauseOf([&] { CFile file(path.c_str(), CFile::modeRead); }),
            CFileException::fileNotFound);
  folder.WriteFile("file", "12345");
  CFile file(path.c_str(), CFile::modeRead);
  EXPECT_EQ(CauseOf([&] { file.Write("x", 1); }), CFileException::accessDenied);
  file.Close();
  char byte;
  EXPECT_EQ(CauseOf([&] { file.Read(&byte, 1); }), CFileException::invalidFile);
  CFile::Remove(path.c_str());
  EXPECT_EQ(CauseOf([&] { CFile::Remove(path.c_str()); }), CFileException::fileNotFound);
}

TEST_F(ClassLibFile, StatusFindsEntriesOfDirectoriesOnly) {
  const CodePageScope japanese(932);
  folder.WriteFile("dir/file", "12345");
  folder.WriteFile("\xE8\xA1\xA8/file", "1");  // in code page 932 the name ends in the byte 0x5C
  ASSERT_TRUE(SetFileAttributesA(folder.Lib("dir/file").c_str(), FILE_ATTRIBUTE_HIDDEN));
  CFileStatus status{};
  EXPECT_TRUE(CFile::GetStatus(folder.Lib("dir/file").c_str(), status));
  if (Can(Ability::KeepingAttributes)) {
    EXPECT_EQ(status.m_attribute, CFile::hidden);
  }
  EXPECT_EQ(status.m_size, 5u);
  for (const char* name : {"dir", "dir\\", "\x95\x5C", "\x95\x5C\\"}) {
    EXPECT_TRUE(CFile::GetStatus((folder.Lib() + "\\" + name).c_str(), status)) << name;
    EXPECT_EQ(status.m_attribute, CFile::directory) << name;
  }
  status.m_size = 99;
  for (const std::string& none : {folder.Lib("none"), folder.Lib("dir/f*"), folder.Lib("dir/fil?"),
                                  std::string("C:\\"), std::string()}) {
    EXPECT_FALSE(CFile::GetStatus(none.c_str(), status)) << none;
    EXPECT_EQ(status.m_size, 99u) << none;
  }
}

using ClassLibStdioFile = ClassLibFile;

TEST_F(ClassLibStdioFile, WritesAndReadsLinesOfAnyLength) {
  const std::vector<std::string> lines = {"\"a.txt\"", "", std::string(8191, 'x'),
                                          std::string(8192, 'y'), std::string(30'000, 'z')};
  std::string expected;
  {
    CStdioFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::typeText);
    for (const std::string& line : lines) {
      file.WriteString((line + "\n").c_str());
      expected += line + kTextLineEnd;
    }
    file.WriteString("no line end");
    expected += "no line end";
    EXPECT_EQ(file.GetLength(), expected.size());
  }
  EXPECT_EQ(Contents(), expected);

  CStdioFile file(path.c_str(), CFile::modeRead | CFile::typeText);
  CString line;
  for (const std::string& wanted : lines) {
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, wanted.c_str());
  }
  EXPECT_TRUE(file.ReadString(line));
  EXPECT_STREQ(line, "no line end");
  EXPECT_FALSE(file.ReadString(line));
  EXPECT_TRUE(line.IsEmpty());
}

TEST_F(ClassLibStdioFile, ChangesBetweenReadingAndWritingWhereTheProgramStands) {
  folder.WriteFile("file", "one\ntwo\nthree\n");
  CStdioFile file(path.c_str(), CFile::modeReadWrite);
  CString line;
  file.ReadString(line);
  file.WriteString("TWO");
  file.ReadString(line);
  EXPECT_STREQ(line, "");
  EXPECT_EQ(file.Seek(1, CFile::current), 9u);
  char letters[8];
  EXPECT_EQ(file.Read(letters, 4), 4u);
  EXPECT_EQ(std::string(letters, 4), "hree");
  EXPECT_EQ(file.Seek(0, CFile::begin), 0u);
  file.Write("O", 1);
  file.Close();
  EXPECT_EQ(Contents(), "One\nTWO\nthree\n");
}

TEST_F(ClassLibStdioFile, ReportsALostWriteOnceAndIsClosedThen) {
  folder.WriteFile("file", "");
  CStdioFile file(path.c_str(), CFile::modeRead);
  file.WriteString("stays in the buffer");
  EXPECT_EQ(CauseOf([&] { file.Close(); }), CFileException::accessDenied);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Open(path.c_str(), CFile::modeRead));
}

TEST_F(ClassLibFile, ASearchGivesEveryEntryTheLastOneTooAndTellsOfIt) {
  folder.WriteFile("a.txt", "1");
  folder.WriteFile("b.bin", "12345");
  folder.WriteFile("dir/x", "");
  ASSERT_TRUE(SetFileAttributesA(folder.Lib("b.bin").c_str(), 0x22));
  CFileFind search;
  std::string names;
  for (int more = search.FindFile(folder.Lib("*.*").c_str()); more;) {
    more = search.FindNextFileA();
    if (!search.IsDots()) names += std::string(search.GetFileName()) + ' ';
  }
  EXPECT_EQ(names, "a.txt b.bin dir ");
  EXPECT_TRUE(search.IsDirectory());
  EXPECT_FALSE(search.FindFile(folder.Lib("*.none").c_str()));
  ASSERT_TRUE(search.FindFile(folder.Lib("b.*").c_str()));
  for (int asked = 0; asked < 2; ++asked) {  // after the last entry, it stays
    EXPECT_FALSE(search.FindNextFileA());
    EXPECT_EQ(search.GetFilePath(), folder.Lib("b.bin").c_str());
    EXPECT_EQ(search.GetLength(), 5u);
    EXPECT_TRUE(search.MatchesMask(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_FALSE(search.MatchesMask(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM));
  }
}

}  // namespace
}  // namespace kozor::test
