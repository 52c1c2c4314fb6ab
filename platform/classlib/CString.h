// CString.h - a byte string that shares its text.
//
// Copies of a CString share one text and count the references to it; a change gives the changed
// object a text of its own.  The count is atomic, so strings that share a text may be used by
// different threads; one and the same CString by one thread at a time only.
//
// The text is in the active ANSI code page and always ends in a terminator.  A CString is one
// pointer wide and converts to const char*; the pointer is valid until the next change or the end
// of the object.  It indexes that text too: s[0] is the first byte, s + 1 the address of the
// second.
//
// Lengths are bytes and at most kMaxLength; a longer text throws std::bad_array_new_length.
#pragma once

#include <atomic>
#include <climits>
#include <compare>
#include <concepts>

#include "platform/Export.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CString {
 public:
  enum : int { kMaxLength = INT_MAX - 64 };  // a constant that needs no export

  CString() noexcept;
  CString(const CString& other) noexcept;
  CString(CString&& other) noexcept;
  // A null `text` is an empty one.
  CString(const char* text);  // NOLINT(google-explicit-constructor)
  // The first `length` bytes at `text`, whatever they are.
  CString(const char* text, int length);
  explicit CString(char character, int repeat = 1);
  // Converts 16-bit text to the active code page; what it can't express becomes its default
  // character.  A null `text` is an empty one.
  explicit CString(const WCHAR* text);
  CString(const WCHAR* text, int length);
  ~CString();

  CString& operator=(const CString& other) noexcept;
  CString& operator=(CString&& other) noexcept;
  CString& operator=(const char* other);

  operator const char*() const noexcept { return text; }  // NOLINT(google-explicit-constructor)
  int GetLength() const noexcept { return Data()->length; }
  bool IsEmpty() const noexcept { return GetLength() == 0; }
  void Empty() noexcept;
  // The byte at `index`, which must lie in the text or on its terminator.
  char GetAt(int index) const { return text[index]; }

  // Pieces, in bytes.  Positions and counts beyond the text are cut down to it.
  CString Left(int count) const;
  CString Right(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;

  // May append a part of the string to itself.
  CString& operator+=(const CString& other);
  CString& operator+=(const char* other);
  CString& operator+=(char character);

  // Negative, 0 or positive, as _mbscmp and _mbsicmp give it; both end at the first terminator.
  // The operators below compare as Compare does.
  int Compare(const char* other) const;
  int CompareNoCase(const char* other) const;

  // The text for writing: room for at least `minLength` bytes and the terminator, with the present
  // text in it.  The text is the object's own from then on.  ReleaseBuffer must follow before the
  // next other use; it takes the new length, or with -1 finds it by the terminator.
  char* GetBuffer(int minLength);
  void ReleaseBuffer(int newLength = -1);

  friend bool operator==(const CString& left, const CString& right) {
    return left.text == right.text || left.Compare(right.text) == 0;
  }
  friend bool operator==(const CString& left, const char* right) {
    return left.Compare(right) == 0;
  }
  friend std::strong_ordering operator<=>(const CString& left, const CString& right) {
    return left.Compare(right.text) <=> 0;
  }
  friend std::strong_ordering operator<=>(const CString& left, const char* right) {
    return left.Compare(right) <=> 0;
  }

  // A left side that is a temporary lends its memory to the result.
  friend CString operator+(CString left, const CString& right) {
    left += right;
    return left;
  }
  friend CString operator+(CString left, const char* right) {
    left += right;
    return left;
  }
  friend CString operator+(const char* left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
  }
  // For char alone: s + 1 is the address of the second byte.
  friend CString operator+(CString left, std::same_as<char> auto right) {
    left += right;
    return left;
  }
  friend CString operator+(std::same_as<char> auto left, const CString& right) {
    CString sum(left);
    sum += right;
    return sum;
  }

 private:
  // What stands in front of every text.
  struct Header {
    std::atomic<int> references;  // CStrings that point here; unused in the shared empty text
    int length;                   // bytes before the terminator
    int capacity;                 // bytes that fit before the terminator
  };
  // The text of every empty string: never written, counted or freed.
  struct EmptyText {
    Header header;
    char terminator;
  };
  static constinit EmptyText emptyText;

  Header* Data() const noexcept { return reinterpret_cast<Header*>(text) - 1; }
  bool IsShared() const noexcept;
  void Release() noexcept;
  void Append(const char* bytes, int count);
  static char* Allocate(int capacity);

  char* text;
};

static_assert(sizeof(CString) == sizeof(void*));

}  // namespace kozor_names
