// WindowsNameTest.cpp - a table of names that Windows can't create.
#include "platform/text/WindowsName.h"

#include <gtest/gtest.h>

namespace kozor::text {
namespace {

TEST(PlatformWindowsName, DevicesAndLostEndingsAreForbidden) {
  for (const std::string_view name :
       {"nul",     "NUL",    "con.txt", "aux.tar.gz", "prn ",  "com1",      "COM9.a",
        "lpt1 .x", "conin$", "x.",      "x ",         ".",     "..",        "",
        "a:b",     "a?",     "a\\b",    "a/b",        "tab\t", "\"quoted\""}) {
    EXPECT_TRUE(IsNameForbiddenByWindows(name)) << name;
  }
  for (const std::string_view name : {"null", "con1", "com0", "com", "com10", "lpt", "a.nul",
                                      ".nul", " nul", "x. y", ".x", "\xE8\xA1\xA8"}) {
    EXPECT_FALSE(IsNameForbiddenByWindows(name)) << name;
  }
  EXPECT_TRUE(IsNameForbiddenByWindows(std::wstring_view(L"Nul.txt")));
  EXPECT_FALSE(IsNameForbiddenByWindows(std::wstring_view(L"\u8868.txt")));
}

}  // namespace
}  // namespace kozor::text
