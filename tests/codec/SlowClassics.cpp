// SlowClassics.cpp - second decoders of the older methods, slow and obvious; they write streams,
// too.
//
// Each is written down as its method is described: numbers come out of a stream in order.  A stream
// that composes makes the numbers up as they are asked for, and so a decoder writes a random member
// that is valid and unlike what any program makes.
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "tests/codec/BitComposer.h"
#include "tests/codec/RandomStream.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

struct Failure {
  Status status;
};

void Require(bool good) {
  if (!good) throw Failure{Status::Damaged};
}

class Stream {
 public:
  explicit Stream(std::span<const std::uint8_t> packedBytes) : packed(packedBytes) {}
  explicit Stream(unsigned seed) : isComposing(true), random(seed) {}

  const bool isComposing = false;

  unsigned Number(unsigned bits) {
    if (isComposing) return Number(bits, static_cast<unsigned>(random() % (1ULL << bits)));
    unsigned value = 0;
    for (; bits != 0; --bits, ++bitsRead) {
      const std::size_t at = bitsRead / 8;
      value =
          value * 2 + (at < packed.size() ? unsigned{packed[at]} >> (7 - bitsRead % 8) & 1U : 0U);
    }
    return value;
  }
  // The value is written when composing, and means nothing otherwise.
  unsigned Number(unsigned bits, unsigned wish) {
    if (!isComposing) return Number(bits);
    written.Number(wish, bits);
    return wish;
  }
  unsigned Below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

  bool IsPastEnd() const { return !isComposing && bitsRead > packed.size() * 8; }
  void RequireInput() const {
    if (!isComposing && bitsRead > packed.size() * 8 + 32) throw Failure{Status::Truncated};
  }
  // Whether nothing is left but zero bits of the last byte.
  bool IsAtEnd() {
    if (bitsRead == 0) return packed.empty();
    const auto padding = static_cast<unsigned>((8 - bitsRead % 8) % 8);
    return (bitsRead + 7) / 8 == packed.size() && Number(padding) == 0;
  }
  const Bytes& Written() const { return written.Bytes(); }

 private:
  std::span<const std::uint8_t> packed;
  std::size_t bitsRead = 0;
  std::mt19937 random;
  BitComposer written;
};

// Canonical codes as a table of pictures.
class PictureCode {
 public:
  void SetSingle(unsigned symbol) { symbols = {{"", symbol}}; }
  void SetLengths(const std::vector<unsigned>& lengths) {
    symbols.clear();
    double sum = 0;
    unsigned code = 0;
    for (unsigned length = 1; length <= 16; ++length, code *= 2) {
      for (unsigned symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] != length) continue;
        std::string picture;
        for (unsigned i = length; i-- > 0;) picture += (code >> i & 1) != 0 ? '1' : '0';
        symbols[picture] = symbol;
        sum += std::ldexp(1.0, -static_cast<int>(length));
        ++code;
      }
    }
    Require(sum == 1 || sum == 0);
  }
  bool IsUsable() const { return !symbols.empty(); }
  unsigned Decode(Stream& in) const {
    std::string picture;
    for (;;) {
      if (const auto found = symbols.find(picture); found != symbols.end()) return found->second;
      picture += in.Number(1) != 0 ? '1' : '0';
    }
  }

 private:
  std::map<std::string, unsigned> symbols;
};

// Lengths of a complete code of some of the symbols, none above `most`.
std::vector<unsigned> RandomLengths(Stream& in, std::size_t symbols, unsigned most) {
  std::vector<unsigned> leaves{0};
  const std::size_t count = 2 + in.Below(static_cast<unsigned>(symbols - 1));
  while (leaves.size() < count) {
    unsigned& leaf = leaves[in.Below(static_cast<unsigned>(leaves.size()))];
    if (leaf == most) break;
    leaves.push_back(++leaf);
  }
  leaves.resize(symbols, 0);
  for (std::size_t i = symbols; i > 1; --i) {
    std::swap(leaves[i - 1], leaves[in.Below(static_cast<unsigned>(i))]);
  }
  return leaves;
}

