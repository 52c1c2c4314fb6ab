// SlowBlocks.cpp - the slow decoder of the methods with blocks: Lh4 to Lh7, Lhx and Lk7.
#include <algorithm>
#include <map>
#include <set>

#include "tests/codec/SlowTwin.h"

namespace kozor::codec {
namespace {

using Lengths = std::vector<unsigned>;

struct Numbers {
  std::size_t window;
  unsigned distanceCountBits;
  unsigned distanceSymbols;
  unsigned itemSymbols = 510;
};

const std::map<Method, Numbers> kNumbers = {
    {Method::Lh4, {4096, 4, 14}},   {Method::Lh5, {8192, 4, 14}},
    {Method::Lh6, {32768, 5, 16}},  {Method::Lh7, {65536, 5, 17}},
    {Method::Lhx, {524288, 5, 21}}, {Method::Lk7, {65536, 6, 32, 289}}};

unsigned At(const Lengths& lengths, std::size_t at) {
  return at < lengths.size() ? lengths[at] : 0;
}

// The number of zeros before the next length that isn't 0.
unsigned ZerosAt(const Lengths& lengths, std::size_t at) {
  unsigned zeros = 0;
  while (at + zeros < lengths.size() && lengths[at + zeros] == 0) ++zeros;
  return zeros;
}

class SlowBlocks : public SlowTwin {
 public:
  SlowBlocks(Method method, SlowStream& stream, std::size_t size)
      : SlowTwin(stream, size), isLk7(method == Method::Lk7), numbers(kNumbers.at(method)) {}

 protected:
  void Step() override {
    if (left == 0) ReadBlock();
    --left;
    const unsigned symbol = itemCode.Decode(in);
    if (symbol < 256) return Put(symbol);
    Require(distanceCode.IsUsable());
    const std::size_t length = isLk7 ? Lk7Length(symbol) : symbol - 253;
    const unsigned p = distanceCode.Decode(in);
    const std::size_t distance = (isLk7 ? Lk7Offset(p) : Offset(p)) + 1;
    Rule(distance <= numbers.window, "distances stay within the window");
    Copy(distance, length);
  }

  void End() override {
    Rule(left == 0, "the last block ends with the data");
    Rule(limit == 0 || in.BitsRead() != itemsBegin, "the items of the last block take bits");
  }

 private:
  void ReadBlock() {
    left = in.Number(16, 1 + in.Below(400));
    Require(left != 0);
    const Lengths items = Wish(numbers.itemSymbols);
    ReadSmallCode(treeCode, TreeWish(items), 5, 19, true);
    ReadItemCode(items);
    ReadSmallCode(distanceCode, Wish(numbers.distanceSymbols), numbers.distanceCountBits,
                  numbers.distanceSymbols, false);
    in.RequireInput();
    itemsBegin = in.BitsRead();
  }

  // Lengths to write, without trailing zeros; none for a single symbol.
  Lengths Wish(std::size_t symbols) {
    if (!in.isComposing || in.Below(6) == 0) return {};
    Lengths lengths = RandomSelection(in, symbols, 16);
    while (lengths.back() == 0) lengths.pop_back();
    return lengths;
  }

  // A code of the symbols for those lengths and of all symbols for zeros.
  Lengths TreeWish(const Lengths& items) {
    if (!in.isComposing) return {};
    std::set<unsigned> symbols{0, 1, 2};
    for (const unsigned length : items) symbols.insert(length == 0 ? 0 : length + 2);
    const Lengths code = RandomLengths(in, symbols.size(), 16);
    Lengths lengths(*symbols.rbegin() + 1, 0);
    std::size_t i = 0;
    for (const unsigned symbol : symbols) lengths[symbol] = code[i++];
    return lengths;
  }

  // Reads the count of the lengths that follow.  0 means a code of a single symbol.
  unsigned Count(SlowCode& code, const Lengths& wish, unsigned width, unsigned symbols) {
    const unsigned count = in.Number(width, wish.size());
    Require(count <= symbols);
    if (count != 0) return count;
    const unsigned symbol = in.Number(width, in.Below(symbols));
    Require(symbol < symbols);
    code.SetSingle(symbol);
    return 0;
  }

  void ReadSmallCode(SlowCode& code, const Lengths& wish, unsigned width, unsigned symbols,
                     bool hasGap) {
    const unsigned count = Count(code, wish, width, symbols);
    if (count == 0) return;
    Lengths lengths;
    while (lengths.size() < count) {
      lengths.push_back(SmallLength(At(wish, lengths.size())));
      if (hasGap && lengths.size() == 3) {
        lengths.resize(3 + in.Number(2, std::min(ZerosAt(wish, 3), 3U)), 0);
        Rule(lengths.size() <= count, "a gap stays within the count");
      }
    }
    Rule(lengths.back() != 0, "trailing zero lengths are not sent");
    code.SetLengths(lengths);
  }

  unsigned SmallLength(unsigned wish) {
    unsigned length = in.Number(3, std::min(wish, 7U));
    if (length == 7) {
      while (length < 17 && in.Number(1, length < wish) == 1) ++length;
    }
    Require(length <= 16);
    return length;
  }

  void ReadItemCode(const Lengths& wish) {
    const unsigned count = Count(itemCode, wish, 9, numbers.itemSymbols);
    if (count == 0) return;
    Require(treeCode.IsUsable());
    Lengths lengths;
    while (lengths.size() < count) ReadItemLengths(lengths, wish);
    Require(lengths.size() == count);
    Rule(lengths.back() != 0, "trailing zero lengths are not sent");
    itemCode.SetLengths(lengths);
    Require(itemCode.IsUsable());
  }

  // Reads one length, or a run of zeros; a run to write is split at random.
  void ReadItemLengths(Lengths& lengths, const Lengths& wish) {
    const std::size_t at = lengths.size();
    const unsigned zeros = ZerosAt(wish, at);
    const unsigned run = zeros == 0 ? 0 : 1 + in.Below(zeros);
    const unsigned zeroSymbol = run >= 20 ? 2 : run >= 3 ? 1 : 0;
    const unsigned symbol = treeCode.Decode(in, run == 0 ? At(wish, at) + 2 : zeroSymbol);
    if (symbol > 2) return lengths.push_back(symbol - 2);
    std::size_t count = 1;
    if (symbol == 1) count = in.Number(4, std::min(run, 18U) - 3) + 3;
    if (symbol == 2) count = in.Number(9, run - 20) + 20;
    lengths.resize(at + count, 0);
  }

  std::size_t Offset(unsigned p) {
    return p < 2 ? p : (std::size_t{1} << (p - 1)) + in.Number(p - 1);
  }
  std::size_t Lk7Offset(unsigned p) {
    if (p <= 3) return p;
    const unsigned e = (p - 2) / 2;
    return ((std::size_t{2} + p % 2) << e) + in.Number(e);
  }
  std::size_t Lk7Length(unsigned symbol) {
    if (symbol <= 263) return symbol - 253;
    if (symbol == 288) return 514;
    const unsigned e = (symbol - 260) / 4;
    return ((std::size_t{4} + symbol % 4) << e) + in.Number(e) + 3;
  }

  const bool isLk7;
  const Numbers numbers;
  unsigned left = 0;  // items of the block
  std::size_t itemsBegin = 0;
  SlowCode treeCode;
  SlowCode itemCode;
  SlowCode distanceCode;
};

}  // namespace

SlowTwinPointer MakeSlowBlocks(Method method, SlowStream& stream, std::size_t size) {
  return std::make_unique<SlowBlocks>(method, stream, size);
}

}  // namespace kozor::codec
