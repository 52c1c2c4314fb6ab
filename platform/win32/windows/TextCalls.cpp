// TextCalls.cpp - the calls of Calls.h that step through, compare and convert text.
#include "platform/text/CodePage.h"
#include "platform/win32/TextCompare.h"
#include "platform/win32/windows/ActivePage.h"
#include "platform/win32/windows/Calls.h"

namespace kozor::windows {

namespace {

bool IsOurs(unsigned int page) {
  return page == text::kCodePage932 || page == text::kUtf8;
}

TextCompare Comparison(unsigned int page) {
  return TextCompare(page == text::kCodePage932);
}

}  // namespace

UINT GetACP() {
  return ActivePage();
}

BOOL IsDBCSLeadByte(BYTE byte) {
  return IsDBCSLeadByteEx(ActivePage(), byte);
}

LPSTR CharNextA(LPCSTR text) {
  return CharNextExA(static_cast<WORD>(ActivePage()), text, 0);
}

LPSTR CharPrevA(LPCSTR start, LPCSTR current) {
  return CharPrevExA(static_cast<WORD>(ActivePage()), start, current, 0);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH wide, int units, LPSTR text, int bytes,
                        LPCCH defaultChar, LPBOOL usedDefaultChar) {
  return ::WideCharToMultiByte(codePage == CP_ACP ? ActivePage() : codePage, flags, wide, units,
                               text, bytes, defaultChar, usedDefaultChar);
}

unsigned int _mbctolower(unsigned int character) {
  const unsigned int page = ActivePage();
  return IsOurs(page) ? Comparison(page).Lower(character) : ::_mbctolower(character);
}

int _mbscmp(const unsigned char* a, const unsigned char* b) {
  const unsigned int page = ActivePage();
  return IsOurs(page) ? Comparison(page).Compare(a, b, false) : ::_mbscmp(a, b);
}

int _mbsicmp(const unsigned char* a, const unsigned char* b) {
  const unsigned int page = ActivePage();
  return IsOurs(page) ? Comparison(page).Compare(a, b, true) : ::_mbsicmp(a, b);
}

int _mbsnbcmp(const unsigned char* a, const unsigned char* b, std::size_t bytes) {
  const unsigned int page = ActivePage();
  return IsOurs(page) ? Comparison(page).CompareBytes(a, b, bytes) : ::_mbsnbcmp(a, b, bytes);
}

}  // namespace kozor::windows
