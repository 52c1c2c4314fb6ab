// Fuzz.h - common code of the fuzz targets.  A target is one source with one function, TestInput;
// the rest of the program is FuzzMain.cpp.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kozor::fuzz {

// The fuzzer's input, consumed from the front; zeros follow its end.
class Input {
 public:
  explicit Input(std::span<const std::uint8_t> bytes) : left(bytes) {}

  std::uint8_t Byte() {
    if (left.empty()) return 0;
    const std::uint8_t byte = left.front();
    left = left.subspan(1);
    return byte;
  }
  // Two bytes, or three, little-endian.
  std::size_t Word() {
    const std::size_t low = Byte();
    return low | std::size_t{Byte()} << 8;
  }
  std::size_t ThreeBytes() {
    const std::size_t low = Word();
    return low | std::size_t{Byte()} << 16;
  }
  // Up to the next zero byte, which is consumed too, or the end.
  std::string Text() {
    const auto end = std::ranges::find(left, 0);
    std::string text(left.begin(), end);
    left = left.subspan(text.size() + (end != left.end() ? 1 : 0));
    return text;
  }
  std::span<const std::uint8_t> Rest() const { return left; }

 private:
  std::span<const std::uint8_t> left;
};

// Reports a finding with its source position unless the condition is true.
void Require(bool condition, const char* file = __builtin_FILE(), int line = __builtin_LINE());

// The target.
void TestInput(Input input);

}  // namespace kozor::fuzz
