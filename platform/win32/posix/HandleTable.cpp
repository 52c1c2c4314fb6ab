// HandleTable.cpp - see HandleTable.h.
#include "platform/win32/posix/HandleTable.h"

#include <mutex>
#include <utility>
#include <vector>

namespace kozor::posix {

namespace {

// The upper half of a handle counts the uses of its slot, so that a closed handle never refers to
// the next object in the slot.  The lower half is 4 times the slot's number, counted from 1.
constexpr unsigned kHalfBits = sizeof(UINT_PTR) * 4;
constexpr UINT_PTR kLowMask = (UINT_PTR{1} << kHalfBits) - 1;
// Ensures that no handle equals INVALID_HANDLE_VALUE.
constexpr UINT_PTR kUseMask = kLowMask >> 1;

struct Slot {
  std::shared_ptr<Object> object;
  UINT_PTR uses = 0;
};

class Table {
 public:
  HANDLE Add(std::shared_ptr<Object> object) {
    const std::lock_guard guard(lock);
    if (free.empty()) {
      free.reserve(slots.size() + 1);  // so that closing never needs memory
      slots.emplace_back();
      free.push_back(slots.size() - 1);
    }
    const std::size_t index = free.back();
    free.pop_back();
    Slot& slot = slots[index];
    slot.object = std::move(object);
    slot.uses = (slot.uses + 1) & kUseMask;
    return reinterpret_cast<HANDLE>(slot.uses << kHalfBits | (index + 1) * 4);
  }

  std::shared_ptr<Object> Find(HANDLE handle) {
    const std::lock_guard guard(lock);
    const Slot* const slot = FindSlot(handle);
    return slot != nullptr ? slot->object : nullptr;
  }

  std::shared_ptr<Object> Remove(HANDLE handle) {
    const std::lock_guard guard(lock);
    Slot* const slot = FindSlot(handle);
    if (slot == nullptr) return nullptr;
    free.push_back(static_cast<std::size_t>(slot - slots.data()));
    return std::exchange(slot->object, nullptr);
  }

 private:
  Slot* FindSlot(HANDLE handle) {
    const auto value = reinterpret_cast<UINT_PTR>(handle);
    const UINT_PTR low = value & kLowMask;
    if (low == 0 || low % 4 != 0 || low / 4 > slots.size()) return nullptr;
    Slot& slot = slots[low / 4 - 1];
    return slot.object && slot.uses == value >> kHalfBits ? &slot : nullptr;
  }

  std::mutex lock;
  std::vector<Slot> slots;
  std::vector<std::size_t> free;
};

// Never destroyed: an object of static duration may close its handles after main.
Table& TheTable() {
  static Table& table = *new Table;
  return table;
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<Object> object) {
  return TheTable().Add(std::move(object));
}

std::shared_ptr<Object> FindHandle(HANDLE handle) {
  return TheTable().Find(handle);
}

std::shared_ptr<Object> RemoveHandle(HANDLE handle) {
  return TheTable().Remove(handle);
}

}  // namespace kozor::posix
