// FirstHeader.cpp - see FirstHeader.h.
//
// The search order is: a header at the start of the file (one with a method of no known family only
// if a member follows it); the end of the program image, if its format states it (MZ, PE, ELF);
// then every byte after that.  A position counts only if its header passes every test and its
// packed data ends inside the file, because stubs contain texts like "-lhd-" and even fake headers.
#include "engine/container/FirstHeader.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "engine/container/Failure.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/ProgramEnd.h"

namespace kozor::container {
namespace {

constexpr std::uint64_t kMaxScan = 1 << 20;   // from the start, or from the end of the program
constexpr std::size_t kFirstScanPiece = 512;  // after damage, the next member is mostly near
constexpr std::size_t kScanPiece = 64 << 10;

bool IsWholeMember(ByteSource& source, std::uint64_t offset, MemberHeader& header) {
  return ParseHeaderAt(source, offset, header) == HeaderStatus::Complete &&
         IsArchiveMethod(header.method) &&
         header.packedBytes <= source.Size() - offset - header.headerBytes;
}

// Whether a header at the start leads to a member.  Then it is a member, too, whatever its method.
bool IsFollowed(ByteSource& source, const MemberHeader& first) {
  const std::uint64_t room =
      source.Size() - std::min<std::uint64_t>(source.Size(), first.headerBytes);
  MemberHeader next;
  return first.packedBytes < room &&
         IsWholeMember(source, first.headerBytes + first.packedBytes, next);
}

bool IsEmptyArchive(ByteSource& source) {
  const ByteSpan start = source.At(0, 1);
  return source.Size() == 1 && !start.empty() && start[0] == 0;
}

// Whether the bytes look like a header with one damaged byte.  Such a position must not be skipped
// as part of a stub: the search would find the second member and lose the first.
bool LooksLikeDamagedHeader(ByteSource& source, std::uint64_t offset) {
  const ByteSpan bytes = source.At(offset, kCommonHeaderBytes);
  if (bytes.size() < kCommonHeaderBytes) return false;
  const auto id = bytes.subspan(2, 5);
  const auto isOneOf = [](std::uint8_t byte, std::string_view set) {
    return set.find(static_cast<char>(byte)) != std::string_view::npos;
  };
  if (id[3] == 's' && id[2] != 'z') return false;  // bait in stubs: "-pms-", "-lhs-"
  const int fits = (id[0] == '-') + isOneOf(id[1], "lp") + isOneOf(id[2], "hzm") +
                   isOneOf(id[3], "0123456789dsx") + (id[4] == '-');
  return fits >= 4;
}

// Limit on header bytes examined in vain.  Real stubs stay far below it; data crafted to look like
// headers would otherwise cost a header's length at every position.
constexpr std::uint64_t kMaxLookedAt = 256 << 20;

// The first position from `begin` on with a method id that `accepts` accepts.  `accepts` adds the
// bytes it examined to `lookedAt`.
template <typename Accepts>
std::optional<std::uint64_t> Scan(ByteSource& source, std::uint64_t begin, std::uint64_t limit,
                                  Accepts accepts) {
  limit = std::min(limit, source.Size());
  std::uint64_t lookedAt = 0;
  std::size_t pieceBytes = kFirstScanPiece;
  for (std::uint64_t at = begin; at < limit;) {
    // Pieces overlap, so that a method id is never split.
    const ByteSpan piece = source.At(at, pieceBytes);
    pieceBytes = std::min(2 * pieceBytes, kScanPiece);
    if (piece.size() < kCommonHeaderBytes) break;
    std::vector<std::uint64_t> candidates;
    const std::size_t last = piece.size() - 6;
    for (std::size_t i = 0; i < last; ++i) {
      if (piece[i + 2] == '-' && piece[i + 6] == '-') candidates.push_back(at + i);
    }
    for (const std::uint64_t candidate : candidates) {
      if (candidate >= limit || lookedAt > kMaxLookedAt) return std::nullopt;
      if (accepts(candidate, lookedAt)) return candidate;
    }
    at += last;
  }
  return std::nullopt;
}

bool AcceptsMember(ByteSource& source, std::uint64_t offset, std::uint64_t& lookedAt) {
  MemberHeader header;
  const bool isWhole = IsWholeMember(source, offset, header);
  lookedAt += kCommonHeaderBytes + header.headerBytes;
  return isWhole;
}

// Where undamaged members lead to.
struct Chain {
  std::uint64_t end = 0;   // 0 if there are none
  bool isCertain = false;  // to the end of the file, or to further damage
};

// Follows the members from a position.  Those in `seen` belong to a chain that was refused.
Chain FollowMembers(ByteSource& source, std::uint64_t offset, std::uint64_t& lookedAt,
                    std::unordered_set<std::uint64_t>& seen) {
  MemberWalker walker(source, offset);
  MemberHeader header;
  while (walker.Next(header)) {
    lookedAt += header.headerBytes;
    if (!IsArchiveMethod(header.method) || !seen.insert(walker.HeaderOffset()).second) return {};
  }
  lookedAt += kCommonHeaderBytes + header.headerBytes;
  if (walker.NextOffset() == offset) return {};
  const std::uint64_t end = walker.NextOffset() + (walker.HasEndMark() ? 1 : 0);
  return {end, end == source.Size() || walker.Status() != HeaderStatus::Complete};
}

// Skips small archives inside a stub: if an archive after a prefix is followed by another header
// right after its end mark, it belongs to the stub.
std::uint64_t PassStubArchives(ByteSource& source, std::uint64_t offset) {
  constexpr std::uint64_t kReach = 16;
  for (;;) {
    MemberWalker walker(source, offset);
    MemberHeader header;
    while (walker.Next(header)) {
    }
    if (!walker.HasEndMark()) return offset;
    const std::uint64_t mark = walker.NextOffset();
    std::uint64_t later = mark + 1;
    while (later <= mark + kReach && !IsWholeMember(source, later, header)) ++later;
    if (later > mark + kReach) return offset;
    offset = later;
  }
}

}  // namespace

std::uint64_t FindFirstHeader(ByteSource& source) {
  MemberHeader header;
  const HeaderStatus atStart = ParseHeaderAt(source, 0, header);
  if (atStart == HeaderStatus::Complete &&
      (IsArchiveMethod(header.method) || IsFollowed(source, header))) {
    return 0;
  }
  if (IsEmptyArchive(source)) return 0;

  const std::uint64_t programEnd = EndOfProgram(source);
  if (LooksLikeDamagedHeader(source, programEnd) && !IsWholeMember(source, programEnd, header)) {
    return programEnd;
  }
  const auto accepts = [&](std::uint64_t offset, std::uint64_t& lookedAt) {
    return AcceptsMember(source, offset, lookedAt);
  };
  std::optional<std::uint64_t> found = Scan(source, programEnd, programEnd + kMaxScan, accepts);
  if (!found && programEnd != 0) found = Scan(source, 0, kMaxScan, accepts);
  if (!found) throw Failure(ResultCode::NotAnArchive);
  return PassStubArchives(source, *found);
}

bool IsArchive(ByteSource& source) {
  MemberHeader header;
  return ParseHeaderAt(source, FindFirstHeader(source), header) == HeaderStatus::Complete ||
         IsEmptyArchive(source);
}

std::uint64_t FindAfterDamage(ByteSource& source, std::uint64_t damaged, const MemberHeader& header,
                              HeaderStatus status) {
  const std::uint64_t size = source.Size();
  if (status == HeaderStatus::ChecksumWrong && header.packedBytes < size) {
    const std::uint64_t next = damaged + header.headerBytes + header.packedBytes;
    MemberHeader following;
    const ByteSpan mark = source.At(next, 1);
    const bool isEnd = next == size || (next + 1 == size && !mark.empty() && mark[0] == 0);
    if (isEnd || (next < size && IsWholeMember(source, next, following))) return next;
  }
  // The data of the damaged member may be an archive itself: its members lead to an end mark before
  // that of this archive.
  std::unordered_set<std::uint64_t> seen;
  std::uint64_t farthest = 0;
  std::uint64_t leadingFarthest = size;
  const auto accepts = [&](std::uint64_t offset, std::uint64_t& lookedAt) {
    const Chain chain = FollowMembers(source, offset, lookedAt, seen);
    if (chain.end > farthest) {
      farthest = chain.end;
      leadingFarthest = offset;
    }
    return chain.isCertain;
  };
  return Scan(source, damaged + 1, size, accepts).value_or(leadingFarthest);
}

}  // namespace kozor::container
