// TextCompare.h - the comparisons of the Windows C run-time library in code page 932 and UTF-8, for
// every system.  Case is folded for ASCII letters and, in 932, full-width Latin letters.
#pragma once

#include <cstddef>

#include "platform/text/Case.h"
#include "platform/text/CodePage.h"

namespace kozor {

// Compares text of one code page.  Characters have one byte, or with `hasPairs` (932) one or two.
class TextCompare {
 public:
  explicit TextCompare(bool hasPairs) : pairs(hasPairs) {}

  struct Character {
    unsigned value;     // lead * 256 + trail for two bytes
    std::size_t bytes;  // 1 or 2; 1 at the terminator
  };
  // The first character of a text, which may be its terminator.
  Character First(const unsigned char* text) const {
    if (pairs && text::IsLeadByte932(text[0]) && text[1] != 0) {
      return {text[0] * 256U + text[1], 2};
    }
    return {text[0], 1};
  }

  unsigned int Lower(unsigned int character) const {
    return character < 0x100 || pairs ? text::ToLowerLatin932(character) : character;
  }

  int Compare(const unsigned char* a, const unsigned char* b, bool foldCase) const {
    for (;;) {
      const Character left = First(a);
      const Character right = First(b);
      const unsigned leftValue = foldCase ? Lower(left.value) : left.value;
      const unsigned rightValue = foldCase ? Lower(right.value) : right.value;
      if (leftValue != rightValue || leftValue == 0) return Sign(leftValue, rightValue);
      a += left.bytes;
      b += right.bytes;
    }
  }

  // Compares at most `bytes` bytes.  Of a character that crosses this limit, only the first byte
  // counts.
  int CompareBytes(const unsigned char* a, const unsigned char* b, std::size_t bytes) const {
    for (std::size_t done = 0; done < bytes;) {
      Character left = First(a + done);
      Character right = First(b + done);
      if (left.bytes > bytes - done) left = {a[done], 1};
      if (right.bytes > bytes - done) right = {b[done], 1};
      if (left.value != right.value || left.value == 0) return Sign(left.value, right.value);
      done += left.bytes;
    }
    return 0;
  }

 private:
  static int Sign(unsigned a, unsigned b) { return a < b ? -1 : a > b ? 1 : 0; }

  const bool pairs;
};

}  // namespace kozor
