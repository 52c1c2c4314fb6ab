// FileFacts.cpp - see FileFacts.h.
#include "platform/win32/posix/FileFacts.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <limits>

#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

constexpr std::int64_t kNanosecondsPerTick = 100;
constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
constexpr std::int64_t kMaxTicks = std::numeric_limits<std::int64_t>::max();

constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;

timespec ToTimespec(const statx_timestamp& time) {
  return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

bool Earlier(const timespec& a, const timespec& b) {
  return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

bool Read(int directory, const char* path, int flags, FileFacts& facts) {
  struct statx raw {};
  if (Calls().statx(directory, path, flags, kWanted, &raw) != 0) return false;
  facts.id = {makedev(raw.stx_dev_major, raw.stx_dev_minor), raw.stx_ino};
  facts.mode = raw.stx_mode;
  facts.size = raw.stx_size;
  facts.links = raw.stx_nlink;
  facts.accessed = ToTimespec(raw.stx_atime);
  facts.written = ToTimespec(raw.stx_mtime);
  facts.changed = ToTimespec(raw.stx_ctime);
  facts.created = (raw.stx_mask & STATX_BTIME) != 0
                      ? ToTimespec(raw.stx_btime)
                      : std::min(facts.written, facts.changed, Earlier);
  return true;
}

}  // namespace

bool ReadFacts(int directory, const char* path, FileFacts& facts) {
  facts = {};
  if (!Read(directory, path, AT_SYMLINK_NOFOLLOW, facts)) return false;
  if (!S_ISLNK(facts.mode)) return true;
  facts.link = true;
  facts.dangling = !Read(directory, path, 0, facts);
  return true;
}

bool ReadFacts(int file, FileFacts& facts) {
  facts = {};
  return Read(file, "", AT_EMPTY_PATH, facts);
}

FILETIME ToFileTime(const timespec& time) {
  const std::int64_t seconds = static_cast<std::int64_t>(time.tv_sec) + kSecondsFrom1601To1970;
  if (seconds < 0) return FromTicks(0);
  if (seconds >= kMaxTicks / kTicksPerSecond) return FromTicks(kMaxTicks);
  return FromTicks(
      static_cast<std::uint64_t>(seconds * kTicksPerSecond + time.tv_nsec / kNanosecondsPerTick));
}

timespec FromFileTime(const FILETIME& time) {
  const std::uint64_t ticks = Ticks(time);
  const auto seconds = static_cast<std::int64_t>(ticks / kTicksPerSecond);
  return {seconds - kSecondsFrom1601To1970,
          static_cast<long>(ticks % kTicksPerSecond * kNanosecondsPerTick)};
}

std::uint64_t Ticks(const FILETIME& time) {
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME FromTicks(std::uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace kozor::posix
