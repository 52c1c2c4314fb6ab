// ArchiveTest.cpp - CArchive: the bytes of the stream, and malformed or truncated streams.
#include <gtest/gtest.h>

#include <utility>

#include "platform/classlib/ClassLib.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::Bytes;
using kozor::test::TestFolder;
using StringList = CList<CString, const CString&>;

class ClassLibArchive : public testing::Test {
 protected:
  template <class Action>
  Bytes Stored(Action store) const {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive archive(&file, CArchive::store);
    store(archive);
    archive.Close();
    file.Close();
    return folder.ReadFile("stream");
  }

  // Runs `load` on the stream and returns the cause of its CArchiveException, 0 for none.
  template <class Action>
  int Load(const Bytes& bytes, Action load) const {
    folder.WriteFile("stream", bytes);
    CFile file(path.c_str(), CFile::modeRead);
    CArchive archive(&file, CArchive::load);
    try {
      load(archive);
      return 0;
    } catch (CArchiveException* error) {
      const int cause = error->m_cause;
      error->Delete();
      return cause;
    }
  }

  int Load(const Bytes& bytes, StringList& list) const {
    return Load(bytes, [&](CArchive& archive) { list.Serialize(archive); });
  }

  TestFolder folder;
  std::string path = folder.Lib("stream");
};

TEST_F(ClassLibArchive, StoresStringsBehindLengthsOfThreeWidths) {
  const std::pair<int, Bytes> rows[] = {{0, {0}},
                                        {254, {254}},
                                        {255, {0xFF, 0xFF, 0x00}},
                                        {0xFFFD, {0xFF, 0xFD, 0xFF}},
                                        {0xFFFE, {0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0, 0}},
                                        {0x20001, {0xFF, 0xFF, 0xFF, 0x01, 0x00, 2, 0}}};
  for (const auto& [length, prefix] : rows) {
    const CString text('x', length);
    const Bytes bytes = Stored([&](CArchive& archive) { archive << text << WORD{0x1234}; });
    Bytes expected = prefix;
    expected.insert(expected.end(), static_cast<std::size_t>(length), 'x');
    expected.insert(expected.end(), {0x34, 0x12});
    EXPECT_EQ(bytes, expected) << length;

    CString loaded = "old";
    WORD behind = 0;
    EXPECT_EQ(Load(bytes, [&](CArchive& archive) { archive >> loaded >> behind; }), 0);
    EXPECT_EQ(loaded, text);
    EXPECT_EQ(behind, 0x1234);
  }
}

TEST_F(ClassLibArchive, StoresListsAndLoadsThemBehindWhatIsThere) {
  StringList list;
  list.AddTail("one");
  list.AddTail("");
  EXPECT_EQ(Stored([](CArchive& archive) {
              archive.WriteCount(0xFFFE);
              archive.WriteCount(0xFFFF);
            }),
            (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}));
  const Bytes bytes = Stored([&](CArchive& archive) { list.Serialize(archive); });
  EXPECT_EQ(bytes, (Bytes{2, 0, 3, 'o', 'n', 'e', 0}));
  EXPECT_EQ(Load(bytes, list), 0);
  EXPECT_EQ(std::vector<std::string>(list.begin(), list.end()),
            (std::vector<std::string>{"one", "", "one", ""}));
}

TEST_F(ClassLibArchive, KeepsWhatWasLoadedBeforeTheStreamEnds) {
  const std::pair<Bytes, int> rows[] = {
      {{3, 0, 1, 'a', 1, 'b', 2, 'c'}, 2}, {{3, 0, 1, 'a', 1, 'b'}, 2}, {{1}, 0}};
  for (const auto& [bytes, elements] : rows) {
    StringList list;
    EXPECT_EQ(Load(bytes, list), CArchiveException::endOfFile);
    EXPECT_EQ(list.GetCount(), elements);
  }
}

// The fuzz target also checks that such claims take no memory.
TEST_F(ClassLibArchive, RefusesTheClaimsOfAHostileStream) {
  const std::pair<Bytes, int> rows[] = {
      {{0xFF, 0xFF, 0xFF, 0x00, 0xFF, 0xFF, 0x7E, 'x', 'y'}, CArchiveException::endOfFile},
      {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, CArchiveException::badSchema},
      {{0xFF, 0xFE, 0xFF, 1, 'x', 0}, CArchiveException::badSchema},  // a wide string
  };
  for (const auto& [bytes, cause] : rows) {
    CString text = "old";
    EXPECT_EQ(Load(bytes, [&](CArchive& archive) { archive >> text; }), cause);
    EXPECT_STREQ(text, "old");
  }
  StringList list;
  const Bytes hugeCount = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 'x'};
  EXPECT_EQ(Load(hugeCount, list), CArchiveException::endOfFile);
  EXPECT_EQ(list.GetCount(), 1);
}

TEST_F(ClassLibArchive, LeavesTheFileBehindWhatWasLoaded) {
  folder.WriteFile("stream", Bytes{1, 0, 'r', 'e', 's', 't'});
  CFile file(path.c_str(), CFile::modeRead);
  CArchive archive(&file, CArchive::load);
  EXPECT_EQ(archive.ReadCount(), 1u);
  archive.Close();
  char rest[4];
  EXPECT_EQ(file.Read(rest, 4), 4u);
  EXPECT_EQ(std::string(rest, 4), "rest");
}

}  // namespace