class ClassicDecoder {
 public:
  ClassicDecoder(Stream& stream, std::size_t size) : in(stream), limit(size) {}
  virtual ~ClassicDecoder() = default;

  SlowResult Run() {
    SlowResult result;
    try {
      Begin();
      while (!IsFull()) {
        Step();
        in.RequireInput();
      }
    } catch (const Failure& failure) {
      result.status = in.IsPastEnd() ? Status::Truncated : failure.status;
    }
    if (beforeBeginning) result.brokenRules.emplace_back("matches begin within the data");
    if (beyondEnd) result.brokenRules.emplace_back("matches end within the data");
    if (result.status == Status::Ok && !in.IsAtEnd()) {
      result.brokenRules.emplace_back("nothing stands after the last item but padding");
    }
    result.bytes = bytes;
    return result;
  }

 protected:
  virtual void Begin() {}
  virtual void Step() = 0;  // one item

  bool IsFull() const { return bytes.size() == limit; }
  void Put(unsigned byte) {
    if (!IsFull()) bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  void Copy(std::size_t distance, std::size_t length) {
    beforeBeginning |= distance > bytes.size();
    beyondEnd |= length > limit - bytes.size();
    while (length-- != 0) Put(distance > bytes.size() ? 0x20U : bytes[bytes.size() - distance]);
  }

  Stream& in;
  const std::size_t limit;
  Bytes bytes;

 private:
  // What a writer may not do.
  bool beforeBeginning = false;
  bool beyondEnd = false;
};

// Lists of nodes in order of falling weight, as an adaptive code has them.
class SlowTree {
 public:
  struct Node {
    unsigned weight;
    int child0;  // the other one stands before it; -1 for a leaf
    unsigned symbol;
  };

  explicit SlowTree(unsigned symbols) {
    nodes.resize(2 * symbols - 1);
    for (unsigned s = 0; s < symbols; ++s) nodes[2 * symbols - 2 - s] = {1, -1, s};
    for (int b = static_cast<int>(symbols) - 2; b >= 0; --b) {
      nodes[Index(b)] = {nodes[Index(2 * b + 2)].weight + nodes[Index(2 * b + 1)].weight, 2 * b + 2,
                         0};
    }
  }
  SlowTree() : nodes{{1, -1, 0}}, total(0) {}

  void Add(unsigned symbol) {
    const int m = static_cast<int>(nodes.size()) - 1;
    nodes.push_back(nodes.back());
    nodes.push_back({0, -1, symbol});
    nodes[Index(m)].child0 = m + 2;
    Update(symbol);
  }

  unsigned Decode(Stream& in) const {
    int at = 0;
    while (nodes[Index(at)].child0 >= 0) {
      at = nodes[Index(at)].child0 - static_cast<int>(in.Number(1));
    }
    return nodes[Index(at)].symbol;
  }

  void Update(unsigned symbol) {
    if ((total ? *total : nodes[0].weight) == 0x8000) Rebuild();
    if (total) ++*total;
    int at = 0;
    while (nodes[Index(at)].child0 >= 0 || nodes[Index(at)].symbol != symbol) ++at;
    while (at > 0) {
      int first = at;
      while (first > 1 && nodes[Index(first - 1)].weight == nodes[Index(at)].weight) --first;
      std::swap(nodes[Index(first)], nodes[Index(at)]);
      ++nodes[Index(first)].weight;
      at = 0;
      while (nodes[Index(at)].child0 != first && nodes[Index(at)].child0 - 1 != first) ++at;
    }
    if (!total) ++nodes[0].weight;
  }

 private:
  static std::size_t Index(int slot) { return static_cast<std::size_t>(slot); }

