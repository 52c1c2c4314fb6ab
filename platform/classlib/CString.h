// CString.h - a reference-counted byte string.
//
// Copies of a CString share one text and count the references to it; a modified object first gets
// its own copy.  The count is atomic, so different threads may use strings that share a text, but
// not the same CString object at once.
//
// The text is in the active ANSI code page and always ends in a terminator.  A CString is one
// pointer wide and converts to const char*; the pointer is valid until the object is modified or
// destroyed.  Through that conversion s[0] is the first byte and s + 1 the address of the second.
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
  enum : int { kMaxLength = INT_MAX - 64 };  // an enumerator needs no export

  CString() noexcept;
  CString(const CString& other) noexcept;
  CString(CString&& other) noexcept;
  // A null `text` reads as the empty one.
  CString(const char* text);  // NOLINT(google-explicit-constructor)
  // The first `length` bytes at `text`; they may include 0.
  CString(const char* text, int length);
  explicit CString(char character, int repeat = 1);
  // Converts 16-bit text to the active code page; characters that it can't express become its
  // default character.  A null `text` reads as the empty one.
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

  // Substrings, counted in bytes.  Positions and counts outside the text are clamped.
  CString Left(int count) const;
  CString Right(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;

  // May append a part of the string to itself.
  CString& operator+=(const CString& other);
  CString& operator+=(const char* other);
  CString& operator+=(char character);

  // Negative, 0 or positive, as from _mbscmp and _mbsicmp; both stop at the first terminator.  The
  // operators below compare as Compare does.
  int Compare(const char* other) const;
  int CompareNoCase(const char* other) const;

  // Unshares the text and returns it for writing, with room for at least `minLength` bytes and the
  // terminator.  ReleaseBuffer must be called before any other use of the object; it sets the new
  // length, or finds the terminator if that is -1.
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

  // A temporary on the left is reused for the result.
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
  // For char only: s + 1 must stay the address of the second byte.
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
  // Precedes every text in memory.
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
