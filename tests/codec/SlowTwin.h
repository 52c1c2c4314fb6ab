// SlowTwin.h - common parts of the slow decoders.
//
// Each decoder follows the description of its method: it reads numbers from a stream in order.  A
// composing stream invents the numbers instead and writes them, so that the decoder produces a
// random member.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <utility>

#include "tests/codec/BitComposer.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {

struct SlowFailure {
  Status status;
};

// If not good, the data is damaged.
inline void Require(bool good) {
  if (!good) throw SlowFailure{Status::Damaged};
}

class SlowStream {
 public:
  explicit SlowStream(std::span<const std::uint8_t> packedBytes) : packed(packedBytes) {}
  explicit SlowStream(unsigned seed) : isComposing(true), random(seed) {}

  const bool isComposing = false;

  unsigned Number(unsigned bits);
  // The value is written when composing and ignored otherwise.
  unsigned Number(unsigned bits, std::size_t wish);
  unsigned Below(std::size_t limit) { return static_cast<unsigned>(random() % limit); }

  std::size_t BitsRead() const { return bitsRead; }
  bool IsPastEnd() const { return !isComposing && bitsRead > packed.size() * 8; }
  // Zeros follow the data, but only a limited number, so that no decoder runs forever.
  void RequireInput() const;
  // Whether only zero bits of the last byte are left.
  bool IsAtEnd();
  const Bytes& Written() const { return written.Bytes(); }

 private:
  std::span<const std::uint8_t> packed;
  std::size_t bitsRead = 0;
  std::mt19937 random;
  BitComposer written;
};

// A canonical code.
class SlowCode {
 public:
  // A code of a single symbol, which takes no bits.
  void SetSingle(unsigned symbol) { symbols = {{{0, 0}, symbol}}; }
  // A complete code, or one without symbols.
  void SetLengths(const std::vector<unsigned>& lengths);
  bool IsUsable() const { return !symbols.empty(); }
  // When composing, writes the symbol wanted, or a random one with equal probability.
  unsigned Decode(SlowStream& in, std::optional<unsigned> wish = std::nullopt) const;

 private:
  std::map<std::pair<unsigned, unsigned>, unsigned> symbols;  // by length and code
};

// The lengths of a random complete code of `count` symbols, at most `most` bits; fewer symbols if
// the code is full.
std::vector<unsigned> RandomLengths(SlowStream& in, std::size_t count, unsigned most);
// Such lengths for some of the symbols, at least two, and 0 for the others.
std::vector<unsigned> RandomSelection(SlowStream& in, std::size_t symbols, unsigned most);

class SlowTwin {
 public:
  SlowTwin(SlowStream& stream, std::size_t size) : in(stream), limit(size) {}
  virtual ~SlowTwin() = default;

  SlowResult Run();

 protected:
  virtual void Begin() {}
  virtual void Step() = 0;  // one item
  virtual void End() {}     // checks the rules for writers

  bool IsFull() const { return bytes.size() == limit; }
  void Put(std::size_t byte) {
    if (!IsFull()) bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  void Copy(std::size_t distance, std::size_t length) {
    Rule(distance <= bytes.size(), "matches begin within the data");
    Rule(length <= limit - bytes.size(), "matches end within the data");
    while (length-- != 0) Put(distance > bytes.size() ? 0x20U : bytes[bytes.size() - distance]);
  }
  void Rule(bool isKept, const char* text) {
    if (!isKept) brokenRules.emplace_back(text);
  }

  SlowStream& in;
  const std::size_t limit;
  Bytes bytes;

 private:
  std::vector<std::string> brokenRules;
};

// Of Lh4 to Lh7, Lhx and Lk7; of Pm1 and Pm2; of the others.
using SlowTwinPointer = std::unique_ptr<SlowTwin>;
SlowTwinPointer MakeSlowBlocks(Method method, SlowStream& stream, std::size_t size);
SlowTwinPointer MakeSlowClassic(Method method, SlowStream& stream, std::size_t size);
SlowTwinPointer MakeSlowPm(Method method, SlowStream& stream, std::size_t size);

}  // namespace kozor::codec
