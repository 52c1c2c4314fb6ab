// PositionTable.h - finds positions by a hash of the data there.  It takes five bytes per slot and
// stores none of that data.
//
// Callers compare (`isWanted(position)`) and hash (`hashAt(position)`).
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kozor::container {

class PositionTable {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // kNone if there is none.
  template <typename IsWanted>
  std::uint32_t Find(std::size_t hash, IsWanted isWanted) const {
    return slots.empty() ? kNone : slots[SlotOf(hash, isWanted)];
  }

  // Replaces the wanted position by `position`, or adds it.
  template <typename IsWanted, typename HashAt>
  void Put(std::size_t hash, std::uint32_t position, IsWanted isWanted, HashAt hashAt) {
    if ((count + 1) * 4 > slots.size() * 3) Grow(hashAt);
    const std::size_t slot = SlotOf(hash, isWanted);
    if (slots[slot] == kNone) ++count;
    slots[slot] = position;
    tags[slot] = TagOf(hash);
  }

  // Reserves slots for this many positions.
  template <typename HashAt>
  void Reserve(std::size_t positions, HashAt hashAt) {
    while (positions * 4 > slots.size() * 3) Grow(hashAt);
  }

 private:
  static std::uint8_t TagOf(std::size_t hash) { return static_cast<std::uint8_t>(hash >> 24); }

  // The slot of the wanted position, or the free slot for it.
  template <typename IsWanted>
  std::size_t SlotOf(std::size_t hash, IsWanted isWanted) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t slot = hash & mask;
    while (slots[slot] != kNone && !(tags[slot] == TagOf(hash) && isWanted(slots[slot]))) {
      slot = (slot + 1) & mask;
    }
    return slot;
  }

  template <typename HashAt>
  void Grow(HashAt hashAt) {
    const std::vector<std::uint32_t> old = std::move(slots);
    slots.assign(old.empty() ? 16 : old.size() * 2, kNone);
    tags.assign(slots.size(), 0);
    const auto isOther = [](std::uint32_t) { return false; };
    for (const std::uint32_t position : old) {
      if (position == kNone) continue;
      const std::size_t hash = hashAt(position);
      const std::size_t slot = SlotOf(hash, isOther);
      slots[slot] = position;
      tags[slot] = TagOf(hash);
    }
  }

  std::vector<std::uint32_t> slots;  // a power of two
  std::vector<std::uint8_t> tags;    // part of each hash, to avoid needless comparisons
  std::size_t count = 0;
};

}  // namespace kozor::container
