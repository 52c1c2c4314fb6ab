// Sharing.cpp - see Sharing.h.
#include "platform/win32/posix/Sharing.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <random>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

// Bits of a set: what a file is opened for, and what it denies to others.
enum Claim : unsigned {
  Reads = 1,
  Writes = 2,
  DeniesRead = 4,
  DeniesWrite = 8,
  DeniesDelete = 16,
};

unsigned ClaimsOf(const ShareMode& mode) {
  unsigned claims = 0;
  if ((mode.access & GENERIC_READ) != 0) claims |= Reads;
  if ((mode.access & GENERIC_WRITE) != 0) claims |= Writes;
  if (claims == 0) return 0;  // reading metadata only never conflicts
  if ((mode.share & FILE_SHARE_READ) == 0) claims |= DeniesRead;
  if ((mode.share & FILE_SHARE_WRITE) == 0) claims |= DeniesWrite;
  if ((mode.share & FILE_SHARE_DELETE) == 0) claims |= DeniesDelete;
  return claims;
}

// The claims of others that conflict with these.
unsigned ConflictsOf(unsigned claims) {
  unsigned conflicts = 0;
  if ((claims & Reads) != 0) conflicts |= DeniesRead;
  if ((claims & Writes) != 0) conflicts |= DeniesWrite;
  if ((claims & DeniesRead) != 0) conflicts |= Reads;
  if ((claims & DeniesWrite) != 0) conflicts |= Writes;
  return conflicts;
}

struct HashFileId {
  std::size_t operator()(const FileId& id) const {
    return std::hash<std::uint64_t>{}(id.inode * 31 + id.device);
  }
};

// The claims of each handle on each open file of the process.
struct OpenFiles {
  std::mutex lock;
  std::unordered_map<FileId, std::vector<unsigned>, HashFileId> claims;
};

OpenFiles& TheOpenFiles() {
  static OpenFiles& files = *new OpenFiles;
  return files;
}

bool AddToTable(const FileId& id, unsigned claims) {
  OpenFiles& files = TheOpenFiles();
  const std::lock_guard guard(files.lock);
  std::vector<unsigned>& others = files.claims[id];
  const unsigned conflicts = ConflictsOf(claims);
  const auto disagrees = [&](unsigned other) { return (other & conflicts) != 0; };
  if (std::any_of(others.begin(), others.end(), disagrees)) return false;
  others.push_back(claims);
  return true;
}

void RemoveFromTable(const FileId& id, unsigned claims) {
  OpenFiles& files = TheOpenFiles();
  const std::lock_guard guard(files.lock);
  const auto found = files.claims.find(id);
  if (found == files.claims.end()) return;
  std::vector<unsigned>& all = found->second;
  all.erase(std::find(all.begin(), all.end(), claims));
  if (all.empty()) files.claims.erase(found);
}

// The claims of a handle are one lock of one byte, whose position encodes the set.  Unused bytes
// between the positions keep the host from merging two locks.
constexpr off_t kLockBase = 0x7FFF'FFFF'FFFF'0000;
constexpr off_t kLockStep = 2;
constexpr unsigned kClaimSets = 32;

struct LockRange {
  off_t begin;
  off_t end;
};
constexpr LockRange kAllLocks = {kLockBase, kLockBase + kLockStep* kClaimSets};

struct flock LockOf(const LockRange& range, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = range.begin;
  lock.l_len = range.end - range.begin;
  return lock;
}

