// StringTest.cpp - CString: sharing, aliasing, pieces, conversions.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/classlib/ClassLib.h"
#include "tests/support/CodePageScope.h"

std::string WhatTheirsSay();  // GuestOther.cpp
// GuestNames.h and our headers, whichever comes first.
bool TheirsComing_first();
bool TheirsComing_last();

namespace {

using kozor::test::CodePageScope;

const char* TextOf(const CString& string) {
  return string;
}

TEST(ClassLibString, IsAnotherClassThanOneOfTheSameNameInAnotherFile) {
  EXPECT_EQ(WhatTheirsSay(), "CString CFile CObject");
  EXPECT_EQ(CString("ours").GetLength(), 4);
  EXPECT_FALSE(CFile().IsOpen());
  EXPECT_EQ(WhatTheirsSay(), "CString CFile CObject");
}

#if !defined(_WIN32)
TEST(ClassLibString, StandsBesideAProgramsOwnNamesInOneFile) {
  EXPECT_TRUE(TheirsComing_first());
  EXPECT_TRUE(TheirsComing_last());
}
#endif

TEST(ClassLibString, CopiesShareTheirTextUntilOneChanges) {
  CString first = "text";
  CString second = first;
  CString third;
  third = second;
  EXPECT_EQ(TextOf(first), TextOf(third));
  second += "!";
  third.GetBuffer(0)[0] = 'n';
  third.ReleaseBuffer();
  EXPECT_STREQ(first, "text");
  EXPECT_STREQ(second, "text!");
  EXPECT_STREQ(third, "next");
}

TEST(ClassLibString, EmptyStringsStayEmptyWhateverHappensToOthers) {
  CString empty = nullptr;
  CString changed;
  changed.GetBuffer(4)[0] = 'x';
  changed.ReleaseBuffer(1);
  CString moved = std::move(changed);
  EXPECT_STREQ(moved, "x");
  EXPECT_STREQ(changed, "");  // NOLINT(bugprone-use-after-move): a string moved from is empty
  EXPECT_TRUE(empty.IsEmpty());
  empty.ReleaseBuffer(3);  // without GetBuffer it does nothing
  EXPECT_STREQ(CString(), "");
  moved.Empty();
  EXPECT_EQ(moved, empty);
}

TEST(ClassLibString, ChangesByPartsOfItself) {
  CString s = "abc";
  s += s;
  EXPECT_STREQ(s, "abcabc");
  for (int i = 0; i < 6; ++i) s += s + 1;  // grows in place as well as into new memory
  EXPECT_EQ(s.GetLength(), 5 * 64 + 1);
  s = s + (s.GetLength() - 4);
  EXPECT_STREQ(s, "cabc");
  s = s.Mid(1, 2);
  EXPECT_STREQ(s, "ab");
  s = s + s + s;
  const CString& same = s;
  s = same;
  s = s + 3;
  EXPECT_STREQ(s, "bab");
}

TEST(ClassLibString, SumsAndOrdersTakeBothKindsOfText) {
  const CodePageScope japanese(932);
  const CString a = "a";
  EXPECT_STREQ('x' + a + a + "b" + 'c', "xaabc");
  EXPECT_STREQ("<" + a + static_cast<const char*>(nullptr), "<a");
  EXPECT_LT(CString("\xB1"), CString("\x82\xA0"));  // one byte before two
  EXPECT_GT(a.Compare(nullptr), 0);
  EXPECT_EQ(CString("A\x82\x60").CompareNoCase("a\x82\x81"), 0);
}

TEST(ClassLibString, PiecesAreCutDownToTheText) {
  const CString s = "0123456789";
  EXPECT_STREQ(s.Left(3), "012");
  EXPECT_STREQ(s.Left(99), "0123456789");
  EXPECT_STREQ(s.Left(-1), "");
  EXPECT_STREQ(s.Right(3), "789");
  EXPECT_STREQ(s.Right(99), "0123456789");
  EXPECT_STREQ(s.Right(-1), "");
  EXPECT_STREQ(s.Mid(8), "89");
  EXPECT_STREQ(s.Mid(8, 99), "89");
  EXPECT_STREQ(s.Mid(99), "");
  EXPECT_STREQ(s.Mid(-5, 2), "01");
  EXPECT_STREQ(s.Mid(3, -2), "");
}

TEST(ClassLibString, TakesItsLengthFromTheTerminatorOrTheCaller) {
  CString s = "x";
  char* buffer = s.GetBuffer(8);
  EXPECT_STREQ(buffer, "x");
  for (int i = 0; i < 8; ++i) buffer[i] = static_cast<char>('a' + i);
  s.ReleaseBuffer();  // no terminator within the requested size
  EXPECT_STREQ(s, "abcdefgh");
  s.GetBuffer(0)[3] = '\0';
  s.ReleaseBuffer();
  EXPECT_EQ(s.GetLength(), 3);
  EXPECT_THROW(s.GetBuffer(INT_MAX), std::bad_array_new_length);
  EXPECT_STREQ(s, "abc");
  const CString withZero("a\0b", 3);
  EXPECT_EQ((withZero + withZero).GetLength(), 6);
}

TEST(ClassLibString, GrowsInFewSteps) {
  CString s;
  int moves = 0;
  for (int i = 0; i < 1'000'000; ++i) {
    const char* before = s;
    s += 'x';
    if (TextOf(s) != before) ++moves;
  }
  EXPECT_EQ(s.GetLength(), 1'000'000);
  EXPECT_LT(moves, 50);
}

TEST(ClassLibString, TakesWideTextThroughTheCodePage) {
  const WCHAR wide[] = {'a', 0x8868, 0x3042, 0};
  {
    const CodePageScope japanese(932);
    EXPECT_STREQ(CString(wide), "a\x95\x5C\x82\xA0");
    EXPECT_STREQ(CString(wide, 2), "a\x95\x5C");
  }
  const CodePageScope utf8(65001);
  EXPECT_STREQ(CString(wide), "a\xE8\xA1\xA8\xE3\x81\x82");
  EXPECT_STREQ(CString(static_cast<const WCHAR*>(nullptr)), "");
}

TEST(ClassLibString, MayBeSharedBetweenThreads) {
  const CString shared = "shared text";
  std::vector<std::thread> threads;
  std::vector<int> faults(4);
  for (int& fault : faults) {
    threads.emplace_back([&fault, own = shared] {
      for (int i = 0; i < 20'000; ++i) {
        CString copy = own;
        CString other = copy;
        copy += '!';
        if (other != "shared text" || copy != "shared text!") ++fault;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, std::vector<int>(4));
  EXPECT_STREQ(shared, "shared text");
}

}  // namespace
