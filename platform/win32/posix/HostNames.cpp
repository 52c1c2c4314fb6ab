// HostNames.cpp - see HostNames.h.
#include "platform/win32/posix/HostNames.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/text/Case.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

using namespace text;

namespace {

std::atomic<const CodePage*> activePage{FindCodePage(kCodePage932)};

// Longest name that fits WIN32_FIND_DATAA::cFileName with its terminator, in bytes.
constexpr std::size_t kMaxNameBytes = MAX_PATH - 1;

constexpr bool IsForbidden(char32_t character) {
  if (character < 0x20) return true;
  switch (character) {
    case '"':
    case '*':
    case '/':
    case ':':
    case '<':
    case '>':
    case '?':
    case '\\':
    case '|':
      return true;
    default:
      return false;
  }
}

// Fast path: most names are ASCII and the same in every form.
constexpr auto kIsPlain = [] {
  std::array<bool, 256> plain{};
  for (unsigned byte = 0; byte < 0x80; ++byte) plain[byte] = !IsForbidden(byte);
  return plain;
}();
bool IsPlain(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return kIsPlain[static_cast<unsigned char>(c)]; });
}

// Truncates between characters of the code page, leaving room for the '?' that marks it.
void CutToFit(std::string& libraryName) {
  std::size_t fits = 0;
  const CodePage& page = ActivePage();
  for (std::size_t next = 0; next < kMaxNameBytes;) {
    fits = next;
    next += page.decode(std::string_view(libraryName).substr(next)).bytes;
  }
  libraryName.resize(fits);
  libraryName += '?';
}

template <typename Map>
std::u16string MakeKey(std::string_view hostName, Map map) {
  if (ActiveCodePage() != kCodePage932) return MapToUtf16(hostName, map);
  return MapToUtf16(hostName, [&](char32_t character) { return map(ToCp932Reading(character)); });
}

bool IsWildCard(char32_t character) {
  return character == '*' || character == '?';
}

// Converts from the code page to UTF-8.  Returns false for a character that a name (or mask) can't
// hold.
bool DecodeName(std::string_view libraryName, bool mask, std::string& hostName) {
  hostName.clear();
  const CodePage& page = ActivePage();
  while (!libraryName.empty()) {
    const Decoded next = page.decode(libraryName);
    if (next.character == kNoCharacter) return false;
    if (IsForbidden(next.character) && !(mask && IsWildCard(next.character))) return false;
    AppendUtf8(hostName, next.character);
    libraryName.remove_prefix(next.bytes);
  }
  return true;
}

// Converts from UTF-8 to the code page, with '?' for each character that can't be expressed.
bool EncodeName(std::string_view hostName, bool strict, std::string& libraryName) {
  libraryName = hostName;
  bool whole = true;
  if (!IsPlain(hostName)) {
    libraryName.clear();
    const CodePage& page = ActivePage();
    while (!hostName.empty()) {
      const Decoded next = DecodeUtf8(hostName);
      const bool good = next.character != kNoCharacter && !IsForbidden(next.character) &&
                        !(strict && ToCp932Reading(next.character) != next.character) &&
                        page.append(libraryName, next.character);
      if (!good) libraryName += '?';
      whole = whole && good;
      hostName.remove_prefix(next.bytes);
    }
  }
  if (libraryName.size() <= kMaxNameBytes) return whole;
  CutToFit(libraryName);
  return false;
}

}  // namespace

const CodePage& ActivePage() {
  return *activePage.load(std::memory_order_relaxed);
}

unsigned ActiveCodePage() {
  return ActivePage().number;
}

bool IsLeadByte(unsigned char byte) {
  return ActiveCodePage() == kCodePage932 && IsLeadByte932(byte);
}

bool ToHostName(std::string_view libraryName, std::string& hostName) {
  hostName = libraryName;
  return IsPlain(libraryName) || DecodeName(libraryName, false, hostName) ||
         Fail(ERROR_INVALID_NAME);
}

bool ToLibraryName(std::string_view hostName, std::string& libraryName) {
  return EncodeName(hostName, false, libraryName);
}

bool ToStrictLibraryName(std::string_view hostName, std::string& libraryName) {
  return EncodeName(hostName, true, libraryName);
}

bool MaskKey(std::string_view libraryMask, std::u16string& key) {
  std::string hostMask;
  if (!DecodeName(libraryMask, true, hostMask)) return Fail(ERROR_INVALID_NAME);
  key = CaseKey(hostMask);
  return true;
}

std::u16string CaseKey(std::string_view hostName) {
  return MakeKey(hostName, ToUpper);
}

std::u16string ExactKey(std::string_view hostName) {
  return MakeKey(hostName, [](char32_t character) { return character; });
}

}  // namespace kozor::posix

int KzSetActiveCodePage(unsigned int codePage) {
  using namespace kozor;
  if (codePage != text::kCodePage932 && codePage != text::kUtf8) {
    return posix::Fail(ERROR_INVALID_PARAMETER);
  }
  posix::activePage.store(text::FindCodePage(codePage));
  return TRUE;
}
