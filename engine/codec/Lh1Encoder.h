// Lh1Encoder.h - packs members for readers that support only lh1.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/codec/AdaptiveCode.h"
#include "engine/codec/BitWriter.h"
#include "engine/codec/Lh1Format.h"

namespace kozor::codec {

// Packs one member after another, each fed in pieces.  The packed bytes don't depend on the sizes
// of the pieces.  Memory is bounded.
class Lh1Encoder {
 public:
  Lh1Encoder();

  // Appends finished bytes to `packed`.
  void Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed);
  // Writes the remaining bits; the next Append begins another member.
  void Finish(std::vector<std::uint8_t>& packed);

 private:
  struct Match {
    std::size_t length = 0;  // 0: none
    std::size_t distance = 0;
  };

  void Begin();
  void Pack(std::size_t end);
  void Slide();
  Match Longest(std::size_t at) const;
  void Enter(std::size_t at);
  void PutMatch(const Match& match);
  void PutSymbol(unsigned symbol);

  // The window, then the bytes to pack next.  Positions count from the start of the buffer.
  std::vector<std::uint8_t> buffer;
  std::size_t next = 0;  // to be packed
  std::size_t end = 0;

  // Chains of positions whose first bytes have the same hash, newest first.  Entries are the
  // position plus 1; 0 ends a chain.
  std::vector<std::uint32_t> newest;
  std::vector<std::uint32_t> older;

  AdaptiveCode<kLh1Symbols> itemCode;
  std::array<std::uint8_t, kLh1DistanceSymbols> distanceLengths;
  std::array<std::uint16_t, kLh1DistanceSymbols> distanceCodes;
  BitWriter bits;
};

}  // namespace kozor::codec
