// BitComposer.h - composes packed data by hand, from numbers or from a string of bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kozor::codec {

class BitComposer {
 public:
  // `bits` bits of the number, the most significant first.
  BitComposer& Number(std::size_t value, unsigned bits) {
    while (bits-- != 0) Bit((value >> bits & 1) != 0);
    return *this;
  }
  // Characters 0 and 1; others are ignored and serve as separators.
  BitComposer& Picture(std::string_view text) {
    for (const char c : text) {
      if (c == '0' || c == '1') Bit(c == '1');
    }
    return *this;
  }
  const std::vector<std::uint8_t>& Bytes() const { return bytes; }

 private:
  void Bit(bool set) {
    if (bitCount % 8 == 0) bytes.push_back(0);
    if (set) bytes.back() |= static_cast<std::uint8_t>(0x80 >> bitCount % 8);
    ++bitCount;
  }

  std::vector<std::uint8_t> bytes;
  std::size_t bitCount = 0;
};

}  // namespace kozor::codec
