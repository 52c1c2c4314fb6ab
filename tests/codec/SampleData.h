// SampleData.h - data of different kinds to pack, the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// All methods but the stored ones.
inline constexpr Method kPackingMethods[] = {
    Method::Lh1, Method::Lh2, Method::Lh3, Method::Lh4, Method::Lh5, Method::Lh6, Method::Lh7,
    Method::Lhx, Method::Lk7, Method::Lzs, Method::Lz5, Method::Pm1, Method::Pm2};

// Words of a small vocabulary with some numbers.
inline std::vector<std::uint8_t> TextData(std::size_t size) {
  constexpr std::string_view kWords[] = {"archive ", "member ", "the ",   "of ", "window ",
                                         "volume ",  "\r\n",    "header", ", ",  "backup "};
  std::mt19937 random(7);
  std::vector<std::uint8_t> data;
  while (data.size() < size) {
    const std::string_view word = kWords[random() % std::size(kWords)];
    data.insert(data.end(), word.begin(), word.end());
    if (random() % 8 == 0) data.push_back(static_cast<std::uint8_t>('0' + random() % 10));
  }
  data.resize(size);
  return data;
}

inline std::vector<std::uint8_t> RandomData(std::size_t size) {
  std::mt19937 random(11);
  std::vector<std::uint8_t> data(size);
  for (std::uint8_t& byte : data) byte = static_cast<std::uint8_t>(random());
  return data;
}

// Stretches of text, random bytes and one repeated byte; some repeat earlier ones at a long
// distance.
inline std::vector<std::uint8_t> MixedData(std::size_t size) {
  const std::vector<std::uint8_t> text = TextData(40000);
  const std::vector<std::uint8_t> noise = RandomData(40000);
  std::mt19937 random(13);
  std::vector<std::uint8_t> data;
  while (data.size() < size) {
    const std::size_t length = 1 + random() % 3000;
    const auto begin = static_cast<std::ptrdiff_t>(random() % 30000);
    const auto end = begin + static_cast<std::ptrdiff_t>(length);
    switch (random() % 3) {
      case 0:
        data.insert(data.end(), text.begin() + begin, text.begin() + end);
        break;
      case 1:
        data.insert(data.end(), noise.begin() + begin, noise.begin() + end);
        break;
      default:
        data.insert(data.end(), length, static_cast<std::uint8_t>(random()));
    }
  }
  data.resize(size);
  return data;
}

}  // namespace kozor::codec
