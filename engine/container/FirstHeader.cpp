// FirstHeader.cpp - see FirstHeader.h.
//
// A file is looked at in this order: a header at its start; the end of the program's own image, for
// the kinds of program that tell it (MZ, PE, ELF); from there on byte by byte.  A place counts only
// if every test of a header holds there and its packed data ends inside the file, because stubs
// carry texts like "-lhd-" and even fake headers.
#include "engine/container/FirstHeader.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/container/Failure.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/ProgramEnd.h"

namespace kozor::container {
namespace {

constexpr std::uint64_t kMaxScan = 1 << 20;  // from the start, or from the end of the program
constexpr std::size_t kScanPiece = 64 << 10;

bool IsWholeMember(ByteSource& source, std::uint64_t offset) {
  MemberHeader header;
  return ParseHeaderAt(source, offset, header) == HeaderStatus::Complete &&
         IsArchiveMethod(header.method) &&
         header.packedBytes <= source.Size() - offset - header.headerBytes;
}

// Whether the bytes were a header before something happened to one of them.  Such a place must not
// be passed over as part of a stub: the search would find the second member and lose the first.
bool LooksLikeDamagedHeader(ByteSource& source, std::uint64_t offset) {
  const ByteSpan bytes = source.At(offset, kCommonHeaderBytes);
  if (bytes.size() < kCommonHeaderBytes) return false;
  const auto id = bytes.subspan(2, 5);
  const auto isOneOf = [](std::uint8_t byte, std::string_view set) {
    return set.find(static_cast<char>(byte)) != std::string_view::npos;
  };
  if (id[1] == 'p' && id[2] == 'm' && id[3] == 's') return false;  // bait in CP/M stubs
  const int fits = (id[0] == '-') + isOneOf(id[1], "lp") + isOneOf(id[2], "hzm") +
                   isOneOf(id[3], "0123456789dsx") + (id[4] == '-');
  return fits >= 4;
}

// The first whole member from `begin` on, byte by byte.
std::optional<std::uint64_t> Scan(ByteSource& source, std::uint64_t begin, std::uint64_t limit) {
  limit = std::min(limit, source.Size());
  for (std::uint64_t at = begin; at < limit;) {
    // Pieces overlap, so that a method id is never cut.
    const ByteSpan piece = source.At(at, kScanPiece);
    if (piece.size() < kCommonHeaderBytes) break;
    std::vector<std::uint64_t> candidates;
    const std::size_t last = piece.size() - 6;
    for (std::size_t i = 0; i < last; ++i) {
      if (piece[i + 2] == '-' && piece[i + 6] == '-') candidates.push_back(at + i);
    }
    for (const std::uint64_t candidate : candidates) {
      if (candidate < limit && IsWholeMember(source, candidate)) return candidate;
    }
    at += last;
  }
  return std::nullopt;
}

// A stub may hold a small archive of its own.  A header right behind the end mark of an archive
// that was found behind a prefix tells that it did.
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
    while (later <= mark + kReach && !IsWholeMember(source, later)) ++later;
    if (later > mark + kReach) return offset;
    offset = later;
  }
}

}  // namespace

std::uint64_t FindFirstHeader(ByteSource& source) {
  MemberHeader header;
  const HeaderStatus atStart = ParseHeaderAt(source, 0, header);
  if (atStart == HeaderStatus::Complete && IsArchiveMethod(header.method)) return 0;
  const ByteSpan start = source.At(0, 1);
  if (source.Size() == 1 && !start.empty() && start[0] == 0) return 0;

  const std::uint64_t programEnd = EndOfProgram(source);
  if (LooksLikeDamagedHeader(source, programEnd) && !IsWholeMember(source, programEnd)) {
    throw Failure(atStart == HeaderStatus::ChecksumWrong ? ResultCode::HeaderChecksum
                                                         : ResultCode::HeaderDamaged);
  }
  std::optional<std::uint64_t> found = Scan(source, programEnd, programEnd + kMaxScan);
  if (!found && programEnd != 0) found = Scan(source, 0, kMaxScan);
  if (!found) throw Failure(ResultCode::NotAnArchive);
  return PassStubArchives(source, *found);
}

}  // namespace kozor::container
