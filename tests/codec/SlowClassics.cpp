// SlowClassics.cpp - the slow decoders of Lh1 and Lh2, which have adaptive trees, of the related
// Lh3, and of Lzs and Lz5, which have no codes.
#include <algorithm>
#include <optional>

#include "tests/codec/SlowTwin.h"

namespace kozor::codec {
namespace {

// The nodes of an adaptive code in the order of descending weight.
class SlowTree {
 public:
  // A tree with a fixed number of symbols.
  explicit SlowTree(unsigned symbols) : nodes(2 * symbols - 1) {
    for (unsigned s = 0; s < symbols; ++s) nodes[2 * symbols - 2 - s] = {1, kLeaf, s};
    for (std::size_t b = symbols - 1; b-- > 0;) {
      nodes[b] = {nodes[2 * b + 2].weight + nodes[2 * b + 1].weight, 2 * b + 2, 0};
    }
  }
  // A growing tree: it starts with symbol 0, and its total is counted separately from the root's
  // weight.
  SlowTree() : nodes{{1, kLeaf, 0}}, total(0) {}

  void Add(unsigned symbol) {
    const std::size_t last = nodes.size() - 1;
    nodes.push_back(nodes[last]);
    nodes.push_back({0, kLeaf, symbol});
    nodes[last].child0 = last + 2;
    Update(symbol);
  }

  unsigned Decode(SlowStream& in) const {
    std::size_t at = 0;
    while (nodes[at].child0 != kLeaf) at = nodes[at].child0 - in.Number(1);
    return nodes[at].symbol;
  }

  void Update(unsigned symbol) {
    if (total.value_or(nodes[0].weight) == 0x8000) Rebuild();
    if (total) ++*total;
    std::size_t at = 0;
    while (nodes[at].child0 != kLeaf || nodes[at].symbol != symbol) ++at;
    while (at > 0) {
      std::size_t first = at;
      while (first > 1 && nodes[first - 1].weight == nodes[at].weight) --first;
      std::swap(nodes[first], nodes[at]);
      ++nodes[first].weight;
      at = 0;
      while (nodes[at].child0 != first && nodes[at].child0 != first + 1) ++at;
    }
    if (!total) ++nodes[0].weight;
  }

 private:
  static constexpr std::size_t kLeaf = 0;  // the root is never a child
  struct Node {
    unsigned weight;
    std::size_t child0;  // the other child precedes it
    unsigned symbol;
  };

  // Halves the weights of the leaves and rebuilds the tree, the lightest first.
  void Rebuild() {
    std::vector<Node> leaves;
    for (const Node& node : nodes) {
      if (node.child0 == kLeaf) leaves.push_back({(node.weight + 1) / 2, kLeaf, node.symbol});
    }
    std::size_t end = nodes.size();
    const auto place = [&] {
      nodes[--end] = leaves.back();
      leaves.pop_back();
    };
    for (std::size_t pair = end; pair >= 3;) {
      pair -= 2;
      while (end > pair) place();
      const unsigned sum = nodes[pair].weight + nodes[pair + 1].weight;
      while (!leaves.empty() && leaves.back().weight <= sum) place();
      nodes[--end] = {sum, pair + 1, 0};
    }
    if (total) total = nodes[0].weight;
  }

  std::vector<Node> nodes;
  std::optional<unsigned> total;
};

class SlowLh1 : public SlowTwin {
 public:
  using SlowTwin::SlowTwin;

  void Begin() override {
    std::vector<unsigned> lengths{3};
    unsigned bits = 4;
    for (const unsigned end : {4U, 12U, 24U, 48U, 64U}) lengths.resize(end, bits++);
    distances.SetLengths(lengths);
  }

  void Step() override {
    const unsigned symbol = tree.Decode(in);
    tree.Update(symbol);
    if (symbol < 256) return Put(symbol);
    const unsigned upper = distances.Decode(in);
    Copy(upper * 64 + in.Number(6) + 1, symbol - 253);
  }

 private:
  SlowTree tree{314};
  SlowCode distances;
};

unsigned LengthOf286(SlowStream& in, unsigned symbol) {
  return symbol == 285 ? 32 + in.Number(8) : symbol - 253;
}

class SlowLh2 : public SlowTwin {
 public:
  using SlowTwin::SlowTwin;

  void Step() override {
    const unsigned symbol = tree.Decode(in);
    tree.Update(symbol);
    if (symbol < 256) return Put(symbol);
    const unsigned length = LengthOf286(in, symbol);
    for (; next < 8192 && bytes.size() > next; next += 64) distances.Add(next / 64);
    const unsigned upper = distances.Decode(in);
    distances.Update(upper);
    Copy(upper * 64 + in.Number(6) + 1, length);
  }

 private:
  SlowTree tree{286};
  SlowTree distances;
  unsigned next = 64;
};

class SlowLh3 : public SlowTwin {
 public:
  using SlowTwin::SlowTwin;

