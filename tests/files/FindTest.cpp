// FindTest.cpp - selections: which masks find what, in which order and form.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "ZorFileServices.h"
#include "ZorFind.h"
#include "tests/support/Ability.h"
#include "tests/support/CodePageScope.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

using Names = std::vector<std::string>;

Names NamesOf(const ZorFileList& list) {
  return Names(list.begin(), list.end());
}

class FilesFind : public testing::Test {
 protected:
  FilesFind() { find.SetCurrentDirectoryA(folder.Lib().c_str()); }

  // The files that the masks find below the folder, relative to it unless a mask has a root.
  Names Run(const Names& masks, int fullPath = 0) {
    for (const std::string& mask : masks) find.AddTail(mask.c_str());
    ZorFileList list;
    EXPECT_EQ(find.Find(list, fullPath), ZorErrorNone);
    find.RemoveAll();
    return NamesOf(list);
  }

  void MakeSmallTree() {
    MakeTree(folder, "",
             {{"a.txt", 1}, {"m.tmp", 1}, {"sub/b.txt", 1}, {"sub/c.tmp", 1}, {"z", 1}});
  }

  TestFolder folder;
  ZorFind find;
};

TEST_F(FilesFind, GoesDepthFirstForAllFilesAndMatchesFirstForOthers) {
  MakeTree(folder, "", {{"a.txt", 1}, {"sub/b.txt", 1}, {"sub/deep/c.txt", 1}, {"z.txt", 1}});
  const Names all = {"a.txt", "sub", "sub\\b.txt", "sub\\deep", "sub\\deep\\c.txt", "z.txt"};
  EXPECT_EQ(Run({"*.*"}), all);
  EXPECT_EQ(Run({""}), all);
  EXPECT_EQ(Run({"*.txt"}), (Names{"a.txt", "z.txt", "sub\\b.txt", "sub\\deep\\c.txt"}));
  EXPECT_EQ(Run({"B.TXT"}), Names{"sub\\b.txt"});
  EXPECT_EQ(Run({"*"}),
            (Names{"a.txt", "sub", "z.txt", "sub\\b.txt", "sub\\deep", "sub\\deep\\c.txt"}));
  find.SetSubDirectory(0);
  EXPECT_EQ(Run({"*.*"}), (Names{"a.txt", "sub", "z.txt"}));
  EXPECT_EQ(Run({"*.txt"}), (Names{"a.txt", "z.txt"}));
}

TEST_F(FilesFind, TakesMasksOfEveryForm) {
  MakeSmallTree();
  const std::string base = folder.Lib();
  const std::pair<std::string, Names> rows[] = {
      {"sub", {"sub"}},
      {"sub\\", {"sub\\b.txt", "sub\\c.tmp"}},
      {"sub\\*.txt", {"sub\\b.txt"}},
      {base + "\\a.txt", {base + "\\a.txt"}},
      {base + "\\sub\\", {base + "\\sub\\b.txt", base + "\\sub\\c.tmp"}},
      {"sub\\..\\a.*", {"sub\\..\\a.txt"}},
  };
  for (const auto& [mask, expected] : rows) EXPECT_EQ(Run({mask}), expected) << mask;
  for (const char* mask :
       {"none\\*.*", "C:*.txt", "C:sub\\*.txt", "\\sub\\*.txt", "\\\\srv\\share"}) {
    EXPECT_EQ(Run({mask}), Names{}) << mask;
  }
}

TEST_F(FilesFind, LeavesTheReasonWhyADirectoryCouldNotBeRead) {
  MakeSmallTree();
  const std::pair<Names, DWORD> rows[] = {{{"*.*"}, NO_ERROR},
                                          {{"*.none"}, NO_ERROR},
                                          {{"C:ignored"}, NO_ERROR},
                                          {{"*.*", "none\\x", "a.txt\\x"}, ERROR_PATH_NOT_FOUND},
                                          {{"a.txt\\*.*"}, ERROR_DIRECTORY}};
  for (const auto& [masks, error] : rows) {
    SetLastError(77);
    Run(masks);
    if (GetLastError() == ERROR_INVALID_NAME && error == ERROR_DIRECTORY) continue;  // Wine
    EXPECT_EQ(GetLastError(), error) << masks.back();
  }
}

