// CodePage.cpp - see CodePage.h.  The tables are in TextTables.cpp.
#include "platform/text/CodePage.h"

#include <algorithm>
#include <array>
#include <memory>

#include "platform/text/TextTables.h"

namespace kozor::text {

namespace {

constexpr std::size_t kTrails = 188;
constexpr unsigned kFirstUserLead = 0xF0;
constexpr unsigned kLastUserLead = 0xF9;
constexpr char32_t kFirstUserCharacter = 0xE000;
// The single bytes 0xA0 and 0xFD to 0xFF map to private-use characters too.
constexpr char32_t kPrivateA0 = 0xF8F0;
constexpr char32_t kPrivateFd = 0xF8F1;
constexpr char32_t kHalfWidthKana = 0xFF61;  // byte 0xA1

// Index of a trail byte in its row, or kTrails if it isn't one.
constexpr std::size_t TrailIndex(unsigned trail) {
  if (trail < 0x40 || trail == 0x7F || trail > 0xFC) return kTrails;
  return trail - (trail < 0x7F ? 0x40 : 0x41);
}

constexpr unsigned TrailByte(std::size_t index) {
  return static_cast<unsigned>(index + (index < 0x3F ? 0x40 : 0x41));
}

char32_t DecodePair932(unsigned lead, unsigned trail) {
  const std::size_t index = TrailIndex(trail);
  if (index == kTrails) return kNoCharacter;
  if (lead >= kFirstUserLead && lead <= kLastUserLead) {
    return static_cast<char32_t>(kFirstUserCharacter + (lead - kFirstUserLead) * kTrails + index);
  }
  const char16_t* const row = FindRow932(lead);
  return row != nullptr && row[index] > u' ' ? row[index] : kNoCharacter;
}

char32_t DecodeSingle932(unsigned byte) {
  if (byte <= 0x80) return byte;
  if (byte == 0xA0) return kPrivateA0;
  if (byte <= 0xDF) return kHalfWidthKana + (byte - 0xA1);
  return kPrivateFd + (byte - 0xFD);
}

Decoded Decode932(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (!IsLeadByte932(first)) return {DecodeSingle932(first), 1};
  if (text.size() < 2) return {kNoCharacter, 1};
  const auto second = static_cast<unsigned char>(text[1]);
  const char32_t character = DecodePair932(first, second);
  // An invalid trail byte starts the next character, so that a stray lead byte can't hide it.
  if (character == kNoCharacter && TrailIndex(second) == kTrails) return {kNoCharacter, 1};
  return {character, 2};
}

// Codes indexed by UTF-16 unit; 0 means none (except for U+0000).
using EncodeTable = std::array<std::uint16_t, 0x10000>;

std::unique_ptr<EncodeTable> MakeEncodeTable932() {
  auto table = std::make_unique<EncodeTable>();
  for (unsigned byte = 0; byte < 0x100; ++byte) {
    if (!IsLeadByte932(byte)) (*table)[DecodeSingle932(byte)] = static_cast<std::uint16_t>(byte);
  }
  const auto addRow = [&](unsigned lead) {
    for (std::size_t index = 0; index < kTrails; ++index) {
      const char32_t character = DecodePair932(lead, TrailByte(index));
      if (character == kNoCharacter || (*table)[character] != 0) continue;
      (*table)[character] = static_cast<std::uint16_t>(lead << 8 | TrailByte(index));
    }
  };
  // About 390 characters have two or three codes.  The first row wins; rows 0xED and 0xEE, which
  // duplicate 0xFA to 0xFC, come last.
  for (unsigned lead = 0x81; lead <= 0xFC; ++lead) {
    if (IsLeadByte932(lead) && lead != 0xED && lead != 0xEE) addRow(lead);
  }
  addRow(0xED);
  addRow(0xEE);
  return table;
}

bool Append932(std::string& text, char32_t character) {
  static const std::unique_ptr<const EncodeTable> table = MakeEncodeTable932();
  character = ToCp932Reading(character);
  if (character > 0xFFFF) return false;
  const unsigned code = (*table)[character];
  if (code == 0 && character != 0) return false;
  if (code > 0xFF) text += static_cast<char>(code >> 8);
  text += static_cast<char>(code & 0xFF);
  return true;
}

template <const char16_t* high>
Decoded DecodeSingleByte(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  return {byte < 0x80 ? byte : static_cast<char32_t>(high[byte - 0x80]), 1};
}

template <const char16_t* high>
bool AppendSingleByte(std::string& text, char32_t character) {
  if (character >= 0x80) {
    const char16_t* const found = std::find(high, high + 128, character);
    if (found == high + 128) return false;
    character = static_cast<char32_t>(0x80 + (found - high));
  }
  text += static_cast<char>(character);
  return true;
}

Decoded DecodeAscii(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  return {byte < 0x80 ? byte : kNoCharacter, 1};
}

bool AppendAscii(std::string& text, char32_t character) {
  if (character >= 0x80) return false;
  text += static_cast<char>(character);
  return true;
}

}  // namespace

Decoded DecodeUtf8(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byteAt(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return {kNoCharacter, 1};
  char32_t character = first & (0xFF >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xC0) != 0x80) return {kNoCharacter, 1};
    character = character << 6 | (byteAt(i) & 0x3F);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[length] || surrogate || character > 0x10FFFF) return {kNoCharacter, 1};
  return {character, length};
}

