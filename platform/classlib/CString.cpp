// CString.cpp - see CString.h.
#include "platform/classlib/CString.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

const unsigned char* Unsigned(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

// The length of a text that may be null.
int LengthOf(const char* text) {
  if (text == nullptr) return 0;
  const std::size_t length = std::strlen(text);
  if (length > CString::kMaxLength) throw std::bad_array_new_length();
  return static_cast<int>(length);
}

int LengthOf(const WCHAR* text) {
  if (text == nullptr) return 0;
  int length = 0;
  while (text[length] != 0) {
    if (++length > CString::kMaxLength) throw std::bad_array_new_length();
  }
  return length;
}

}  // namespace

constinit CString::EmptyText CString::emptyText{{0, 0, 0}, '\0'};

CString::CString() noexcept : text(&emptyText.terminator) {
  // A text immediately follows its header.
  static_assert(offsetof(EmptyText, terminator) == sizeof(Header));
}

CString::CString(const CString& other) noexcept : text(other.text) {
  if (text != &emptyText.terminator) Data()->references.fetch_add(1, std::memory_order_relaxed);
}

CString::CString(CString&& other) noexcept
    : text(std::exchange(other.text, &emptyText.terminator)) {}

CString::CString(const char* other) : CString(other, LengthOf(other)) {}

CString::CString(const char* other, int length) : CString() {
  Append(other, length);
}

CString::CString(char character, int repeat) : CString() {
  if (repeat <= 0) return;
  std::memset(GetBuffer(repeat), character, static_cast<std::size_t>(repeat));
  ReleaseBuffer(repeat);
}

CString::CString(const WCHAR* other) : CString(other, LengthOf(other)) {}

CString::CString(const WCHAR* other, int length) : CString() {
  if (length <= 0) return;
  const int bytes = WideCharToMultiByte(CP_ACP, 0, other, length, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0) return;
  WideCharToMultiByte(CP_ACP, 0, other, length, GetBuffer(bytes), bytes, nullptr, nullptr);
  ReleaseBuffer(bytes);
}

CString::~CString() {
  Release();
}

CString& CString::operator=(const CString& other) noexcept {
  CString copy(other);
  std::swap(text, copy.text);
  return *this;
}

CString& CString::operator=(CString&& other) noexcept {
  std::swap(text, other.text);
  return *this;
}

CString& CString::operator=(const char* other) {
  const int length = LengthOf(other);
  if (IsShared() || Data()->capacity < length) return *this = CString(other, length);
  // `other` may point into this text.
  if (length > 0) std::memmove(text, other, static_cast<std::size_t>(length));
  ReleaseBuffer(length);
  return *this;
}

void CString::Empty() noexcept {
  Release();
  text = &emptyText.terminator;
}

CString CString::Left(int count) const {
  return Mid(0, count);
}

CString CString::Right(int count) const {
  return Mid(GetLength() - std::clamp(count, 0, GetLength()));
}

CString CString::Mid(int first) const {
  return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
  first = std::clamp(first, 0, GetLength());
  count = std::clamp(count, 0, GetLength() - first);
  if (count == GetLength()) return *this;
  return CString(text + first, count);
}

CString& CString::operator+=(const CString& other) {
  Append(other.text, other.GetLength());
  return *this;
}

CString& CString::operator+=(const char* other) {
  Append(other, LengthOf(other));
  return *this;
}

CString& CString::operator+=(char character) {
  Append(&character, 1);
  return *this;
}

int CString::Compare(const char* other) const {
  return _mbscmp(Unsigned(text), Unsigned(other != nullptr ? other : ""));
}

int CString::CompareNoCase(const char* other) const {
  return _mbsicmp(Unsigned(text), Unsigned(other != nullptr ? other : ""));
}

char* CString::GetBuffer(int minLength) {
  if (!IsShared() && Data()->capacity >= minLength) return text;
  const int length = GetLength();
  char* own = Allocate(std::max(minLength, length));
  std::memcpy(own, text, static_cast<std::size_t>(length) + 1);
  Release();
  text = own;
  Data()->length = length;
  return text;
}

void CString::ReleaseBuffer(int newLength) {
  if (IsShared()) return;  // no GetBuffer before this call: nothing to do
  const int capacity = Data()->capacity;
  if (newLength < 0) {
    const void* terminator = std::memchr(text, 0, static_cast<std::size_t>(capacity));
    newLength = terminator == nullptr
                    ? capacity
                    : static_cast<int>(static_cast<const char*>(terminator) - text);
  }
  Data()->length = std::min(newLength, capacity);
  text[Data()->length] = '\0';
}

// Whether others share the text, so that it must not be written.  Acquire: when the count is one,
// the accesses of threads that have released the text are complete.
bool CString::IsShared() const noexcept {
  return text == &emptyText.terminator || Data()->references.load(std::memory_order_acquire) != 1;
}

// Leaves `text` dangling.
void CString::Release() noexcept {
  if (text == &emptyText.terminator) return;
  Header* header = Data();
  if (header->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  header->~Header();
  ::operator delete(header);
}

// `bytes` may point into this text.
void CString::Append(const char* bytes, int count) {
  if (count <= 0) return;
  const int length = GetLength();
  if (count > kMaxLength - length) throw std::bad_array_new_length();
  const int newLength = length + count;
  if (IsShared() || Data()->capacity < newLength) {
    // Spare capacity only for a text that has already grown once, not for a single concatenation.
    const int spare = IsShared() ? 0 : std::min(newLength / 2, kMaxLength - newLength);
    char* grown = Allocate(newLength + spare);
    std::memcpy(grown, text, static_cast<std::size_t>(length));
    std::memcpy(grown + length, bytes, static_cast<std::size_t>(count));
    Release();
    text = grown;
  } else {
    std::memmove(text + length, bytes, static_cast<std::size_t>(count));
  }
  Data()->length = newLength;
  text[newLength] = '\0';
}

// A new unshared text of length 0, with room for `capacity` bytes and a terminator.
char* CString::Allocate(int capacity) {
  if (capacity > kMaxLength) throw std::bad_array_new_length();
  void* memory = ::operator new(sizeof(Header) + static_cast<std::size_t>(capacity) + 1);
  auto* header = new (memory) Header{1, 0, capacity};
  char* text = reinterpret_cast<char*>(header + 1);
  text[0] = '\0';
  return text;
}