TEST_F(FilesFind, CutsTheBaseOffUnlessFullPathsAreWanted) {
  MakeSmallTree();
  const std::string base = folder.Lib();
  // Base and mask; what is found without and with full paths.
  const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
      {base, "sub\\*.txt", "sub\\b.txt", base + "\\sub\\b.txt"},
      {base + "\\", "sub\\*.txt", "sub\\b.txt", base + "\\sub\\b.txt"},
      {base + "\\sub", "..\\z", "..\\z", base + "\\sub\\..\\z"},
      {"", base + "\\z", base + "\\z", base + "\\z"},
      {"sub", "*.txt", "b.txt", "sub\\b.txt"},
  };
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  for (const auto& [directory, mask, cut, full] : rows) {
    find.SetCurrentDirectoryA(directory.c_str());
    EXPECT_EQ(Run({mask}), Names{cut}) << directory;
    EXPECT_EQ(Run({mask}, 1), Names{full}) << directory;
  }
  find.SetCurrentDirectoryA("");
  EXPECT_EQ(Run({"z"}), Names{});
  std::filesystem::current_path(before);
}

TEST_F(FilesFind, ExcludesWhatExclusionMasksFind) {
  MakeSmallTree();
  EXPECT_EQ(Run({">*.tmp", "*.*"}), (Names{"a.txt", "sub", "sub\\b.txt", "z"}));
  EXPECT_EQ(Run({"*.*", ">"}), Names{});
  EXPECT_EQ(Run({"*.*", ">>a.txt"}).size(), 6u);
  EXPECT_EQ(Run({"a.txt", ">" + folder.Lib("A.TXT")}), Names{});
}

TEST_F(FilesFind, FiltersByAttributes) {
  if (!Can(Ability::KeepingAttributes)) GTEST_SKIP() << "Wine keeps few attributes";
  const std::pair<const char*, unsigned int> entries[] = {
      {"archive", 0x20}, {"dir/archive", 0x20}, {"hidden", 0x02},          {"hidden+archive", 0x22},
      {"none", 0},       {"dir", 0x12},         {"readonly+archive", 0x21}};
  for (const auto& [name, attribute] : entries) {
    if (!folder.Exists(name)) folder.WriteFile(name, "");
    ASSERT_TRUE(ZorSetFileAttribute(folder.Lib(name).c_str(), attribute)) << name;
  }
  const std::pair<unsigned int, Names> rows[] = {
      {0x37,
       {"archive", "dir", "dir\\archive", "hidden", "hidden+archive", "none", "readonly+archive"}},
      {0x27, {"archive", "dir\\archive", "hidden", "hidden+archive", "none", "readonly+archive"}},
      {0x20, {"archive", "dir\\archive", "hidden+archive", "none", "readonly+archive"}},
      {0x10, {"dir", "none"}},
      {0x02, {"hidden", "hidden+archive", "none"}},
      {0xFFFFFF00, {"none"}},
      {0x00, {"none"}},
  };
  for (const auto& [attribute, expected] : rows) {
    find.SetAttribute(attribute);
    EXPECT_EQ(Run({"*.*"}), expected) << attribute;
  }
}

TEST_F(FilesFind, TakesDoubleByteNamesWhole) {
  const CodePageScope japanese(932);
  // U+8868 is 0x95 0x5C in code page 932, U+FF21 and U+FF41 are the full-width letters A and a.
  folder.WriteFile("\u8868/\u8868", "");
  folder.WriteFile("\u8868/\uFF21", "");
  EXPECT_EQ(Run({"*.*"}), (Names{"\x95\x5C", "\x95\x5C\\\x95\x5C", "\x95\x5C\\\x82\x60"}));
  EXPECT_EQ(Run({"\x95\x5C\\*.*", ">\x82\x81"}), Names{"\x95\x5C\\\x95\x5C"});
  find.SetCurrentDirectoryA((folder.Lib() + "\\\x95\x5C").c_str());
  EXPECT_EQ(Run({"*.*"}), (Names{"\x95\x5C", "\x82\x60"}));
  const CodePageScope utf8(65001);
  find.SetCurrentDirectoryA(folder.Lib().c_str());
  EXPECT_EQ(Run({"\u8868\\*.*"}), (Names{"\u8868\\\u8868", "\u8868\\\uFF21"}));
}

TEST_F(FilesFind, IsCopiedWithItsMasks) {
  find.AddTail("*.txt");
  find.SetAttribute(0x27);
  find.SetSubDirectory(0);
  const ZorFind copy(find);
  ZorFind assigned;
  assigned.AddTail("old");
  assigned = find;
  const ZorFind& itself = assigned;
  assigned = itself;
  find.AddTail("more");
  for (const ZorFind* other : {&copy, &itself}) {
    EXPECT_EQ(NamesOf(*other), Names{"*.txt"});
    EXPECT_EQ(other->GetAttribute(), 0x27u);
    EXPECT_EQ(other->GetSubDirectory(), 0);
    EXPECT_STREQ(other->GetCurrentDirectoryA(), folder.Lib().c_str());
  }
}

}  // namespace
}  // namespace kozor::test
