// StdioFileTest.cpp - CStdioFile: lines and buffers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/classlib/ClassLib.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::TestFolder;

constexpr unsigned int kWriteText =
    CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive | CFile::typeText;

class StdioFile : public testing::Test {
 protected:
  std::string Contents() const {
    const auto bytes = folder.ReadFile("file");
    return std::string(bytes.begin(), bytes.end());
  }

  TestFolder folder;
  std::string path = folder.Lib("file");
};

TEST_F(StdioFile, WritesAndReadsLinesOfAnyLength) {
  const std::vector<std::string> lines = {
      "\"a.txt\"", "", std::string(8191, 'x'), std::string(8192, 'y'), std::string(30'000, 'z'),
      "end"};
  std::string expected;
  {
    CStdioFile file(path.c_str(), kWriteText);
    for (const std::string& line : lines) {
      file.WriteString((line + "\n").c_str());
      expected += line + "\n";
    }
    EXPECT_EQ(file.GetLength(), expected.size());
  }
  EXPECT_EQ(Contents(), expected);

  CStdioFile file(path.c_str(), CFile::modeRead | CFile::typeText);
  CString line;
  for (const std::string& wanted : lines) {
    ASSERT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, wanted.c_str());
  }
  EXPECT_FALSE(file.ReadString(line));
  EXPECT_TRUE(line.IsEmpty());
}

TEST_F(StdioFile, GivesTheLastLineWithoutALineEnd) {
  folder.WriteFile("file", "one\n\ntwo");
  CStdioFile file(path.c_str(), CFile::modeRead | CFile::typeText);
  CString line;
  std::vector<std::string> lines;
  while (file.ReadString(line)) lines.emplace_back(line);
  EXPECT_EQ(lines, (std::vector<std::string>{"one", "", "two"}));
}

TEST_F(StdioFile, ChangesBetweenReadingAndWritingWhereTheProgramStands) {
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

TEST_F(StdioFile, ReportsALostWriteOnceAndIsClosedThen) {
  folder.WriteFile("file", "");
  CStdioFile file(path.c_str(), CFile::modeRead);
  file.WriteString("stays in the buffer");
  EXPECT_THROW(
      try { file.Close(); } catch (CFileException* error) {
        error->Delete();
        throw std::string();
      },
      std::string);
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.Open(path.c_str(), CFile::modeRead));
  file.Close();
}

}  // namespace
