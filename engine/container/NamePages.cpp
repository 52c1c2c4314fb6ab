// NamePages.cpp - see NamePages.h.
#include "engine/container/NamePages.h"

#include <algorithm>
#include <optional>

#include "engine/container/Text.h"
#include "platform/text/ForeignPage.h"

namespace kozor::container {
namespace {

constexpr unsigned int kEucJp = 51932;
constexpr char kSeparatorByte = '\xFF';  // not part of a character in the guessed pages
constexpr char16_t kSeparatorUnit = 0xFFFF;

// Visits the byte strings of a name that no Unicode field overrides.
template <typename Visit>
void VisitBytes(const NameFields& name, Visit visit) {
  if (!name.unicodeDirectory && name.directory) visit(*name.directory);
  if (!name.unicodeFile) visit(name.file ? *name.file : name.base);
}

// Decodes by a foreign page; none if the bytes aren't valid in it.
std::optional<std::u16string> DecodeForeign(const text::ForeignPage& page, std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));  // some writers put a comment after a zero byte
  std::u16string decoded;
  while (!bytes.empty()) {
    if (bytes[0] == kSeparatorByte) {
      decoded += kSeparatorUnit;
      bytes.remove_prefix(1);
      continue;
    }
    const text::Decoded next = page.Decode(bytes);
    if (next.character == text::kNoCharacter) return std::nullopt;
    text::AppendUtf16(decoded, next.character);
    bytes.remove_prefix(next.bytes);
  }
  return decoded;
}

bool IsValidIn(unsigned int page, std::string_view bytes) {
  bytes = bytes.substr(0, bytes.find('\0'));
  if (IsAscii(bytes)) return true;
  const text::ForeignPage* const foreign =
      text::FindCodePage(page) == nullptr ? text::FindForeignPage(page) : nullptr;
  if (foreign != nullptr) return DecodeForeign(*foreign, bytes).has_value();
  std::u16string ignored;
  for (;;) {
    const std::size_t end = std::min(bytes.find(kSeparatorByte), bytes.size());
    if (!DecodeText(page, bytes.substr(0, end), ignored)) return false;
    if (end == bytes.size()) return true;
    bytes.remove_prefix(end + 1);
  }
}

}  // namespace

bool NeedsPage(const NameFields& name) {
  if (name.codePage != 0) return false;
  bool needsPage = false;
  VisitBytes(name, [&](const std::string& bytes) {
    needsPage |= std::any_of(bytes.begin(), bytes.end(), [](char byte) {
      return byte != kSeparatorByte && static_cast<unsigned char>(byte) >= 0x80;
    });
  });
  return needsPage;
}

void ApplyPage(unsigned int page, NameFields& name) {
  bool isValid = true;
  VisitBytes(name, [&](const std::string& bytes) { isValid &= IsValidIn(page, bytes); });
  if (!isValid) return;
  const text::ForeignPage* const foreign =
      text::FindCodePage(page) == nullptr ? text::FindForeignPage(page) : nullptr;
  if (foreign == nullptr) {
    name.codePage = page;
    return;
  }
  if (!name.unicodeDirectory && name.directory) {
    name.unicodeDirectory = DecodeForeign(*foreign, *name.directory);
  }
  if (!name.unicodeFile) {
    name.unicodeFile = DecodeForeign(*foreign, name.file ? *name.file : name.base);
  }
}

void PageGuess::Add(const NameFields& name) {
  isEmpty = false;
  VisitBytes(name, [&](const std::string& bytes) {
    mayBeShiftJis = mayBeShiftJis && IsValidIn(kShiftJis, bytes);
    mayBeUtf8 = mayBeUtf8 && IsValidIn(kUtf8, bytes);
    mayBeEuc = mayBeEuc && IsValidIn(kEucJp, bytes);
  });
}

unsigned int PageGuess::Best() const {
  if (mayBeShiftJis) return kShiftJis;
  if (mayBeUtf8) return kUtf8;
  return mayBeEuc ? kEucJp : 0;
}

}  // namespace kozor::container
