// SlowDecoder.cpp - a second decoder of the block methods, slow and obvious, bit by bit.
#include "tests/codec/SlowDecoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace kozor::codec {
namespace {

struct Numbers {
  std::size_t window;
  unsigned distanceCountBits;
  unsigned distanceSymbols;
  unsigned itemSymbols = 510;
};

Numbers NumbersOf(Method method) {
  switch (method) {
    case Method::Lh4:
      return {4096, 4, 14};
    case Method::Lh5:
      return {8192, 4, 14};
    case Method::Lh6:
      return {32768, 5, 16};
    case Method::Lh7:
      return {65536, 5, 17};
    case Method::Lk7:
      return {65536, 6, 32, 289};
    default:
      return {524288, 5, 21};
  }
}

struct Failure {
  Status status;
};

class SlowCode {
 public:
  void SetSingle(unsigned symbol) {
    Clear();
    levels[0].symbols = {symbol};
  }

  void SetLengths(const std::vector<unsigned>& lengths) {
    Clear();
    double sum = 0;
    unsigned code = 0;
    for (unsigned length = 1; length <= 16; ++length) {
      code *= 2;
      levels[length].firstCode = code;
      for (unsigned symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] != length) continue;
        levels[length].symbols.push_back(symbol);
        sum += std::ldexp(1.0, -static_cast<int>(length));
        ++code;
      }
    }
    if (sum != 1) throw Failure{Status::Damaged};
  }

  void Clear() { levels = {}; }
  bool IsUsable() const {
    return std::ranges::any_of(levels, [](const Level& level) { return !level.symbols.empty(); });
  }

  template <class NextBit>
  unsigned Decode(NextBit nextBit) const {
    unsigned bits = 0;
    for (const Level& level : levels) {
      const unsigned index = bits - level.firstCode;
      if (index < level.symbols.size()) return level.symbols[index];
      bits = bits * 2 + nextBit();
    }
    throw std::logic_error("a complete code ends");
  }

 private:
  // The symbols whose codes have one length, in the order of their codes.
  struct Level {
    unsigned firstCode = 0;
    std::vector<unsigned> symbols;
  };
  std::array<Level, 17> levels;
};

class SlowDecoder {
 public:
  SlowDecoder(Method method, std::span<const std::uint8_t> packedBytes, std::size_t originalSize)
      : isLk7(method == Method::Lk7),
        numbers(NumbersOf(method)),
        packed(packedBytes),
        size(originalSize) {}

  SlowResult Run() {
    try {
      while (result.bytes.size() < size) ReadBlock();
      CheckEnd();
    } catch (const Failure& failure) {
      const bool pastEnd = bitsRead > packed.size() * 8;
      result.status = pastEnd ? Status::Truncated : failure.status;
    }
    return std::move(result);
  }

 private:
  unsigned Bit() {
    const std::size_t index = bitsRead++;
    return index / 8 < packed.size() ? unsigned{packed[index / 8]} >> (7 - index % 8) & 1U : 0U;
  }
  unsigned Number(unsigned bits) {
    unsigned value = 0;
    for (; bits != 0; --bits) value = value * 2 + Bit();
    return value;
  }
  void Require(bool good) {
    if (!good) throw Failure{Status::Damaged};
  }
  void Rule(bool kept, const char* text) {
    if (!kept) result.brokenRules.emplace_back(text);
  }

  void ReadBlock() {
    unsigned left = Number(16);
    Require(left != 0);
    ReadSmallCode(treeCode, 5, 19, true);
    ReadItemCode();
    ReadSmallCode(distanceCode, numbers.distanceCountBits, numbers.distanceSymbols, false);
    RequireInput();

    const std::size_t itemsBegin = bitsRead;
    for (; left != 0 && result.bytes.size() < size; --left) {
      ReadItem();
      RequireInput();
    }
    Rule(left == 0, "the last block ends with the data");
    itemBitsOfLastBlock = bitsRead - itemsBegin;
  }

  void RequireInput() {
    if (bitsRead > packed.size() * 8 + 32) throw Failure{Status::Truncated};
  }

  unsigned SmallLength() {
    unsigned length = Number(3);
    if (length == 7) {
      while (length < 17 && Bit() == 1) ++length;
    }
    Require(length <= 16);
    return length;
  }

