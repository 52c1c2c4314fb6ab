// ByteOrder.h - numbers in pieces: the little-endian bytes of archives and volumes, the halves of
// Win32 records.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace kozor {

// Precondition: sizeof(Number) bytes can be read at `bytes`.
template <typename Number>
constexpr Number LoadLittle(const std::uint8_t* bytes) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i) bits |= std::uint64_t{bytes[i]} << (8 * i);
  return static_cast<Number>(bits);
}

// Stores the low `width` bytes of `value`, at most 8, at `bytes`.
constexpr void StoreLittle(std::uint8_t* bytes, std::uint64_t value, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

// An unaligned little-endian field of an on-disk record.
template <typename Number>
class LittleEndian {
 public:
  constexpr LittleEndian& operator=(Number value) {
    StoreLittle(bytes.data(), static_cast<std::uint64_t>(value), sizeof(Number));
    return *this;
  }
  constexpr operator Number() const { return LoadLittle<Number>(bytes.data()); }

 private:
  std::array<std::uint8_t, sizeof(Number)> bytes{};
};
static_assert(alignof(LittleEndian<std::uint64_t>) == 1 &&
              sizeof(LittleEndian<std::uint64_t>) == 8);

// Joins the two halves in which Win32 records hold a 64-bit number.
constexpr std::uint64_t JoinHalves(std::uint32_t high, std::uint32_t low) {
  return std::uint64_t{high} << 32 | low;
}

}  // namespace kozor
