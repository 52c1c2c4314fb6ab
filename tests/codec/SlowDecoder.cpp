// SlowDecoder.cpp - see SlowDecoder.h and SlowTwin.h.
#include "tests/codec/SlowDecoder.h"

#include <algorithm>
#include <iterator>

#include "tests/codec/SlowTwin.h"

namespace kozor::codec {

unsigned SlowStream::Number(unsigned bits) {
  if (isComposing) return Number(bits, Below(std::size_t{1} << bits));
  unsigned value = 0;
  for (; bits != 0; --bits, ++bitsRead) {
    const std::size_t at = bitsRead / 8;
    value = value * 2 + (at < packed.size() ? unsigned{packed[at]} >> (7 - bitsRead % 8) & 1U : 0U);
  }
  return value;
}

unsigned SlowStream::Number(unsigned bits, std::size_t wish) {
  if (!isComposing) return Number(bits);
  written.Number(wish, bits);
  return static_cast<unsigned>(wish);
}

void SlowStream::RequireInput() const {
  if (!isComposing && bitsRead > packed.size() * 8 + 32) throw SlowFailure{Status::Truncated};
}

bool SlowStream::IsAtEnd() {
  if (bitsRead == 0) return packed.empty();
  const auto padding = static_cast<unsigned>((8 - bitsRead % 8) % 8);
  return (bitsRead + 7) / 8 == packed.size() && Number(padding) == 0;
}

void SlowCode::SetLengths(const std::vector<unsigned>& lengths) {
  symbols.clear();
  unsigned space = 0;
  unsigned code = 0;
  for (unsigned length = 1; length <= 16; ++length, code *= 2) {
    for (unsigned symbol = 0; symbol < lengths.size(); ++symbol) {
      if (lengths[symbol] != length) continue;
      symbols[{length, code++}] = symbol;
      space += 65536U >> length;
    }
  }
  Require(space == 65536 || space == 0);
}

unsigned SlowCode::Decode(SlowStream& in, std::optional<unsigned> wish) const {
  if (in.isComposing) {
    const auto index = static_cast<std::ptrdiff_t>(in.Below(symbols.size()));
    auto chosen = std::next(symbols.begin(), index);
    if (wish) chosen = std::ranges::find(symbols, *wish, [](auto& entry) { return entry.second; });
    in.Number(chosen->first.first, chosen->first.second);
    return chosen->second;
  }
  unsigned code = 0;
  for (unsigned length = 0;; ++length) {
    if (const auto found = symbols.find({length, code}); found != symbols.end()) {
      return found->second;
    }
    code = code * 2 + in.Number(1);
  }
}

// Splits leaves of a growing tree.  A lopsided tree splits its newest leaf and so becomes as deep
// as allowed.
std::vector<unsigned> RandomLengths(SlowStream& in, std::size_t count, unsigned most) {
  std::vector<unsigned> leaves{0};
  const bool isLopsided = in.Below(3) == 0;
  while (leaves.size() < std::min(count, std::size_t{1} << most)) {
    std::size_t i = isLopsided ? leaves.size() - 1 : in.Below(leaves.size());
    while (leaves[i] == most) i = in.Below(leaves.size());
    leaves.push_back(++leaves[i]);
  }
  return leaves;
}

std::vector<unsigned> RandomSelection(SlowStream& in, std::size_t symbols, unsigned most) {
  auto lengths = RandomLengths(in, 2 + in.Below(symbols - 1), most);
  lengths.resize(symbols, 0);
  for (std::size_t i = symbols; i > 1; --i) std::swap(lengths[i - 1], lengths[in.Below(i)]);
  return lengths;
}

SlowResult SlowTwin::Run() {
  SlowResult result;
  try {
    if (limit != 0) Begin();
    while (!IsFull()) {
      Step();
      in.RequireInput();
    }
    End();
    Rule(in.IsAtEnd(), "nothing stands after the last item but padding");
  } catch (const SlowFailure& failure) {
    result.status = in.IsPastEnd() ? Status::Truncated : failure.status;
  }
  result.bytes = bytes;
  result.brokenRules = brokenRules;
  return result;
}

namespace {

SlowResult Run(Method method, SlowStream& stream, std::size_t size) {
  auto make = MakeSlowClassic;
  if (method >= Method::Lh4 && method <= Method::Lk7) make = MakeSlowBlocks;
  if (method == Method::Pm1 || method == Method::Pm2) make = MakeSlowPm;
  return make(method, stream, size)->Run();
}

}  // namespace

SlowResult SlowDecode(Method method, std::span<const std::uint8_t> packed, std::size_t size) {
  SlowStream stream(packed);
  return Run(method, stream, size);
}

Bytes RandomMember(Method method, unsigned seed, std::size_t size) {
  SlowStream stream(seed);
  Run(method, stream, size);
  return stream.Written();
}

}  // namespace kozor::codec