bool Lock(int file, struct flock lock) {
  int result = 0;
  do {
    result = ::fcntl(file, F_OFD_SETLK, &lock);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

// A handle that writes and shares nothing conflicts with all others: an exclusive lock of all
// positions tests and takes in one call.
constexpr unsigned kSharesNothing = Writes | DeniesRead | DeniesWrite | DeniesDelete;

bool LockAll(int file, unsigned claims) {
  return (claims & kSharesNothing) == kSharesNothing && Lock(file, LockOf(kAllLocks, F_WRLCK));
}

LockRange PlaceOf(unsigned claims) {
  const off_t place = kLockBase + kLockStep * static_cast<off_t>(claims);
  return {place, place + 1};
}

// A shared lock, so that it doesn't fail because another handle has the same claims.
bool LockClaims(int file, unsigned claims) {
  // EAGAIN: someone has locked all positions exclusively.  Other failures come from file systems
  // without locks.
  return Lock(file, LockOf(PlaceOf(claims), F_RDLCK)) || errno != EAGAIN;
}

// Whether another open file holds one of these claims.  Only single-byte locks count, not wider
// ones of other programs.  The host reports one lock in a range, so the parts on either side of it
// are queried again.
bool AnyLocked(int file, unsigned claims, const LockRange& range = kAllLocks) {
  if (range.begin >= range.end) return false;
  struct flock lock = LockOf(range, F_WRLCK);
  if (::fcntl(file, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return false;
  if (lock.l_type == F_WRLCK) {
    return lock.l_start == kAllLocks.begin && lock.l_len == kAllLocks.end - kAllLocks.begin;
  }
  const off_t distance = lock.l_start - kLockBase;
  if (lock.l_len != 1 || distance < 0 || distance % kLockStep != 0) return false;
  if ((static_cast<unsigned>(distance / kLockStep) & claims) != 0) return true;
  return AnyLocked(file, claims, {range.begin, lock.l_start}) ||
         AnyLocked(file, claims, {lock.l_start + 1, range.end});
}

// Locks first and then queries, so two simultaneous requests that conflict are never both granted.
// A request that is refused holds nothing afterwards.
bool Request(int file, unsigned claims) {
  if (LockAll(file, claims)) return true;
  if (!LockClaims(file, claims)) return false;
  if (!AnyLocked(file, ConflictsOf(claims))) return true;
  Lock(file, LockOf(PlaceOf(claims), F_UNLCK));
  return false;
}

// Two simultaneous requests may refuse each other.  So each is repeated after random waits, each up
// to twice as long as the one before, and one of them comes when the other is not asking.
bool RequestRepeatedly(int file, unsigned claims) {
  constexpr int kAttempts = 7;
  constexpr std::chrono::microseconds kFirstWait(250);
  if (Request(file, claims)) return true;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  std::minstd_rand random(static_cast<unsigned>(now) ^ static_cast<unsigned>(::getpid()));
  for (int repeat = 0; repeat < kAttempts - 1; ++repeat) {
    const auto longest = kFirstWait * (1 << repeat);
    std::this_thread::sleep_for(longest * (random() % 1024 + 1) / 1024);
    if (Request(file, claims)) return true;
  }
  return false;
}

// The number of handles in this process that deny deleting the file.
std::ptrdiff_t DenialsInTable(const FileId& id) {
  OpenFiles& files = TheOpenFiles();
  const std::lock_guard guard(files.lock);
  const auto found = files.claims.find(id);
  if (found == files.claims.end()) return 0;
  return std::count_if(found->second.begin(), found->second.end(),
                       [](unsigned claims) { return (claims & DeniesDelete) != 0; });
}

}  // namespace

ShareHold::~ShareHold() {
  if (claims != 0) RemoveFromTable(id, claims);
}

bool ShareHold::Take(int file, const FileId& fileId, const ShareMode& mode) {
  const unsigned wanted = ClaimsOf(mode);
  if (wanted == 0) return true;
  if (!AddToTable(fileId, wanted)) return Fail(ERROR_SHARING_VIOLATION);
  id = fileId;
  claims = wanted;
  return RequestRepeatedly(file, claims) || Fail(ERROR_SHARING_VIOLATION);
}

bool IsDeleteDenied(const char* hostPath, const FileId& id) {
  if (DenialsInTable(id) != 0) return true;
  const int file = ::open(hostPath, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return false;
  const bool denied = AnyLocked(file, DeniesDelete);
  ::close(file);
  return denied;
}

bool IsDeleteDeniedByOthers(int held, const FileId& id) {
  return DenialsInTable(id) > 1 || AnyLocked(held, DeniesDelete);
}

bool IsOpenHere(const FileId& id) {
  OpenFiles& files = TheOpenFiles();
  const std::lock_guard guard(files.lock);
  return files.claims.contains(id);
}

}  // namespace kozor::posix
