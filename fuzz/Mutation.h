// Mutation.h - common parts of mutators for structured inputs.  They change an input field by field
// and correct sizes and checksums, so that parsers get past their first check.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::fuzz {

using Bytes = std::vector<std::uint8_t>;

// A target with a mutator of its own defines these two; the rest is FuzzMain.cpp's.
class Dice;
Bytes Mutate(std::span<const std::uint8_t> input, Dice& dice);
Bytes CrossOver(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other, Dice& dice);

class Dice {
 public:
  explicit Dice(unsigned seed) : engine(seed) {}

  // 0 to `count` - 1.
  std::size_t Below(std::size_t count) { return engine() % count; }
  bool OneIn(std::size_t count) { return Below(count) == 0; }
  template <typename List>
  const auto& OneOf(const List& list) {
    return std::data(list)[Below(std::size(list))];
  }

  // Does one of the given changes.
  template <typename... Changes>
  void DoOneOf(const Changes&... changes) {
    std::size_t left = Below(sizeof...(changes));
    static_cast<void>((... || (left-- == 0 && (changes(), true))));
  }
  // A name that has a meaning in some system, or is at the limit of a field.
  std::string HostileName();
  // A number near the limits of fields, or near the current value.
  std::uint32_t Number(std::uint32_t present);
  // Changes, adds or removes a few bytes.
  template <typename Sequence>
  void Disturb(Sequence& bytes);

 private:
  std::mt19937 engine;
};

inline std::string Dice::HostileName() {
  constexpr const char* kSpecial[] = {
      "a.txt", "A.TXT", "a",           "..",      ".",       "..\\..\\x", "..\xFFx", "C:\\x",
      "C:x",   "\\x",   "\\\\s\\h\\x", "/etc/x",  "CON",     "nul.txt",   "a:b",     "a?b",
      "a*b",   "a|b",   "\"q\"",       "\x1B[2J", "trail. ", "\xFF\xFF",  "d\xFF",   "d\\e\\f"};
  constexpr const char* kLonger[] = {"x|..\xFF..\xFFy", "kozor fuzz.new",   "KOZOR FUZZ.NEW",
                                     "\x95\x5C.txt",    "\xE8\xA1\xA8.txt", "\xC9\xBD.txt"};
  if (OneIn(16)) return std::string("a\0\0\xD8", Below(5));
  if (!OneIn(8)) return OneIn(5) ? OneOf(kLonger) : OneOf(kSpecial);
  constexpr std::size_t kLengths[] = {221, 230, 255, 256, 511, 512, 523, 524, 533, 534, 1000};
  return std::string(OneOf(kLengths), static_cast<char>('a' + Below(26)));
}

inline std::uint32_t Dice::Number(std::uint32_t present) {
  constexpr std::uint32_t kLimits[] = {0,          1,          2,          0x7F,      0xFF,
                                       0x100,      0x7FFF,     0xFFFF,     0x10000,   0x7FFFFFFF,
                                       0x80000000, 0xFFFF0000, 0xFFFFFFF0, 0xFFFFFFFF};
  std::uint32_t number = static_cast<std::uint32_t>(Below(2000));
  DoOneOf([&] { number = OneOf(kLimits); },
          [&] { number = present + static_cast<std::uint32_t>(Below(9)) - 4; },
          [&] { number = present * 2; }, [] {});
  return number;
}

template <typename Sequence>
void Dice::Disturb(Sequence& bytes) {
  using Value = typename Sequence::value_type;
  const auto value = [this] { return static_cast<Value>(engine()); };
  const auto at = [&] { return bytes.begin() + static_cast<std::ptrdiff_t>(Below(bytes.size())); };
  for (std::size_t i = Below(4) + 1; i != 0; --i) {
    if (bytes.empty()) {
      bytes.push_back(value());
      continue;
    }
    const auto flip = [&] {
      *at() = static_cast<Value>(static_cast<unsigned>(*at()) ^ (1U << Below(8)));
    };
    DoOneOf([&] { bytes.insert(at(), value()); }, [&] { bytes.erase(at()); },
            [&] { bytes.resize(Below(bytes.size())); },
            [&] { *at() = OneIn(2) ? Value() : static_cast<Value>(0xFF); }, flip, flip);
  }
}

}  // namespace kozor::fuzz
