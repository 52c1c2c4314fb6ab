// Mutation.h - common parts of mutators for structured inputs.  They change an input field by field
// and correct sizes and checksums, so that parsers get past their first check.
#pragma once

#include <cstdint>
#include <random>
#include <span>
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

  // A number near the limits of fields, or near the current value.
  std::uint32_t Number(std::uint32_t present);
  // Changes, adds or removes a few bytes.
  template <typename Sequence>
  void Disturb(Sequence& bytes);

 private:
  std::mt19937 engine;
};

inline std::uint32_t Dice::Number(std::uint32_t present) {
  constexpr std::uint32_t kLimits[] = {0,          1,          2,          0x7F,      0xFF,
                                       0x100,      0x7FFF,     0xFFFF,     0x10000,   0x7FFFFFFF,
                                       0x80000000, 0xFFFF0000, 0xFFFFFFF0, 0xFFFFFFFF};
  switch (Below(4)) {
    case 0:
      return OneOf(kLimits);
    case 1:
      return present + static_cast<std::uint32_t>(Below(9)) - 4;
    case 2:
      return present * 2;
    default:
      return static_cast<std::uint32_t>(Below(2000));
  }
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
    switch (Below(6)) {
      case 0:
        bytes.insert(at(), value());
        break;
      case 1:
        bytes.erase(at());
        break;
      case 2:
        bytes.resize(Below(bytes.size()));
        break;
      case 3:
        *at() = OneIn(2) ? Value() : static_cast<Value>(0xFF);
        break;
      default:
        *at() = static_cast<Value>(static_cast<unsigned>(*at()) ^ (1U << Below(8)));
    }
  }
}

}  // namespace kozor::fuzz
