// MatchFinder.cpp - the tables of the match finder.
#include "engine/codec/MatchFinder.h"

namespace kozor::codec {

// Twice as many hashes as positions in the window keep strangers out of the chains.
MatchFinder::MatchFinder(const std::uint8_t* buffer, std::size_t windowBytes)
    : data(buffer),
      window(windowBytes),
      hashShift(32 - static_cast<unsigned>(std::bit_width(windowBytes))),
      newest4(2 * windowBytes),
      newest3(2 * windowBytes),
      previous(windowBytes) {
  Reset();
}

void MatchFinder::Reset() {
  entered = 0;
  std::ranges::fill(newest4, kNone);
  std::ranges::fill(newest3, kNone);
}

void MatchFinder::Slide(std::size_t bytes) {
  const auto slide = static_cast<Position>(bytes);
  for (std::vector<Position>* table : {&newest4, &newest3, &previous}) {
    for (Position& position : *table) position = std::max(position - slide, kNone);
  }
  entered -= bytes;
}

}  // namespace kozor::codec
