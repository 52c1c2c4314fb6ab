// CharacterApi.cpp - the Win32 and C run-time functions that walk and compare text of the active
// code page.
#include <cstring>

#include "platform/win32/PosixText.h"
#include "platform/win32/posix/CodePage.h"

namespace {

using kozor::posix::IsLeadByte;

struct Character {
  unsigned value;     // lead * 256 + trail for two bytes
  std::size_t bytes;  // 1 or 2; 1 at the terminator
};

// The first character of text that has at least one byte left, the terminator included.
Character FirstCharacter(const unsigned char* text) {
  if (IsLeadByte(text[0]) && text[1] != 0) return {text[0] * 256U + text[1], 2};
  return {text[0], 1};
}

int Sign(unsigned a, unsigned b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

int CompareText(const unsigned char* a, const unsigned char* b, bool foldCase) {
  for (;;) {
    const Character left = FirstCharacter(a);
    const Character right = FirstCharacter(b);
    const unsigned leftValue = foldCase ? _mbctolower(left.value) : left.value;
    const unsigned rightValue = foldCase ? _mbctolower(right.value) : right.value;
    if (leftValue != rightValue || leftValue == 0) return Sign(leftValue, rightValue);
    a += left.bytes;
    b += right.bytes;
  }
}

}  // namespace

UINT WINAPI GetACP() {
  return kozor::posix::ActiveCodePage();
}

BOOL WINAPI IsDBCSLeadByte(BYTE byte) {
  return IsLeadByte(byte) ? TRUE : FALSE;
}

LPSTR WINAPI CharNextA(LPCSTR text) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  if (*bytes != 0) text += FirstCharacter(bytes).bytes;
  return const_cast<LPSTR>(text);
}

LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR current) {
  // Whether a byte is a lead or a trail byte shows only from the beginning.
  LPCSTR previous = start;
  for (LPCSTR next = start; next < current && *previous != 0; next = CharNextA(next)) {
    previous = next;
  }
  return const_cast<LPSTR>(previous);
}

unsigned int _mbctolower(unsigned int character) {
  if (character >= 'A' && character <= 'Z') return character + ('a' - 'A');
  // Full-width capitals 0x8260 to 0x8279.
  const bool fullWidth = character >= 0x8260 && character <= 0x8279;
  return fullWidth && IsLeadByte(0x82) ? character + 0x21 : character;
}

int _mbscmp(const unsigned char* a, const unsigned char* b) {
  return CompareText(a, b, false);
}

int _mbsicmp(const unsigned char* a, const unsigned char* b) {
  return CompareText(a, b, true);
}

int _mbsnbcmp(const unsigned char* a, const unsigned char* b, std::size_t bytes) {
  // A character cut in two by the limit counts by its first byte.
  for (std::size_t done = 0; done < bytes;) {
    Character left = FirstCharacter(a + done);
    Character right = FirstCharacter(b + done);
    if (left.bytes > bytes - done) left = {a[done], 1};
    if (right.bytes > bytes - done) right = {b[done], 1};
    if (left.value != right.value || left.value == 0) return Sign(left.value, right.value);
    done += left.bytes;
  }
  return 0;
}
