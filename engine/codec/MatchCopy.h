// MatchCopy.h - copies matches inside the target.
//
// A match copies `length` bytes from `distance` bytes back.  The result is that of copying byte by
// byte: if distance is less than length, bytes just written are read again, which repeats a
// pattern.  Well inside the target the copy uses wide words and may write past the end of the
// match, over bytes that are unpacked later.  Near the target's end, and for a match that reaches
// back before its beginning, it is exact.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace kozor::codec {

constexpr std::size_t kCopyWord = 16;
// Wide copies write fewer than this many bytes past the end of a match.
constexpr std::size_t kCopySlack = 3 * kCopyWord;

// Needs distance bytes before `out`, and length + kCopySlack bytes after it.
inline void CopyMatchWide(std::uint8_t* out, std::size_t distance, std::size_t length) {
  // For each distance, its smallest multiple of at least a word: a pattern that repeats after
  // `distance` bytes also repeats after any multiple.
  static constexpr std::array<std::uint8_t, kCopyWord> kWideMultiple = {
      0, 16, 16, 18, 16, 20, 18, 21, 16, 18, 20, 22, 24, 26, 28, 30};
  std::uint8_t* const end = out + length;
  if (distance < kCopyWord) [[unlikely]] {
    if (distance == 1) {
      // A run of one byte; with a constant length, memset becomes a store.
      do {
        std::memset(out, out[-1], kCopyWord);
        out += kCopyWord;
      } while (out < end);
      return;
    }
    for (std::size_t i = 0; i < kCopyWord; ++i) out[i] = (out - distance)[i];
    out += kCopyWord;
    distance = kWideMultiple[distance];
  }
  const auto copyWord = [&] {
    std::memcpy(out, out - distance, kCopyWord);
    out += kCopyWord;
  };
  // Most matches end within two words: copying two without tests avoids mispredicted branches.
  copyWord();
  copyWord();
  while (out < end) copyWord();
}

// In most methods the window initially holds spaces.
constexpr std::uint8_t SpaceBefore(std::size_t) {
  return ' ';
}

// Copies as much as fits into the target at `position`; `before(n)` is the byte n positions before
// its beginning.  Returns the position after the copy.
template <typename Before = decltype(&SpaceBefore)>
std::size_t CopyMatchExact(std::span<std::uint8_t> target, std::size_t position,
                           std::size_t distance, std::size_t length, Before before = SpaceBefore) {
  const std::size_t end = position + std::min(length, target.size() - position);
  for (; position < end; ++position) {
    target[position] =
        distance > position ? before(distance - position) : target[position - distance];
  }
  return end;
}

// The same, using wide copies if possible.
template <typename Before = decltype(&SpaceBefore)>
std::size_t CopyMatch(std::span<std::uint8_t> target, std::size_t position, std::size_t distance,
                      std::size_t length, Before before = SpaceBefore) {
  const bool hasRoom = target.size() - position >= length + kCopySlack;
  if (!hasRoom || distance > position) {
    return CopyMatchExact(target, position, distance, length, before);
  }
  CopyMatchWide(target.data() + position, distance, length);
  return position + length;
}

}  // namespace kozor::codec