  void Rebuild() {
    std::vector<Node> leaves;
    for (const Node& node : nodes) {
      if (node.child0 < 0) leaves.push_back({(node.weight + 1) / 2, -1, node.symbol});
    }
    int i = static_cast<int>(nodes.size()) - 1;
    const auto place = [&] {
      nodes[Index(i--)] = leaves.back();
      leaves.pop_back();
    };
    for (int l = i - 1; i >= 0; l -= 2) {
      while (i >= l) place();
      const unsigned sum = nodes[Index(l)].weight + nodes[Index(l + 1)].weight;
      while (!leaves.empty() && leaves.back().weight <= sum) place();
      nodes[Index(i--)] = {sum, l + 1, 0};
    }
    if (total) total = nodes[0].weight;
  }

  std::vector<Node> nodes;
  std::optional<unsigned> total;  // of a tree that grows; that of others is the root's weight
};

class SlowLh1 : public ClassicDecoder {
 public:
  using ClassicDecoder::ClassicDecoder;

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
  PictureCode distances;
};

unsigned LengthOf286(Stream& in, unsigned symbol) {
  return symbol == 285 ? 32 + in.Number(8) : symbol - 253;
}

class SlowLh2 : public ClassicDecoder {
 public:
  using ClassicDecoder::ClassicDecoder;

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

class SlowLh3 : public ClassicDecoder {
 public:
  using ClassicDecoder::ClassicDecoder;

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
      lengths[i] = in.Number(1, wish != 0) == 0 ? 0 : in.Number(4, wish - 1) + 1;
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
    if (in.Below(4) != 0) return RandomLengths(in, symbols, 15);
    lengths[0] = lengths[1] = lengths[2] = 1;
    return lengths;
  }
  static bool IsSingle(const std::vector<unsigned>& lengths) {
    return lengths[0] == 1 && lengths[1] == 1 && lengths[2] == 1;
  }
  void SetSingle(PictureCode& code, unsigned bits, unsigned symbols) {
    const unsigned symbol = in.Number(bits, in.Below(symbols));
    Require(symbol < symbols);
    code.SetSingle(symbol);
  }

  unsigned left = 0;
  PictureCode items;
  PictureCode distances;
};

// A real circular buffer, as the format describes it.
class SlowPlain : public ClassicDecoder {
 public:
  SlowPlain(Stream& stream, std::size_t size, Bytes initial, std::size_t start)
      : ClassicDecoder(stream, size), buffer(std::move(initial)), position(start) {}

 protected:
  void PutBuffered(std::uint8_t byte) {
    Put(byte);
    buffer[position++ % buffer.size()] = byte;
  }
  void CopyFrom(std::size_t place, std::size_t length) {
    while (length-- != 0) PutBuffered(buffer[place++ % buffer.size()]);
  }

 private:
  Bytes buffer;
  std::size_t position;
};

class SlowLzs : public SlowPlain {
 public:
  SlowLzs(Stream& stream, std::size_t size) : SlowPlain(stream, size, Bytes(2048, ' '), 2031) {}

  void Step() override {
    if (in.Number(1) == 1) return PutBuffered(static_cast<std::uint8_t>(in.Number(8)));
    const unsigned place = in.Number(11);
    CopyFrom(place, in.Number(4) + 2);
  }
};

class SlowLz5 : public SlowPlain {
 public:
  SlowLz5(Stream& stream, std::size_t size) : SlowPlain(stream, size, Initial(), 4078) {}