  void ReadSmallCode(SlowCode& code, unsigned width, unsigned symbols, bool hasGap) {
    const unsigned count = Number(width);
    Require(count <= symbols);
    if (count == 0) {
      const unsigned symbol = Number(width);
      Require(symbol < symbols);
      code.SetSingle(symbol);
      return;
    }
    std::vector<unsigned> lengths;
    while (lengths.size() < count) {
      lengths.push_back(SmallLength());
      if (hasGap && lengths.size() == 3) {
        lengths.resize(3 + Number(2), 0);
        Rule(lengths.size() <= count, "a gap stays within the count");
      }
    }
    Rule(lengths.back() != 0, "trailing zero lengths are not sent");
    if (std::ranges::any_of(lengths, [](unsigned n) { return n != 0; })) {
      code.SetLengths(lengths);
    } else {
      code.Clear();
    }
  }

  void ReadItemCode() {
    const unsigned count = Number(9);
    Require(count <= numbers.itemSymbols);
    if (count == 0) {
      const unsigned symbol = Number(9);
      Require(symbol < numbers.itemSymbols);
      itemCode.SetSingle(symbol);
      return;
    }
    Require(treeCode.IsUsable());
    std::vector<unsigned> lengths;
    while (lengths.size() < count) {
      const unsigned symbol = treeCode.Decode([this] { return Bit(); });
      unsigned zeros = 1;
      if (symbol == 1) zeros = Number(4) + 3;
      if (symbol == 2) zeros = Number(9) + 20;
      if (symbol <= 2) {
        lengths.resize(lengths.size() + zeros, 0);
      } else {
        lengths.push_back(symbol - 2);
      }
    }
    Require(lengths.size() == count);
    Rule(lengths.back() != 0, "trailing zero lengths are not sent");
    itemCode.SetLengths(lengths);
  }

  void ReadItem() {
    const unsigned symbol = itemCode.Decode([this] { return Bit(); });
    if (symbol < 256) {
      result.bytes.push_back(static_cast<std::uint8_t>(symbol));
      return;
    }
    Require(distanceCode.IsUsable());
    const std::size_t length = isLk7 ? Lk7Length(symbol) : symbol - 253;
    const unsigned p = distanceCode.Decode([this] { return Bit(); });
    const std::size_t distance = (isLk7 ? Lk7Offset(p) : Offset(p)) + 1;
    Rule(distance <= numbers.window, "distances stay within the window");
    Rule(distance <= result.bytes.size(), "matches begin within the data");
    Rule(result.bytes.size() + length <= size, "matches end within the data");
    for (std::size_t i = 0; i < length && result.bytes.size() < size; ++i) {
      const std::size_t at = result.bytes.size();
      result.bytes.push_back(distance > at ? std::uint8_t{' '} : result.bytes[at - distance]);
    }
  }

  std::size_t Offset(unsigned p) { return p < 2 ? p : (std::size_t{1} << (p - 1)) + Number(p - 1); }
  std::size_t Lk7Offset(unsigned p) {
    if (p <= 3) return p;
    const unsigned e = (p - 2) / 2;
    return ((std::size_t{2} + p % 2) << e) + Number(e);
  }
  std::size_t Lk7Length(unsigned symbol) {
    if (symbol <= 263) return symbol - 253;
    if (symbol == 288) return 514;
    const unsigned e = (symbol - 260) / 4;
    return ((std::size_t{4} + symbol % 4) << e) + Number(e) + 3;
  }

  void CheckEnd() {
    if (size == 0) return Rule(packed.empty(), "no data gives no packed bytes");
    Rule(itemBitsOfLastBlock != 0, "the items of the last block take bits");
    Rule(packed.size() == (bitsRead + 7) / 8, "nothing stands behind the last item");
    while (bitsRead % 8 != 0) Rule(Bit() == 0, "the last byte is padded with zero bits");
  }

  const bool isLk7;
  const Numbers numbers;
  const std::span<const std::uint8_t> packed;
  const std::size_t size;
  std::size_t bitsRead = 0;
  std::size_t itemBitsOfLastBlock = 0;
  SlowCode treeCode;
  SlowCode itemCode;
  SlowCode distanceCode;
  SlowResult result;
};

}  // namespace

SlowResult SlowDecode(Method method, std::span<const std::uint8_t> packed, std::size_t size) {
  const bool isBlockMethod =
      (method >= Method::Lh4 && method <= Method::Lhx) || method == Method::Lk7;
  if (!isBlockMethod) return SlowDecodeClassic(method, packed, size);
  return SlowDecoder(method, packed, size).Run();
}

}  // namespace kozor::codec
