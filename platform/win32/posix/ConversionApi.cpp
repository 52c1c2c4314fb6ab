// ConversionApi.cpp - MultiByteToWideChar and WideCharToMultiByte.
#include <string>
#include <string_view>

#include "platform/win32/PosixText.h"
#include "platform/win32/posix/CodePage.h"
#include "platform/win32/posix/LastError.h"

namespace {

using namespace kozor::posix;

void AppendUtf16(std::u16string& text, char32_t character) {
  if (character < 0x10000) {
    text += static_cast<char16_t>(character);
    return;
  }
  text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
  text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
}

// The first character of UTF-16 text that isn't empty.
Decoded DecodeUtf16(std::u16string_view text) {
  const char32_t first = text[0];
  if (first < 0xD800 || first > 0xDFFF) return {first, 1};
  if (first > 0xDBFF || text.size() < 2) return {kNoCharacter, 1};
  const char32_t second = text[1];
  if (second < 0xDC00 || second > 0xDFFF) return {kNoCharacter, 1};
  return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 2};
}

// Copies a converted text out by the rules that both calls share: a capacity of 0 asks for the
// size.
template <typename Text, typename Unit>
int GiveResult(const Text& converted, Unit* target, int capacity) {
  if (capacity == 0) return static_cast<int>(converted.size());
  if (converted.size() > static_cast<std::size_t>(capacity)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  converted.copy(target, converted.size());
  return static_cast<int>(converted.size());
}

// The source as a view: its length is given, or -1 for up to and with the terminator.
template <typename Unit>
std::basic_string_view<Unit> SourceView(const Unit* text, int length) {
  if (length >= 0) return {text, static_cast<std::size_t>(length)};
  return {text, std::char_traits<Unit>::length(text) + 1};
}

bool GoodArguments(const void* source, int sourceLength, const void* target, int capacity) {
  return source != nullptr && sourceLength != 0 && sourceLength >= -1 && capacity >= 0 &&
         (capacity == 0 || (target != nullptr && target != source));
}

}  // namespace

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH text, int bytes, LPWSTR wide,
                               int units) {
  const CodePage* const page = FindCodePage(codePage);
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
  const CodePage* const page = FindCodePage(codePage);
  if (page == nullptr || !GoodArguments(wide, units, text, bytes)) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const bool utf8 = page == FindCodePage(CP_UTF8);
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