bool AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  const auto tail = [&](int shift) { put(0x80 | (character >> shift & 0x3F)); };
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) return false;
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    tail(6);
    tail(0);
  } else {
    put(0xF0 | character >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
  return true;
}

char32_t ToCp932Reading(char32_t character) {
  switch (character) {
    case 0x301C:  // wave dash
      return 0xFF5E;
    case 0x2016:  // double vertical line
      return 0x2225;
    case 0x2212:  // minus
      return 0xFF0D;
    case 0x2014:  // em dash
      return 0x2015;
    case 0x00A2:  // cent
      return 0xFFE0;
    case 0x00A3:  // pound
      return 0xFFE1;
    case 0x00AC:  // not
      return 0xFFE2;
    default:
      return character;
  }
}

bool AppendExactly(const CodePage& page, std::string& text, char32_t character) {
  const std::size_t before = text.size();
  if (!page.append(text, character)) return false;
  if (page.decode(std::string_view(text).substr(before)).character == character) return true;
  text.resize(before);
  return false;
}

Decoded DecodeUtf16(std::u16string_view text) {
  const char32_t first = text[0];
  if (first < 0xD800 || first > 0xDFFF) return {first, 1};
  if (first > 0xDBFF || text.size() < 2) return {kNoCharacter, 1};
  const char32_t second = text[1];
  if (second < 0xDC00 || second > 0xDFFF) return {kNoCharacter, 1};
  return {0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00), 2};
}

void AppendUtf16(std::u16string& text, char32_t character) {
  if (character < 0x10000) {
    text += static_cast<char16_t>(character);
    return;
  }
  text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
  text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
}

const CodePage* FindCodePage(unsigned number) {
  static constexpr CodePage kPages[] = {
      {kCodePage932, Decode932, Append932, 0x30FB},  // katakana middle dot
      {kUtf8, DecodeUtf8, AppendUtf8, 0xFFFD},
      {1252, DecodeSingleByte<kCp1252High>, AppendSingleByte<kCp1252High>, '?'},
      {437, DecodeSingleByte<kCp437High>, AppendSingleByte<kCp437High>, '?'},
      {20127, DecodeAscii, AppendAscii, '?'},
  };
  const auto* const found =
      std::find_if(std::begin(kPages), std::end(kPages),
                   [&](const CodePage& page) { return page.number == number; });
  return found == std::end(kPages) ? nullptr : found;
}

}  // namespace kozor::text
