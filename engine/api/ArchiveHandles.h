// ArchiveHandles.h - the archives that callers have open for searching.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "engine/api/Unlha32.h"
#include "engine/container/IndexCache.h"
#include "engine/container/MemberSearch.h"

namespace kozor::api {

// Handles are numbers that are never reused, so a closed or invented one is always recognised.
// Thread-safe.
class ArchiveHandles {
 public:
  using Depth = container::MemberSearch::Depth;

  HARC Add(container::ReadArchive archive, Depth depth);
  bool Remove(HARC handle);

  enum class Found { Member, None, InvalidHandle };
  Found FindFirst(HARC handle, std::string_view text, UnlhaMemberRecord& record);
  // Finds nothing before FindFirst.
  Found FindNext(HARC handle, UnlhaMemberRecord& record);
  // The attribute of the member found last.
  std::optional<std::uint16_t> Attribute(HARC handle);

 private:
  struct Entry {
    container::ReadArchive archive;
    Depth depth;
    std::optional<container::MemberSearch> search;
    std::optional<std::size_t> current;
  };

  Entry* Lookup(HARC handle);
  static Found Advance(Entry& entry, UnlhaMemberRecord& record);

  std::mutex mutex;
  std::uintptr_t lastNumber = 0;
  std::unordered_map<std::uintptr_t, Entry> entries;
};

}  // namespace kozor::api
