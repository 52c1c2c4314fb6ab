// Sha256.h - checksums of backup volumes and files (FIPS 180-4).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace kozor::program {

class Sha256 {
 public:
  void Add(std::span<const unsigned char> bytes);
  // Returns the checksum as 64 hexadecimal digits.  The object must not be used after that.
  std::string Finish();

 private:
  using State = std::array<std::uint32_t, 8>;
  static void AddBlocks(State& state, std::span<const unsigned char> blocks);
  static void AddBlocksByInstruction(State& state, std::span<const unsigned char> blocks);

  State state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<unsigned char, 64> pending{};
  std::uint64_t total = 0;  // bytes added
};

}  // namespace kozor::program
