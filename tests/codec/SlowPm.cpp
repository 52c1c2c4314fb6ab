// SlowPm.cpp - the slow decoders of Pm1 and Pm2.
#include <algorithm>
#include <map>
#include <sstream>

#include "tests/codec/SlowTwin.h"

namespace kozor::codec {
namespace {

class SlowPm : public SlowTwin {
 public:
  SlowPm(SlowStream& stream, std::size_t size) : SlowTwin(stream, size) {
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
  using Codes = std::map<std::string, char>;  // the class of a literal by its code

  // Parses "class:code" for each code.
  static Codes CodesOf(unsigned number) {
    // clang-format off
    constexpr const char* kTable[] = {
        "a:0000 b:0001 c:001 d:01 e:10 f:11",    "a:000 b:001 c:010 d:10 e:11 f:011",
        "a:000 b:001 c:01 d:10 e:110 f:111",     "a:00 b:010 c:011 d:10 e:110 f:111",
        "a:00 b:010 c:10 d:011 e:110 f:111",     "a:00 b:010 c:10 d:11 e:0110 f:0111",
        "a:00 b:01 c:100 d:101 e:110 f:111",     "a:00 b:01 c:100 d:11 e:1010 f:1011",
        "a:00 b:01 c:10 d:110 e:1110 f:1111",    "a:0 b:1000 c:101 d:110 e:111 f:1001",
        "a:0 b:1000 c:101 d:11 e:10010 f:10011", "a:0 b:1000 c:1001 d:101 e:110 f:111",
        "a:0 b:100 c:1010 d:110 e:111 f:1011",   "a:0 b:100 c:101 d:110 e:1110 f:1111",
        "a:0 b:100 c:11 d:1010 e:10110 f:10111", "a:0 b:10 c:1100 d:1101 e:1110 f:1111",
        "a:0 b:10 c:110 d:1110 e:11110 f:11111", "c:01 d:000 d:10 e:001 e:11",
        "a:00 b:010 c:10 d:11 e:011",            "a:00 b:01 c:10 d:110 e:111",
        "a:0 b:1000 c:101 d:11 e:1001",          "a:0 b:100 c:101 d:110 e:111",
        "a:0 b:100 c:11 d:1010 e:1011",          "a:0 b:10 c:110 d:1110 e:1111",
        "a:000 b:001 c:01 d:1",                  "a:00 b:010 c:1 d:011",
        "a:00 b:01 c:10 d:11",                   "a:0 b:100 c:11 d:101",
        "a:0 b:10 c:110 d:111",                  "a:0 b:10 c:11",
        "a:0 b:1",                               "a:"};
    // clang-format on
    Codes codes;
    std::istringstream words(kTable[number]);
    for (std::string word; words >> word;) codes[word.substr(2)] = word[0];
    return codes;
  }

  void Literal() {
    constexpr unsigned kBase[] = {0, 16, 32, 64, 128, 192};
    constexpr unsigned kBits[] = {4, 4, 5, 6, 6, 6};
    std::string read;
    while (!codes.contains(read)) read += in.Number(1) != 0 ? '1' : '0';
    const int literalClass = codes[read] - 'a';
    PutIndex(kBase[literalClass] + in.Number(kBits[literalClass]));
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

  // Writes only ranges that have offsets: those of 64 and more can't be used before enough data
  // exists.
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
    constexpr unsigned kMostBits[] = {6, 8, 6, 9, 11, 13};
    unsigned bits = std::min(kMostBits[range], 8U);  // enough to reach back to the beginning
    while (bits < kMostBits[range] && p >= kBase[range] + (1U << bits)) ++bits;
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
    constexpr unsigned kLength[] = {17, 25, 33, 65, 129};
    constexpr unsigned kLengthBits[] = {3, 3, 5, 6, 7};
    const unsigned length = c < 23 ? c - 6 : kLength[c - 23] + in.Number(kLengthBits[c - 23]);
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
    if (in.isComposing && !wishSingle) wish = RandomSelection(in, 8 + in.Below(22), 7);
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
      if (kind < 2) lengths = RandomSelection(in, k, 7);
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
  SlowCode items;
  SlowCode distances;
};

}  // namespace

SlowTwinPointer MakeSlowPm(Method method, SlowStream& stream, std::size_t size) {
  if (method == Method::Pm1) return std::make_unique<SlowPm1>(stream, size);
  return std::make_unique<SlowPm2>(stream, size);
}

}  // namespace kozor::codec
