// ChosenPages.cpp - the part of ActivePage.h in the platform library.
#include <windows.h>

#include <atomic>

#include "platform/text/CodePage.h"
#include "platform/text/ForeignPage.h"
#include "platform/win32/CodePages.h"
#include "platform/win32/windows/ActivePage.h"

namespace {

std::atomic<unsigned int> activePage{0};
std::atomic<unsigned int> namePage{0};

int Refuse() {
  SetLastError(ERROR_INVALID_PARAMETER);
  return 0;
}

}  // namespace

unsigned int KzChosenCodePage() {
  return activePage.load();
}

unsigned int KzChosenNameCodePage() {
  return namePage.load();
}

int KzSetActiveCodePage(unsigned int codePage) {
  using namespace kozor::text;
  if (codePage != kCodePage932 && codePage != kUtf8 && codePage != GetACP()) return Refuse();
  activePage.store(codePage);
  return 1;
}

int KzSetNameCodePage(unsigned int codePage) {
  using namespace kozor::text;
  const bool isKnown =
      codePage == 0 || FindCodePage(codePage) != nullptr || FindForeignPage(codePage) != nullptr;
  if (!isKnown) return Refuse();
  namePage.store(codePage);
  return 1;
}