  void Step() override {
    if (left == 0) {
      left = in.Number(16, 1 + in.Below(300));
      Require(left != 0);
      ReadItems();
      ReadDistances();
      in.RequireInput();
    }
    --left;
    const unsigned symbol = items.Decode(in);
    if (symbol < 256) return Put(symbol);
    Require(distances.IsUsable());
    const unsigned length = LengthOf286(in, symbol);
    const unsigned upper = distances.Decode(in);
    Copy(upper * 64 + in.Number(6) + 1, length);
  }

 private:
  void ReadItems() {
    auto lengths = Wish(286);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      const unsigned wish = lengths[i];
      lengths[i] = in.Number(1, wish != 0 ? 1 : 0) == 0 ? 0 : in.Number(4, wish - 1) + 1;
      if (i == 2 && IsSingle(lengths)) return SetSingle(items, 9, 286);
    }
    items.SetLengths(lengths);
    Require(items.IsUsable());
  }

  void ReadDistances() {
    constexpr unsigned kEnds[] = {1, 3, 6, 13, 31, 78, 128};
    constexpr unsigned kPreset[] = {2, 4, 5, 6, 7, 8, 9};
    std::vector<unsigned> lengths;
    if (in.Number(1) == 0) {
      for (std::size_t i = 0; i < std::size(kEnds); ++i) lengths.resize(kEnds[i], kPreset[i]);
      return distances.SetLengths(lengths);
    }
    lengths = Wish(128);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      lengths[i] = in.Number(4, lengths[i]);
      if (i == 2 && IsSingle(lengths)) return SetSingle(distances, 7, 128);
    }
    distances.SetLengths(lengths);
  }

  // Lengths to write, sometimes of a single symbol.
  std::vector<unsigned> Wish(std::size_t symbols) {
    std::vector<unsigned> lengths(symbols, 0);
    if (!in.isComposing) return lengths;
    if (in.Below(4) != 0) return RandomSelection(in, symbols, 15);
    lengths[0] = lengths[1] = lengths[2] = 1;
    return lengths;
  }
  static bool IsSingle(const std::vector<unsigned>& lengths) {
    return lengths[0] == 1 && lengths[1] == 1 && lengths[2] == 1;
  }
  void SetSingle(SlowCode& code, unsigned bits, unsigned symbols) {
    const unsigned symbol = in.Number(bits, in.Below(symbols));
    Require(symbol < symbols);
    code.SetSingle(symbol);
  }

  unsigned left = 0;
  SlowCode items;
  SlowCode distances;
};

// A real circular buffer, as the format describes it.
class SlowRing : public SlowTwin {
 public:
  SlowRing(SlowStream& stream, std::size_t size, Bytes initial, std::size_t start)
      : SlowTwin(stream, size), buffer(std::move(initial)), position(start) {}

 protected:
  void PutBuffered(unsigned byte) {
    Put(byte);
    buffer[position++ % buffer.size()] = static_cast<std::uint8_t>(byte);
  }
  void CopyFrom(std::size_t place, std::size_t length) {
    while (length-- != 0) PutBuffered(buffer[place++ % buffer.size()]);
  }

 private:
  Bytes buffer;
  std::size_t position;
};

class SlowLzs : public SlowRing {
 public:
  SlowLzs(SlowStream& stream, std::size_t size) : SlowRing(stream, size, Bytes(2048, ' '), 2031) {}

  void Step() override {
    if (in.Number(1) == 1) return PutBuffered(in.Number(8));
    const unsigned place = in.Number(11);
    CopyFrom(place, in.Number(4) + 2);
  }
};

class SlowLz5 : public SlowRing {
 public:
  SlowLz5(SlowStream& stream, std::size_t size) : SlowRing(stream, size, Initial(), 4078) {}

  void Step() override {
    if (flagsLeft == 0) {
      flags = in.Number(8);
      flagsLeft = 8;
    }
    const bool isLiteral = (flags >> (8 - flagsLeft--) & 1) != 0;
    const unsigned a = in.Number(8);
    if (isLiteral) return PutBuffered(a);
    const unsigned b = in.Number(8);
    CopyFrom(a + 256 * (b >> 4), (b & 15) + 3);
  }

 private:
  static Bytes Initial() {
    Bytes initial;
    for (int i = 0; i < 256; ++i) initial.insert(initial.end(), 13, static_cast<std::uint8_t>(i));
    for (int i = 0; i < 256; ++i) initial.push_back(static_cast<std::uint8_t>(i));
    for (int i = 255; i >= 0; --i) initial.push_back(static_cast<std::uint8_t>(i));
    initial.insert(initial.end(), 128, 0);
    initial.insert(initial.end(), 110, ' ');
    initial.insert(initial.end(), 18, 0);
    return initial;
  }
  unsigned flags = 0;
  unsigned flagsLeft = 0;
};

}  // namespace

SlowTwinPointer MakeSlowClassic(Method method, SlowStream& stream, std::size_t size) {
  if (method == Method::Lzs) return std::make_unique<SlowLzs>(stream, size);
  if (method == Method::Lz5) return std::make_unique<SlowLz5>(stream, size);
  if (method == Method::Lh1) return std::make_unique<SlowLh1>(stream, size);
  if (method == Method::Lh2) return std::make_unique<SlowLh2>(stream, size);
  return std::make_unique<SlowLh3>(stream, size);
}

}  // namespace kozor::codec
