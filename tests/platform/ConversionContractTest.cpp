// ConversionContractTest.cpp - text between code pages and UTF-16.
#include <tuple>

#include "tests/platform/Contract.h"

namespace kozor::test {
namespace {

using Wide = std::basic_string<WCHAR>;

Wide FromUnits(std::u16string_view text) {
  return Wide(text.begin(), text.end());
}

Wide ToWide(UINT page, const std::string& text, DWORD flags = 0) {
  WCHAR wide[64];
  const int units =
      MultiByteToWideChar(page, flags, text.data(), static_cast<int>(text.size()), wide, 64);
  return Wide(wide, static_cast<std::size_t>(units));
}

std::string FromWide(UINT page, const Wide& wide) {
  char text[64];
  const DWORD flags = page == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
  const int bytes = WideCharToMultiByte(page, flags, wide.data(), static_cast<int>(wide.size()),
                                        text, 64, nullptr, nullptr);
  return std::string(text, static_cast<std::size_t>(bytes));
}

TEST(PlatformConversionContract, PagesAgreeInBothDirections) {
  const std::tuple<UINT, const char*, std::u16string_view> rows[] = {
      {932, "\x93\xFA\x96{\x8C\xEA", u"日本語"},
      {932, "\xB1\xB2\xDF", u"ｱｲﾟ"},
      {932, "\x95\x5C\x83\x5C", u"表ソ"},
      {932, "\x81\x60\x81\x61\x81\x7C\x81\x91\x81\x92\x81\xCA\x81\x5C", u"～∥－￠￡￢―"},
      {932, "\x87\x40\x87\x54\x81\xE0\x81\xE6\xFA\x40\xFB\xFC\xFC\x4B", u"①Ⅰ≒∵ⅰ髙黑"},
      {932, "\xF0\x40\xF9\xFC", u"\uE000\uE757"},
      {CP_UTF8, "a\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80", u"aé日😀"},
      {1252, "\x80\xE9\xFF", u"€éÿ"},
      {437, "\x81\xE1\xDB", u"üß█"},
  };
  for (const auto& [page, bytes, wide] : rows) {
    SCOPED_TRACE(testing::Message() << page << ' ' << bytes);
    EXPECT_EQ(ToWide(page, bytes), FromUnits(wide));
    EXPECT_EQ(FromWide(page, FromUnits(wide)), bytes);
  }
}

TEST(PlatformConversionContract, CopiesOfACharacterComeBackAsItsFirstCode) {
  for (const auto& [copy, first] : {std::pair{"\x87\x90", "\x81\xE0"},
                                    {"\xED\x40", "\xFA\x5C"},
                                    {"\xEE\xFC", "\xFA\x57"},
                                    {"\xFA\x4A", "\x87\x54"},
                                    {"\xFA\x5B", "\x81\xE6"},
                                    {"\xEE\xF9", "\x81\xCA"}}) {
    EXPECT_EQ(FromWide(932, ToWide(932, copy)), first);
  }
}

TEST(PlatformConversionContract, EveryCodeOf932SurvivesTheRoundTrip) {
  int assigned = 0;
  for (int lead = 0x81; lead <= 0xFC; ++lead) {
    if (lead >= 0xA0 && lead < 0xE0) continue;
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      const std::string code = {static_cast<char>(lead), static_cast<char>(trail)};
      const Wide wide = ToWide(932, code, MB_ERR_INVALID_CHARS);
      if (wide.size() != 1) continue;
      ++assigned;
      EXPECT_EQ(ToWide(932, FromWide(932, wide)), wide);
    }
  }
  EXPECT_EQ(assigned, 9604);
}

// Calls with a byte of every kind before every other.
TEST(PlatformConversionContract, CharactersHaveTheSameBoundsAndOrderForEveryPairOfBytes) {
  int folded = 0;
  for (int first = 1; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const std::string text = {static_cast<char>(first), static_cast<char>(second), 'z', '\0'};
      const bool isPair = IsDBCSLeadByte(static_cast<BYTE>(first)) && second != 0;
      EXPECT_EQ(CharNextA(text.c_str()) - text.c_str(), isPair ? 2 : 1) << first << ' ' << second;
      if (!isPair || second < 0x40 || second + 0x21 > 0xFC) continue;
      const std::string later = {text[0], static_cast<char>(second + 0x21), 'z'};
      EXPECT_LT(_mbscmp(Mbs(text), Mbs(later)), 0) << first << ' ' << second;
      folded += _mbsicmp(Mbs(text), Mbs(later)) == 0;
    }
  }
  EXPECT_EQ(folded, 26) << "the full-width Latin letters";
}

TEST(PlatformConversionContract, InvalidTextIsRefusedOnDemand) {
  using Bad = std::pair<UINT, const char*>;
  for (const auto& [page, bytes] : {Bad{932, "a\x81"},
                                    {932, "\x81 "},
                                    {932, "\x85\x40"},
                                    {CP_UTF8, "\xC3"},
                                    {CP_UTF8, "\xC0\x80"},
                                    {CP_UTF8, "\xED\xA0\x80"},
                                    {CP_UTF8, "\xF5\x80\x80\x80"}}) {
    SCOPED_TRACE(testing::Message() << page << ' ' << bytes);
    EXPECT_FAILS_WITH(ERROR_NO_UNICODE_TRANSLATION,
                      ToWide(page, bytes, MB_ERR_INVALID_CHARS).empty());
    EXPECT_FALSE(ToWide(page, bytes).empty());
  }
}

TEST(PlatformConversionContract, DefaultCharactersAndSizesFollowTheRules) {
  const Wide text = FromUnits(u"a\u0E01b");
  char bytes[8];
  WCHAR wide[4];
  BOOL used = FALSE;
  EXPECT_EQ(WideCharToMultiByte(932, 0, text.data(), 3, bytes, 8, "_", &used), 3);
  EXPECT_EQ(std::string(bytes, 3), "a_b");
  EXPECT_TRUE(used);
  if (!UnderWine()) {  // it accepts a default character in UTF-8 too
    EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER,
                      WideCharToMultiByte(CP_UTF8, 0, text.data(), 1, bytes, 8, "_", &used) == 0);
  }
  EXPECT_EQ(MultiByteToWideChar(932, 0, "\x93\xFAz", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(932, 0, "\x93\xFAz", -1, wide, 3), 3);
  EXPECT_EQ(wide[2], 0);
  EXPECT_FAILS_WITH(ERROR_INSUFFICIENT_BUFFER,
                    MultiByteToWideChar(932, 0, "\x93\xFAz", -1, wide, 2) == 0);
  EXPECT_FAILS_WITH(ERROR_INSUFFICIENT_BUFFER,
                    WideCharToMultiByte(932, 0, wide, 2, bytes, 2, nullptr, nullptr) == 0);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, MultiByteToWideChar(12345, 0, "a", 1, wide, 4) == 0);
  EXPECT_FAILS_WITH(ERROR_INVALID_PARAMETER, MultiByteToWideChar(932, 0, "a", 0, wide, 4) == 0);
}

}  // namespace
}  // namespace kozor::test
