// CodePageScope.h - sets the active code page for the duration of a test.
#pragma once

#include "platform/win32/CodePages.h"
#include "platform/win32/Win32.h"

namespace kozor::test {

class CodePageScope {
 public:
  explicit CodePageScope(unsigned int codePage) : before(GetACP()) {
    KzSetActiveCodePage(codePage);
  }
  ~CodePageScope() { KzSetActiveCodePage(before); }
  CodePageScope(const CodePageScope&) = delete;
  CodePageScope& operator=(const CodePageScope&) = delete;

 private:
  unsigned int before;
};

}  // namespace kozor::test
