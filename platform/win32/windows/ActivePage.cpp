// ActivePage.cpp - see ActivePage.h.
#include "platform/win32/windows/ActivePage.h"

#include <windows.h>

namespace kozor::windows {

namespace {

using Question = unsigned int (*)();

// A function of the platform library; null if the process hasn't loaded it.
Question FindInPlatform(const char* name) {
  const HMODULE platform = GetModuleHandleA("KoZorPlatform.dll");
  if (platform == nullptr) return nullptr;
  const FARPROC found = GetProcAddress(platform, name);
  return reinterpret_cast<Question>(reinterpret_cast<void*>(found));
}

}  // namespace

unsigned int ActivePage() {
  static const Question kAsk = FindInPlatform("KzChosenCodePage");
  const unsigned int chosen = kAsk != nullptr ? kAsk() : 0;
  return chosen != 0 ? chosen : GetACP();
}

unsigned int NamePage() {
  static const Question kAsk = FindInPlatform("KzChosenNameCodePage");
  return kAsk != nullptr ? kAsk() : 0;
}

}  // namespace kozor::windows