  void Step() override {
    if (flagsLeft == 0) {
      flags = in.Number(8);
      flagsLeft = 8;
    }
    const bool isLiteral = (flags >> (8 - flagsLeft--) & 1) != 0;
    const unsigned a = in.Number(8);
    if (isLiteral) return PutBuffered(static_cast<std::uint8_t>(a));
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

class SlowPm : public ClassicDecoder {
 public:
  SlowPm(Stream& stream, std::size_t size) : ClassicDecoder(stream, size) {
    for (const auto& [first, end] :
         {std::pair{0x20, 0x80}, {0x00, 0x20}, {0xA0, 0xE0}, {0x80, 0xA0}, {0xE0, 0x100}}) {
      for (int byte = first; byte < end; ++byte) list.push_back(static_cast<std::uint8_t>(byte));
    }
  }

 protected:
  void PutIndex(unsigned index) {
    Put(list[index]);
    ToFront();
  }
  void CopyPm(std::size_t distance, std::size_t length) {
    while (length-- != 0 && !IsFull()) {
      Copy(distance, 1);
      ToFront();
    }
  }

 private:
  void ToFront() {
    const auto found = std::ranges::find(list, bytes.back());
    std::rotate(list.begin(), found, found + 1);
  }
  Bytes list;
};

class SlowPm1 : public SlowPm {
 public:
  using SlowPm::SlowPm;

  void Begin() override {
    if (limit != 0) codes = CodesOf(in.Number(5));
  }

  void Step() override {
    if (in.Number(1, bytes.empty() ? 1 : in.Below(2)) == 0) return CopyCommand();
    const unsigned run = RunLength();
    for (unsigned i = 0; i < run && !IsFull(); ++i) {
      Literal();
      in.RequireInput();
    }
    if (run != 216 && !IsFull()) CopyCommand();
  }

 private:
  using Codes = std::vector<std::pair<std::string, char>>;

  // "class:code" for each code.
  static Codes CodesOf(unsigned number) {
    constexpr std::string_view kTable[] = {"a:0000 b:0001 c:001 d:01 e:10 f:11",
                                           "a:000 b:001 c:010 d:10 e:11 f:011",
                                           "a:000 b:001 c:01 d:10 e:110 f:111",
                                           "a:00 b:010 c:011 d:10 e:110 f:111",
                                           "a:00 b:010 c:10 d:011 e:110 f:111",
                                           "a:00 b:010 c:10 d:11 e:0110 f:0111",
                                           "a:00 b:01 c:100 d:101 e:110 f:111",
                                           "a:00 b:01 c:100 d:11 e:1010 f:1011",
                                           "a:00 b:01 c:10 d:110 e:1110 f:1111",
                                           "a:0 b:1000 c:101 d:110 e:111 f:1001",
                                           "a:0 b:1000 c:101 d:11 e:10010 f:10011",
                                           "a:0 b:1000 c:1001 d:101 e:110 f:111",
                                           "a:0 b:100 c:1010 d:110 e:111 f:1011",
                                           "a:0 b:100 c:101 d:110 e:1110 f:1111",
                                           "a:0 b:100 c:11 d:1010 e:10110 f:10111",
                                           "a:0 b:10 c:1100 d:1101 e:1110 f:1111",
                                           "a:0 b:10 c:110 d:1110 e:11110 f:11111",
                                           "c:01 d:000 d:10 e:001 e:11",
                                           "a:00 b:010 c:10 d:11 e:011",
                                           "a:00 b:01 c:10 d:110 e:111",
                                           "a:0 b:1000 c:101 d:11 e:1001",
                                           "a:0 b:100 c:101 d:110 e:111",
                                           "a:0 b:100 c:11 d:1010 e:1011",
                                           "a:0 b:10 c:110 d:1110 e:1111",
                                           "a:000 b:001 c:01 d:1",
                                           "a:00 b:010 c:1 d:011",
                                           "a:00 b:01 c:10 d:11",
                                           "a:0 b:100 c:11 d:101",
                                           "a:0 b:10 c:110 d:111",
                                           "a:0 b:10 c:11",
                                           "a:0 b:1",
                                           "a:"};
    Codes codes;
    std::string text(kTable[number]);
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find(' ', at), text.size());
      codes.emplace_back(text.substr(at + 2, end - at - 2), text[at]);
      at = end + 1;
    }
    return codes;
  }

