// TextApi.cpp - the Win32 and C run-time functions that step through, compare and convert text.
#include <atomic>
#include <string>
#include <string_view>

#include "platform/text/CodePage.h"
#include "platform/text/ForeignPage.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/PosixText.h"
#include "platform/win32/TextCompare.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;
using namespace kozor::text;

std::atomic<unsigned> namePage{0};

kozor::TextCompare Comparison() {
  return kozor::TextCompare(IsLeadByte(0x82));
}

// Copies the converted text to the caller, as both calls do: a capacity of 0 queries the size.
template <typename Text, typename Unit>
int GiveResult(const Text& converted, Unit* target, int capacity) {
  if (capacity == 0) return static_cast<int>(converted.size());
  if (converted.size() > static_cast<std::size_t>(capacity)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  converted.copy(target, converted.size());
  return static_cast<int>(converted.size());
}

// The source as a view.  A length of -1 means up to and including the terminator.
template <typename Unit>
std::basic_string_view<Unit> SourceView(const Unit* text, int length) {
  if (length >= 0) return {text, static_cast<std::size_t>(length)};
  return {text, std::char_traits<Unit>::length(text) + 1};
}

bool GoodArguments(const void* source, int sourceLength, const void* target, int capacity) {
  return source != nullptr && sourceLength != 0 && sourceLength >= -1 && capacity >= 0 &&
         (capacity == 0 || (target != nullptr && target != source));
}

const CodePage* PageByNumber(UINT codePage) {
  return codePage == CP_ACP ? &ActivePage() : FindCodePage(codePage);
}

}  // namespace

int KzSetNameCodePage(unsigned int codePage) {
  const bool isKnown =
      codePage == 0 || FindCodePage(codePage) != nullptr || FindForeignPage(codePage) != nullptr;
  if (!isKnown) return Fail(ERROR_INVALID_PARAMETER);
  namePage.store(codePage);
  return TRUE;
}

unsigned int KzNameCodePage() {
  return namePage.load();
}

UINT WINAPI GetACP() {
  return ActiveCodePage();
}

BOOL WINAPI IsDBCSLeadByte(BYTE byte) {
  return IsLeadByte(byte) ? TRUE : FALSE;
}

LPSTR WINAPI CharNextA(LPCSTR text) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
  if (*bytes != 0) text += Comparison().First(bytes).bytes;
  return const_cast<LPSTR>(text);
}

LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR current) {
  // Lead and trail bytes can be told apart only by scanning from the start.
  LPCSTR previous = start;
  for (LPCSTR next = start; next < current && *previous != 0; next = CharNextA(next)) {
    previous = next;
  }
  return const_cast<LPSTR>(previous);
}

unsigned int _mbctolower(unsigned int character) {
  return Comparison().Lower(character);
}

int _mbscmp(const unsigned char* a, const unsigned char* b) {
  return Comparison().Compare(a, b, false);
}

int _mbsicmp(const unsigned char* a, const unsigned char* b) {
  return Comparison().Compare(a, b, true);
}

int _mbsnbcmp(const unsigned char* a, const unsigned char* b, std::size_t bytes) {
  return Comparison().CompareBytes(a, b, bytes);
}

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH text, int bytes, LPWSTR wide,
                               int units) {
  const CodePage* const page = PageByNumber(codePage);
  if (page == nullptr || !GoodArguments(text, bytes, wide, units)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if ((flags & ~(MB_PRECOMPOSED | MB_ERR_INVALID_CHARS)) != 0) return Fail(ERROR_INVALID_FLAGS);
  std::u16string converted;
  for (std::string_view rest = SourceView(text, bytes); !rest.empty();) {
    const Decoded next = page->decode(rest);
    rest.remove_prefix(next.bytes);
    if (next.character != kNoCharacter) {
      AppendUtf16(converted, next.character);
    } else if ((flags & MB_ERR_INVALID_CHARS) != 0) {
      return Fail(ERROR_NO_UNICODE_TRANSLATION);
    } else {
      AppendUtf16(converted, page->replacement);
    }
  }
  return GiveResult(converted, wide, units);
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH wide, int units, LPSTR text,
                               int bytes, LPCCH defaultChar, LPBOOL usedDefaultChar) {
  const CodePage* const page = PageByNumber(codePage);
  if (page == nullptr || !GoodArguments(wide, units, text, bytes)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const bool utf8 = page->number == kUtf8;
  if (utf8 && (defaultChar != nullptr || usedDefaultChar != nullptr)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const DWORD known = utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  if ((flags & ~known) != 0) return Fail(ERROR_INVALID_FLAGS);

  std::string converted;
  bool usedDefault = false;
  for (std::u16string_view rest = SourceView(wide, units); !rest.empty();) {
    const Decoded next = DecodeUtf16(rest);
    rest.remove_prefix(next.bytes);
    if (next.character != kNoCharacter && page->append(converted, next.character)) continue;
    if ((flags & WC_ERR_INVALID_CHARS) != 0) return Fail(ERROR_NO_UNICODE_TRANSLATION);
    usedDefault = true;
    if (utf8) {
      AppendUtf8(converted, page->replacement);
    } else {
      converted += defaultChar != nullptr ? *defaultChar : '?';
    }
  }
  if (usedDefaultChar != nullptr) *usedDefaultChar = usedDefault ? TRUE : FALSE;
  return GiveResult(converted, text, bytes);
}
