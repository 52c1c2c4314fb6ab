// MemberNameTest.cpp - names from headers, for headers, and hostile ones.
#include "engine/container/MemberName.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace kozor::container {
namespace {

constexpr unsigned int k932 = 932;
constexpr unsigned int kUtf8Page = 65001;

// In code page 932 the second byte of this character is 0x5C.
const char kHyou932[] = "\x95\x5C";
const char kHyouUtf8[] = "\xE8\xA1\xA8";
const char kHangulUtf8[] = "\xED\x95\x9C";  // not in 932

std::string Shown(const NameFields& fields, unsigned int page = k932) {
  return DecodeName(fields, false, page).text;
}

TEST(EngineMemberName, EverySeparatorOfEveryWriterCounts) {
  const std::pair<NameFields, const char*> rows[] = {
      {{.base = "d/e\\f.txt"}, "d\\e\\f.txt"},
      {{.base = "d\377e\377f.txt"}, "d\\e\\f.txt"},
      {{.base = "d\377\x95\x5C.txt"}, "d\\\x95\x5C.txt"},
      {{.base = "f.txt", .directory = "d\377e\377"}, "d\\e\\f.txt"},
      {{.base = "f.txt", .directory = "d\377e"}, "d\\e\\f.txt"},
      {{.base = "e\\f.txt", .directory = "d\377"}, "d\\e\\f.txt"},
      {{.base = "base", .file = "f.txt"}, "f.txt"},
      {{.file = "f.txt", .unicodeFile = u"\u8868", .unicodeDirectory = u"d\uFFFF"}, "d\\\x95\x5C"},
      {{.base = "d/e.txt", .unicodeFile = u"f.txt"}, "d\\f.txt"},
      {{.base = std::string("f.txt\0a comment", 15)}, "f.txt"},
  };
  for (const auto& [fields, shown] : rows) EXPECT_EQ(Shown(fields), shown);
}

TEST(EngineMemberName, NothingClimbsOrNamesADrive) {
  const std::pair<const char*, const char*> rows[] = {
      {"..\\..\\x", "x"},
      {"a\\..\\..\\x", "a\\x"},
      {"./a/./x", "a\\x"},
      {"a\\\\x", "a\\x"},
      {"C:\\windows\\x", "windows\\x"},
      {"C:..\\x", "x"},
      {".\\C:\\x", "C_\\x"},
      {"\\\\server\\share\\x", "\\server\\share\\x"},
      {"/../../etc/x", "\\etc\\x"},
      {"file:stream", "file_stream"},
      {"a\"b*c?<>|", "a_b_c____"},
      {"a\x1B[2Jb\x7F", "a_[2Jb\x7F"},
      {"..", ""},
      {"C:\\", ""},
  };
  for (const auto& [name, shown] : rows) EXPECT_EQ(Shown({.base = name}), shown) << name;
}

TEST(EngineMemberName, CodePageIsRecordedOrGuessed) {
  const std::tuple<const char*, NameFields, std::string> rows[] = {
      {"932 without a word", {.base = kHyou932}, kHyouUtf8},
      {"UTF-8 recorded", {.file = kHyouUtf8, .codePage = 65001}, kHyouUtf8},
      {"UTF-8 that is no 932", {.file = "\xE3\x81\x82.txt"}, "\xE3\x81\x82.txt"},
      {"Latin recorded", {.file = "\xE9", .codePage = 1252}, "\xC3\xA9"},
      {"recorded page that does not fit", {.file = kHyou932, .codePage = 65001}, kHyouUtf8},
      {"recorded page that nobody knows", {.file = kHyou932, .codePage = 4242}, kHyouUtf8},
  };
  for (const auto& [what, fields, shown] : rows) EXPECT_EQ(Shown(fields, kUtf8Page), shown) << what;
}

TEST(EngineMemberName, UnderlineStandsForWhatCannotBeShown) {
  const ShownName hangul =
      DecodeName({.file = std::string(kHangulUtf8) + ".txt", .codePage = 65001}, false, k932);
  EXPECT_EQ(hangul.text, "_.txt");
  EXPECT_TRUE(hangul.altered);
  // A lead byte at the end of a component must not swallow the separator after it.
  EXPECT_EQ(Shown({.base = "x", .directory = "d\x81\xFF"}), "d_\\x");
  // Nor may a Unicode character become a separator: the yen sign can be read as 0x5C.
  EXPECT_EQ(Shown({.unicodeFile = u"a\u00A5b"}).find('\\'), std::string::npos);
  EXPECT_EQ(Shown({.unicodeFile = std::u16string(1, u'\xD800')}, kUtf8Page), "_");
}

TEST(EngineMemberName, StoredWithoutRoot) {
  const std::pair<const char*, const char*> rows[] = {
      {"d/f.txt", "d\\f.txt"},
      {"C:\\d\\f.txt", "\\d\\f.txt"},
      {"C:f.txt", "f.txt"},
      {"\\\\srv\\share\\d\\f.txt", "\\d\\f.txt"},
      {".\\..\\f.txt", "f.txt"},
      {"a*b", ""},
      {"..", ""},
  };
  for (const auto& [given, stored] : rows) EXPECT_EQ(StoredNameOf(given, k932), stored) << given;
}

TEST(EngineMemberName, WhatIsStoredIsShownAgainAndItsCodePageRecordedBeyondAscii) {
  const std::pair<std::string, unsigned int> rows[] = {
      {"d\\plain.txt", 0},
      {std::string("\\") + kHyouUtf8 + "\\" + kHyouUtf8 + ".txt", k932},
      {std::string(kHangulUtf8) + "\\a", kUtf8Page},
      {"\xEF\xBD\x9E\xE2\x88\x92", kUtf8Page},  // characters that 932 decodes differently
      {"\xF0\x9F\x98\x80.txt", kUtf8Page},
  };
  for (const auto& [name, codePage] : rows) {
    const StoredName stored = EncodeName(name, kUtf8Page);
    EXPECT_EQ(stored.codePage, codePage) << name;
    EXPECT_EQ(
        Shown({.file = stored.file, .directory = stored.directory, .codePage = stored.codePage},
              kUtf8Page),
        name);
  }
  EXPECT_EQ(EncodeName(kHyouUtf8, kUtf8Page).file, kHyou932);
  EXPECT_EQ(EncodeName(kHyou932, k932).file, kHyou932);
}

TEST(EngineMemberName, KeysIgnoreCaseOfPlainAndFullWidthLetters) {
  EXPECT_EQ(KeyOf("ABC\\d.TXT", k932), KeyOf("abc\\D.txt", k932));
  EXPECT_EQ(KeyOf("\x82\x60", k932), KeyOf("\x82\x81", k932));  // full-width A and a
  // Trail bytes that look like A and a.
  EXPECT_NE(KeyOf("\x83\x41", k932), KeyOf("\x83\x61", k932));
}

}  // namespace
}  // namespace kozor::container
