// IndexCache.cpp - see IndexCache.h.
#include "engine/container/IndexCache.h"

#include <algorithm>
#include <utility>

#include "engine/container/Failure.h"
#include "platform/base/Clock.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

constexpr std::size_t kMaxEntries = 4;

// File times have the resolution of the system's clock tick.  An archive written within the last
// tick may be written again without a change of its time.
constexpr std::uint64_t kTick = kTicksPerSecond / 20;

bool IsSettled(const FileStamp& stamp) {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const std::uint64_t present = Ticks(now);
  return present > stamp.lastWrite + kTick || stamp.lastWrite > present + kTick;
}

}  // namespace

IndexCache::Entry* IndexCache::Lookup(const std::string& path) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& entry) { return entry.path == path; });
  if (found == entries.end()) return nullptr;
  entries.splice(entries.begin(), entries, found);
  return &entries.front();
}

IndexCache::Entry* IndexCache::LookupGood(const std::string& path, const FileStamp& stamp) {
  Entry* const entry = Lookup(path);
  if (entry == nullptr) return nullptr;
  const bool isGood = entry->isSettled && entry->stamp == stamp &&
                      entry->index->WorkingPage() == GetACP() &&
                      entry->index->NamePage() == KzNameCodePage();
  if (isGood) return entry;
  entries.pop_front();
  return nullptr;
}

IndexCache::Entry& IndexCache::Read(const std::string& path, File& file) {
  const FileStamp stamp = file.Facts().stamp;
  if (Entry* const known = LookupGood(path, stamp)) return *known;
  const bool isSettled = IsSettled(stamp);
  BufferedFile source(file);
  auto index = std::make_shared<ArchiveIndex>(source, GetACP(), KzNameCodePage());
  entries.push_front({path, stamp, std::move(index), isSettled, {}});
  if (entries.size() > kMaxEntries) entries.pop_back();
  return entries.front();
}

std::shared_ptr<const ArchiveIndex> IndexCache::Get(const std::string& path, File& file) {
  const std::scoped_lock lock(mutex);
  return Read(path, file).index;
}

ReadArchive IndexCache::Open(const std::string& path) {
  const std::scoped_lock lock(mutex);
  if (const auto stamp = FindStamp(path)) {
    const Entry* const known = LookupGood(path, *stamp);
    if (auto file = known != nullptr ? known->file.lock() : nullptr) {
      if (keepsOpen) kept = file;
      return {file, known->index};
    }
  }
  const auto file = std::make_shared<File>();
  if (!file->Open(path, File::Mode::Read)) {
    const DWORD error = GetLastError();
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw Failure(isMissing ? ResultCode::ArchiveNotFound : ResultCode::ArchiveNotOpened);
  }
  Entry& entry = Read(path, *file);
  entry.file = file;
  if (keepsOpen) kept = file;
  return {file, entry.index};
}

ReadArchive IndexCache::OpenAgain(const std::string& path) {
  {
    const std::scoped_lock lock(mutex);
    const Entry* const known = kept != nullptr ? Lookup(path) : nullptr;
    if (known != nullptr && known->file.lock() == kept) return {kept, known->index};
  }
  return Open(path);
}

void IndexCache::KeepOpen(bool on) {
  const std::scoped_lock lock(mutex);
  keepsOpen = on;
  kept.reset();
}

void IndexCache::LetGo() {
  const std::scoped_lock lock(mutex);
  kept.reset();
  for (Entry& entry : entries) {
    if (const auto file = std::exchange(entry.file, {}).lock()) file->Close();
  }
}

void IndexCache::MembersAppended(const std::string& path, File& file) noexcept {
  const std::scoped_lock lock(mutex);
  Entry* entry = Lookup(path);
  if (entry == nullptr) return;
  try {
    ReadOn(*entry, file);
  } catch (
      const std::exception&) {  // the archive is good; its index is read again when it is needed
    entries.pop_front();
  }
}

void IndexCache::ReadOn(Entry& entry, File& file) {
  // A search that still uses the old index keeps it.
  if (entry.index.use_count() > 1) entry.index = std::make_shared<ArchiveIndex>(*entry.index);
  BufferedFile source(file);
  entry.index->ReadOn(source);
  entry.stamp = file.Facts().stamp;
  entry.isSettled = true;
}

}  // namespace kozor::container
