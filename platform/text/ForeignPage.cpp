// ForeignPage.cpp - see ForeignPage.h.
#include "platform/text/ForeignPage.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>

#if defined(_WIN32)
#include <windows.h>
#else
#include <endian.h>
#include <iconv.h>
#endif

namespace kozor::text {
namespace {

struct PageName {
  unsigned number;
  const char* name;  // for iconv
  bool hasPairs;
};

constexpr PageName kPages[] = {
    {437, "CP437", false},   {850, "CP850", false},       {852, "CP852", false},
    {866, "CP866", false},   {936, "CP936", true},        {949, "CP949", true},
    {950, "CP950", true},    {1250, "CP1250", false},     {1251, "CP1251", false},
    {1252, "CP1252", false}, {10000, "MACINTOSH", false}, {28591, "ISO-8859-1", false},
    {51932, "EUC-JP", true},
};

#if defined(_WIN32)

class Converter {
 public:
  explicit Converter(const PageName& page) : number(SystemNumber(page.number)) {}
  bool IsOpen() const { return IsValidCodePage(number) != 0; }
  char32_t Convert(const char* bytes, std::size_t count) const {
    wchar_t unit = 0;
    const int units =
        MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, bytes, static_cast<int>(count), &unit, 1);
    return units == 1 ? unit : kNoCharacter;
  }

 private:
  // Windows converts EUC-JP by the number 20932 only.
  static unsigned SystemNumber(unsigned page) { return page == 51932 ? 20932 : page; }

  const unsigned number;
};

#else

class Converter {
 public:
  explicit Converter(const PageName& page) : descriptor(iconv_open("UTF-32LE", page.name)) {}
  ~Converter() {
    if (IsOpen()) iconv_close(descriptor);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool IsOpen() const { return descriptor != iconv_t(-1); }
  // The single character that these bytes encode, or kNoCharacter.
  char32_t Convert(char* bytes, std::size_t count) const {
    char32_t character = 0;
    char* out = reinterpret_cast<char*>(&character);
    std::size_t room = sizeof(character);
    iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
    const bool done = iconv(descriptor, &bytes, &count, &out, &room) == 0 && count == 0;
    return done && room == 0 ? le32toh(character) : kNoCharacter;
  }

 private:
  iconv_t descriptor;
};

#endif

}  // namespace

bool ForeignPage::Fill(unsigned number) {
  const auto* const page = std::find_if(std::begin(kPages), std::end(kPages),
                                        [&](const PageName& row) { return row.number == number; });
  if (page == std::end(kPages)) return false;
  const Converter converter(*page);
  if (!converter.IsOpen()) return false;
  if (page->hasPairs) pairs.assign(std::size_t{256} * 256, kNoCharacter);
  for (unsigned first = 0; first < 256; ++first) {
    char bytes[] = {static_cast<char>(first), 0};
    single[first] = converter.Convert(bytes, 1);
    if (!page->hasPairs || single[first] != kNoCharacter) continue;
    for (unsigned second = 0x40; second < 256; ++second) {
      bytes[1] = static_cast<char>(second);
      pairs[first * 256 + second] = converter.Convert(bytes, 2);
    }
  }
  return true;
}

Decoded ForeignPage::Decode(std::string_view text) const {
  const auto first = static_cast<unsigned char>(text[0]);
  if (single[first] != kNoCharacter || pairs.empty() || text.size() < 2) return {single[first], 1};
  const char32_t pair = pairs[first * 256U + static_cast<unsigned char>(text[1])];
  return {pair, pair != kNoCharacter ? std::size_t{2} : std::size_t{1}};
}

const ForeignPage* FindForeignPage(unsigned number) {
  static std::mutex mutex;
  static std::map<unsigned, std::unique_ptr<ForeignPage>> pages;
  const std::scoped_lock lock(mutex);
  const auto [entry, isNew] = pages.try_emplace(number);
  if (isNew) {
    auto page = std::make_unique<ForeignPage>();
    if (page->Fill(number)) entry->second = std::move(page);
  }
  return entry->second.get();
}

}  // namespace kozor::text
