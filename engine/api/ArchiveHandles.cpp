// ArchiveHandles.cpp - see ArchiveHandles.h.
#include "engine/api/ArchiveHandles.h"

#include <utility>

#include "engine/api/Records.h"

namespace kozor::api {
namespace {

std::uintptr_t NumberOf(HARC handle) {
  return reinterpret_cast<std::uintptr_t>(handle);
}

}  // namespace

HARC ArchiveHandles::Add(container::ReadArchive archive, Depth depth) {
  const std::scoped_lock lock(mutex);
  entries.emplace(++lastNumber, Entry{std::move(archive), depth, std::nullopt, std::nullopt});
  return reinterpret_cast<HARC>(lastNumber);
}

bool ArchiveHandles::Remove(HARC handle) {
  const std::scoped_lock lock(mutex);
  return entries.erase(NumberOf(handle)) != 0;
}

ArchiveHandles::Entry* ArchiveHandles::Lookup(HARC handle) {
  const auto found = entries.find(NumberOf(handle));
  return found == entries.end() ? nullptr : &found->second;
}

ArchiveHandles::Found ArchiveHandles::Advance(Entry& entry, UnlhaMemberRecord& record) {
  entry.current = entry.search ? entry.search->Next() : std::nullopt;
  if (!entry.current) return Found::None;
  FillMemberRecord(entry.archive.index->Members()[*entry.current], record);
  return Found::Member;
}

ArchiveHandles::Found ArchiveHandles::FindFirst(HARC handle, std::string_view text,
                                                UnlhaMemberRecord& record) {
  const std::scoped_lock lock(mutex);
  Entry* entry = Lookup(handle);
  if (entry == nullptr) return Found::InvalidHandle;
  entry->search.emplace(*entry->archive.index, text, entry->depth);
  return Advance(*entry, record);
}

ArchiveHandles::Found ArchiveHandles::FindNext(HARC handle, UnlhaMemberRecord& record) {
  const std::scoped_lock lock(mutex);
  Entry* entry = Lookup(handle);
  return entry == nullptr ? Found::InvalidHandle : Advance(*entry, record);
}

std::optional<std::uint16_t> ArchiveHandles::Attribute(HARC handle) {
  const std::scoped_lock lock(mutex);
  const Entry* entry = Lookup(handle);
  if (entry == nullptr || !entry->current) return std::nullopt;
  return entry->archive.index->Members()[*entry->current].attribute;
}

}  // namespace kozor::api
