// Sha256.cpp - see Sha256.h.
//
// Uses the processor's SHA instructions if available, which are five times as fast.
#include "Sha256.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#include <immintrin.h>
#define KOZOR_SHA_INSTRUCTIONS __attribute__((target("sha,sse4.1,ssse3")))
#endif

namespace kozor::program {

namespace {

constexpr std::size_t kBlockBytes = 64;

// The fractions of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t BigEndian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void AddBlock(std::array<std::uint32_t, 8>& state, const unsigned char* block) {
  std::array<std::uint32_t, 64> words{};
  for (std::size_t i = 0; i < 16; ++i) words[i] = BigEndian(block + 4 * i);
  for (std::size_t i = 16; i < 64; ++i) {
    const std::uint32_t a = words[i - 15];
    const std::uint32_t b = words[i - 2];
    words[i] = words[i - 16] + words[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < 64; ++i) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + kRounds[i] + words[i];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const std::array<std::uint32_t, 8> worked = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += worked[i];
}

#ifdef KOZOR_SHA_INSTRUCTIONS

bool HasShaInstructions() {
  constexpr unsigned kLeafOfExtensions = 7;
  constexpr unsigned kSha = 1U << 29;
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  return __builtin_cpu_supports("sse4.1") != 0 &&
         __get_cpuid_count(kLeafOfExtensions, 0, &a, &b, &c, &d) != 0 && (b & kSha) != 0;
}

#endif

}  // namespace

void Sha256::AddBlocks(State& state, std::span<const unsigned char> blocks) {
#ifdef KOZOR_SHA_INSTRUCTIONS
  static const bool hasInstructions = HasShaInstructions();
  if (hasInstructions) return AddBlocksByInstruction(state, blocks);
#endif
  for (; !blocks.empty(); blocks = blocks.subspan(kBlockBytes)) AddBlock(state, blocks.data());
}

#ifdef KOZOR_SHA_INSTRUCTIONS

// The instructions do two rounds at a time.  They take the state as two vectors of four words: a b
// e f and c d g h, from the highest lane to the lowest.
KOZOR_SHA_INSTRUCTIONS void Sha256::AddBlocksByInstruction(State& state,
                                                           std::span<const unsigned char> blocks) {
  const auto load = [](const void* from) KOZOR_SHA_INSTRUCTIONS {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
  };
  const __m128i bigEndian = _mm_set_epi64x(0x0c0d0e0f08090a0b, 0x0405060700010203);
  const __m128i badc = _mm_shuffle_epi32(load(&state[0]), 0xB1);
  const __m128i efgh = _mm_shuffle_epi32(load(&state[4]), 0x1B);
  __m128i abef = _mm_alignr_epi8(badc, efgh, 8);
  __m128i cdgh = _mm_blend_epi16(efgh, badc, 0xF0);
  for (; !blocks.empty(); blocks = blocks.subspan(kBlockBytes)) {
    const __m128i oldAbef = abef;
    const __m128i oldCdgh = cdgh;
    __m128i words[4];  // the last sixteen words of the message schedule
    for (std::size_t i = 0; i < 16; ++i) {
      __m128i& word = words[i % 4];
      if (i < 4) {
        word = _mm_shuffle_epi8(load(blocks.data() + 16 * i), bigEndian);
      } else {
        const __m128i last = words[(i + 3) % 4];
        const __m128i sum = _mm_add_epi32(_mm_sha256msg1_epu32(word, words[(i + 1) % 4]),
                                          _mm_alignr_epi8(last, words[(i + 2) % 4], 4));
        word = _mm_sha256msg2_epu32(sum, last);
      }
      const __m128i rounds = _mm_add_epi32(word, load(&kRounds[4 * i]));
      cdgh = _mm_sha256rnds2_epu32(cdgh, abef, rounds);
      abef = _mm_sha256rnds2_epu32(abef, cdgh, _mm_shuffle_epi32(rounds, 0x0E));
    }
    abef = _mm_add_epi32(abef, oldAbef);
    cdgh = _mm_add_epi32(cdgh, oldCdgh);
  }
  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(&state[0]), _mm_blend_epi16(feba, dchg, 0xF0));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(&state[4]), _mm_alignr_epi8(dchg, feba, 8));
}

#endif

void Sha256::Add(std::span<const unsigned char> bytes) {
  std::size_t held = total % kBlockBytes;
  total += bytes.size();
  if (held != 0) {
    const std::size_t taken = std::min(bytes.size(), kBlockBytes - held);
    std::copy_n(bytes.begin(), taken, pending.begin() + static_cast<std::ptrdiff_t>(held));
    bytes = bytes.subspan(taken);
    held += taken;
    if (held < kBlockBytes) return;
    AddBlocks(state, pending);
  }
  const std::size_t rest = bytes.size() % kBlockBytes;
  AddBlocks(state, bytes.first(bytes.size() - rest));
  std::copy(bytes.end() - static_cast<std::ptrdiff_t>(rest), bytes.end(), pending.begin());
}

std::string Sha256::Finish() {
  const std::uint64_t bits = total * 8;
  std::array<unsigned char, 72> padding = {0x80};
  const std::size_t zeros = (119 - total % kBlockBytes) % kBlockBytes;
  for (std::size_t i = 0; i < 8; ++i) {
    padding[1 + zeros + i] = static_cast<unsigned char>(bits >> (56 - 8 * i));
  }
  Add(std::span<const unsigned char>(padding).first(1 + zeros + 8));
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint32_t word : state) {
    for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[word >> shift & 15];
  }
  return text;
}

}  // namespace kozor::program