  void Literal() {
    std::string read;
    for (;;) {
      for (const auto& [code, literalClass] : codes) {
        if (code != read) continue;
        switch (literalClass) {
          case 'a':
            return PutIndex(in.Number(4));
          case 'b':
            return PutIndex(16 + in.Number(4));
          case 'c':
            return PutIndex(32 + in.Number(5));
          case 'd':
            return PutIndex(64 + in.Number(6));
          case 'e':
            return PutIndex(128 + in.Number(6));
          default:
            return PutIndex(192 + in.Number(6));
        }
      }
      read += in.Number(1) != 0 ? '1' : '0';
    }
  }

  unsigned RunLength() {
    unsigned x = in.Number(2);
    if (x <= 2) return x + 1;
    x = in.Number(3);
    if (x <= 6) return x + 4;
    x = in.Number(4);
    if (x <= 13) return x + 11;
    return x == 14 ? in.Number(6) + 25 : in.Number(7) + 89;
  }

  unsigned CopyLength() {
    unsigned x = in.Number(2);
    if (x <= 2) return x + 3;
    x = in.Number(3);
    if (x <= 4) return x + 6;
    if (x == 5) return in.Number(2) + 11;
    if (x == 6) return in.Number(3) + 15;
    x = in.Number(6);
    if (x <= 61) return x + 23;
    return x == 62 ? in.Number(5) + 85 : in.Number(7) + 117;
  }

  // Writes only what has offsets: the ranges of 64 and more are no choice right at their beginning.
  unsigned Range(std::size_t p) {
    if (in.Number(1) == 0) {
      if (p >= 576 && in.Number(1, p > 576 ? in.Below(2) : 0) == 1) return 4;
      if (p >= 64) return in.Number(1, p > 64 ? in.Below(2) : 0);
      return 0;
    }
    if (p >= 64 && in.Number(1, p > 64 ? in.Below(2) : 1) == 0) return 3;
    if (p >= 2624) return in.Number(1, p > 2624 ? in.Below(2) : 1) == 1 ? 2 : 5;
    return 2;
  }

  void CopyCommand() {
    const std::size_t p = bytes.size();
    const unsigned range = Range(p);
    const unsigned length = range < 2 ? 2 : CopyLength();
    constexpr unsigned kBase[] = {0, 64, 0, 64, 576, 2624};
    unsigned bits = 6;
    if (range == 1) bits = 8;
    if (range == 3) bits = p < 320 ? 8 : 9;
    if (range == 4) bits = p < 832 ? 8 : p < 1088 ? 9 : p < 1600 ? 10 : 11;
    if (range == 5)
      bits = p < 2880 ? 8 : p < 3136 ? 9 : p < 3648 ? 10 : p < 4672 ? 11 : p < 6720 ? 12 : 13;
    const auto room =
        static_cast<unsigned>(std::max<std::size_t>(p, kBase[range] + 1) - kBase[range]);
    const unsigned offset = kBase[range] + in.Number(bits, in.Below(std::min(room, 1U << bits)));
    Require(offset < p);
    CopyPm(offset + 1, length);
  }

  Codes codes;
};

class SlowPm2 : public SlowPm {
 public:
  using SlowPm::SlowPm;

  void Begin() override { in.Number(1); }

  void Step() override {
    if (bytes.size() >= next) ReadCodes();
    const unsigned c = items.Decode(in);
    constexpr unsigned kBase[] = {0, 8, 16, 32, 64, 96, 128, 192};
    constexpr unsigned kBits[] = {3, 3, 4, 5, 5, 5, 6, 6};
    if (c < 8) return PutIndex(kBase[c] + in.Number(kBits[c]));
    if (c == 8) return CopyPm(in.Number(6) + 1, 2);
    if (c == 28) return CopyPm(1, 256);
    Require(c < 28 && distances.IsUsable());
    unsigned length = c - 6;
    if (c == 23) length = 17 + in.Number(3);
    if (c == 24) length = 25 + in.Number(3);
    if (c == 25) length = 33 + in.Number(5);
    if (c == 26) length = 65 + in.Number(6);
    if (c == 27) length = 129 + in.Number(7);
    const unsigned p = distances.Decode(in);
    CopyPm(1 + (p == 0 ? in.Number(6) : (1U << (p + 5)) + in.Number(p + 5)), length);
  }

