// MatchFinder.cpp - see MatchFinder.h.
#include "engine/codec/MatchFinder.h"

namespace kozor::codec {

void MatchFinder::BeginTables(const std::uint8_t* newData, std::size_t newEnd) {
  data = newData;
  end = newEnd;
  // Twice as many hashes as positions keep collisions rare, but beyond these sizes cache misses
  // would cost more than collisions.
  constexpr unsigned kMostBits4 = 16;
  constexpr unsigned kMostBits3 = 15;
  const std::size_t positions = std::clamp<std::size_t>(newEnd, 64, window);
  const auto bits = static_cast<unsigned>(std::bit_width(positions));
  const unsigned bits4 = std::min(bits, kMostBits4);
  const unsigned bits3 = std::min(bits, kMostBits3);
  shift4 = 32 - bits4;
  shift3 = 32 - bits3;
  newest4.assign(std::size_t{1} << bits4, kNone);
  newest3.assign(std::size_t{1} << bits3, kNone);
  if (CanVisit(0)) HashNext(data);
}

}  // namespace kozor::codec
