// Metadata.cpp - see Metadata.h.
#include "platform/win32/posix/Metadata.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <limits>

#include "platform/base/Clock.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

constexpr std::int64_t kNanosecondsPerTick = 100;
constexpr std::int64_t kTicks = kTicksPerSecond;
constexpr std::int64_t kMaxTicks = std::numeric_limits<std::int64_t>::max();

constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;

timespec ToTimespec(const statx_timestamp& time) {
  return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

bool Earlier(const timespec& a, const timespec& b) {
  return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

bool Read(int directory, const char* path, int flags, Metadata& metadata) {
  struct statx raw {};
  if (Calls().statx(directory, path, flags, kWanted, &raw) != 0) return false;
  metadata.id = {makedev(raw.stx_dev_major, raw.stx_dev_minor), raw.stx_ino};
  metadata.mode = raw.stx_mode;
  metadata.size = raw.stx_size;
  metadata.links = raw.stx_nlink;
  metadata.accessed = ToTimespec(raw.stx_atime);
  metadata.written = ToTimespec(raw.stx_mtime);
  metadata.changed = ToTimespec(raw.stx_ctime);
  metadata.created = (raw.stx_mask & STATX_BTIME) != 0
                         ? ToTimespec(raw.stx_btime)
                         : std::min(metadata.written, metadata.changed, Earlier);
  return true;
}

}  // namespace

bool ReadMetadata(int directory, const char* path, Metadata& metadata) {
  metadata = {};
  if (!Read(directory, path, AT_SYMLINK_NOFOLLOW, metadata)) return false;
  if (!S_ISLNK(metadata.mode)) return true;
  metadata.link = true;
  metadata.dangling = !Read(directory, path, 0, metadata);
  return true;
}

bool ReadMetadata(int file, Metadata& metadata) {
  metadata = {};
  return Read(file, "", AT_EMPTY_PATH, metadata);
}

FILETIME ToFileTime(const timespec& time) {
  const std::int64_t seconds = static_cast<std::int64_t>(time.tv_sec) + kSecondsFrom1601To1970;
  if (seconds < 0) return FromTicks<FILETIME>(0);
  if (seconds >= kMaxTicks / kTicks) return FromTicks<FILETIME>(kMaxTicks);
  return FromTicks<FILETIME>(
      static_cast<std::uint64_t>(seconds * kTicks + time.tv_nsec / kNanosecondsPerTick));
}

timespec FromFileTime(const FILETIME& time) {
  const std::uint64_t ticks = Ticks(time);
  return {UnixOfFileTime(ticks), NanosecondsOfFileTime(ticks)};
}

}  // namespace kozor::posix