 private:
  void ReadCodes() {
    const std::size_t at = next;
    next = at == 0 ? 1024 : at < 4096 ? 2 * at : at + 4096;
    const bool isNew = at == 0 || (at >= 4096 && in.Number(1) == 1);
    if (isNew) ReadItems();
    if (isNew || at <= 4096) {
      ReadDistances(at == 0 ? 5 : at == 1024 ? 6 : at == 2048 ? 7 : 8);
    }
  }

  void ReadItems() {
    const bool wishSingle = in.isComposing && in.Below(4) == 0;
    std::vector<unsigned> wish(29, 0);
    if (in.isComposing && !wishSingle) wish = RandomLengths(in, 8 + in.Below(22), 7);
    const unsigned n =
        in.Number(5, wishSingle ? 1 + in.Below(29) : static_cast<unsigned>(wish.size()));
    const unsigned m = in.Number(3, wishSingle ? 0 : 1);
    needsDistances = n >= 10 && !(n == 29 && m == 0);
    if (m == 0) {
      Require(n != 0);
      return items.SetSingle(n - 1);
    }
    const unsigned w = in.Number(3, 3);
    std::vector<unsigned> lengths;
    for (unsigned i = 0; i < n; ++i) {
      const unsigned v = in.Number(w, i < wish.size() ? wish[i] : 0);
      lengths.push_back(v == 0 ? 0 : v + m - 1);
      Require(lengths.back() <= 16);
    }
    items.SetLengths(lengths);
    Require(items.IsUsable());
  }

  void ReadDistances(unsigned k) {
    if (!needsDistances) return;
    std::vector<unsigned> lengths(k, 0);
    if (in.isComposing) {
      const unsigned kind = in.Below(distances.IsUsable() ? 4 : 3);
      if (kind < 2) lengths = RandomLengths(in, k, 7);
      if (kind == 2) lengths[in.Below(k)] = 1 + in.Below(7);
    }
    for (unsigned& length : lengths) length = in.Number(3, length);
    const auto used = [](unsigned length) { return length != 0; };
    const auto count = std::ranges::count_if(lengths, used);
    if (count == 1) {
      distances.SetSingle(
          static_cast<unsigned>(std::ranges::find_if(lengths, used) - lengths.begin()));
    }
    if (count > 1) distances.SetLengths(lengths);
  }

  std::size_t next = 0;
  bool needsDistances = false;
  PictureCode items;
  PictureCode distances;
};

SlowResult RunClassic(Method method, Stream& in, std::size_t size) {
  switch (method) {
    case Method::Lh1:
      return SlowLh1(in, size).Run();
    case Method::Lh2:
      return SlowLh2(in, size).Run();
    case Method::Lh3:
      return SlowLh3(in, size).Run();
    case Method::Lzs:
      return SlowLzs(in, size).Run();
    case Method::Lz5:
      return SlowLz5(in, size).Run();
    case Method::Pm1:
      return SlowPm1(in, size).Run();
    default:
      return SlowPm2(in, size).Run();
  }
}

}  // namespace

SlowResult SlowDecodeClassic(Method method, std::span<const std::uint8_t> packed,
                             std::size_t size) {
  Stream in(packed);
  return RunClassic(method, in, size);
}

RandomStream ComposeClassic(Method method, unsigned seed, std::size_t size) {
  Stream out(seed);
  RunClassic(method, out, size);
  return {out.Written(), size};
}

}  // namespace kozor::codec
