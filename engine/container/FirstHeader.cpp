// FirstHeader.cpp - see FirstHeader.h.
//
// A file is looked at in this order: a header at its start; the end of the program's own image, for
// the kinds of program that tell it (MZ, PE, ELF); from there on byte by byte.  A place counts only
// if every test of a header holds there and its packed data ends inside the file, because stubs
// carry texts like "-lhd-" and even fake headers.
#include "engine/container/FirstHeader.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "engine/container/Failure.h"
#include "engine/container/MemberWalker.h"

namespace kozor::container {
namespace {

constexpr std::size_t kUsualHeaderBytes = 512;
constexpr std::uint64_t kMaxScan = 1 << 20;  // from the start, or from the end of the program
constexpr std::size_t kScanPiece = 64 << 10;
constexpr std::size_t kMaxTableEntries = 256;  // of a program's sections or segments

bool IsWholeMember(ByteSource& source, std::uint64_t offset) {
  MemberHeader header;
  return ParseHeaderAt(source, offset, header) == HeaderStatus::complete &&
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

// Where the image of a DOS, OS/2 or Windows program ends.
std::uint64_t EndOfPe(ByteSource& source, std::uint64_t peOffset) {
  const ByteSpan head = source.At(peOffset, 24);
  const std::size_t sections = std::min<std::size_t>(ReadU16(head, 6), kMaxTableEntries);
  const std::uint64_t table = peOffset + 24 + ReadU16(head, 20);
  std::uint64_t end = 0;
  for (std::size_t i = 0; i < sections; ++i) {
    const ByteSpan section = source.At(table + 40 * i, 40);
    if (section.size() < 40) break;
    end = std::max<std::uint64_t>(end, std::uint64_t{ReadU32(section, 16)} + ReadU32(section, 20));
  }
  return end;
}

std::uint64_t EndOfMz(ByteSource& source) {
  const ByteSpan head = source.At(0, 64);
  if (head.size() < 64) return 0;
  const std::uint64_t peOffset = ReadU32(head, 60);
  const std::uint64_t pages = ReadU16(head, 4);
  const std::uint64_t inLastPage = ReadU16(head, 2);
  const ByteSpan signature = source.At(peOffset, 24);
  if (signature.size() == 24 && ReadU32(signature, 0) == 0x4550) return EndOfPe(source, peOffset);
  if (pages == 0 || inLastPage > 512) return 0;
  return pages * 512 - (inLastPage == 0 ? 0 : 512 - inLastPage);
}

// The end of the section headers, which linkers put last, or of the last segment.
std::uint64_t EndOfElf64(ByteSource& source) {
  const ByteSpan head = source.At(0, 64);
  if (head.size() < 64 || head[4] != 2 || head[5] != 1) return 0;
  std::uint64_t end = ReadU64(head, 40) + std::uint64_t{ReadU16(head, 58)} * ReadU16(head, 60);
  const std::uint64_t table = ReadU64(head, 32);
  const std::size_t entryBytes = ReadU16(head, 54);
  const std::size_t segments = std::min<std::size_t>(ReadU16(head, 56), kMaxTableEntries);
  for (std::size_t i = 0; i < segments; ++i) {
    const ByteSpan segment = source.At(table + i * entryBytes, 56);
    if (segment.size() < 56) break;
    end = std::max(end, ReadU64(segment, 8) + ReadU64(segment, 32));
  }
  return end;
}

// Where the program that the file begins with says that it ends; 0 when it is none or does not say.
std::uint64_t EndOfProgram(ByteSource& source) {
  const ByteSpan magic = source.At(0, 4);
  if (magic.size() < 4) return 0;
  std::uint64_t end = 0;
  if (magic[0] == 'M' && magic[1] == 'Z') end = EndOfMz(source);
  if (std::memcmp(magic.data(),
                  "\x7F"
                  "ELF",
                  4) == 0) {
    end = EndOfElf64(source);
  }
  return end < source.Size() ? end : 0;
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
    try {
      while (walker.Next(header)) {
      }
    } catch (const Failure&) {
      return offset;
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

HeaderStatus ParseHeaderAt(ByteSource& source, std::uint64_t offset, MemberHeader& header) {
  for (std::size_t wanted = kUsualHeaderBytes;; wanted *= 8) {
    const ByteSpan bytes = source.At(offset, wanted);
    const HeaderStatus status = ParseMemberHeader(bytes, header);
    const bool canGrow = bytes.size() == wanted && wanted <= kMaxHeaderBytes;
    if (status != HeaderStatus::incomplete || !canGrow) return status;
  }
}

std::uint64_t FindFirstHeader(ByteSource& source) {
  MemberHeader header;
  const HeaderStatus atStart = ParseHeaderAt(source, 0, header);
  if (atStart == HeaderStatus::complete && IsArchiveMethod(header.method)) return 0;
  const ByteSpan start = source.At(0, 1);
  if (source.Size() == 1 && !start.empty() && start[0] == 0) return 0;

  const std::uint64_t programEnd = EndOfProgram(source);
  if (LooksLikeDamagedHeader(source, programEnd) && !IsWholeMember(source, programEnd)) {
    throw Failure(atStart == HeaderStatus::checksumWrong ? Code::headerChecksum
                                                         : Code::headerDamaged);
  }
  std::optional<std::uint64_t> found = Scan(source, programEnd, programEnd + kMaxScan);
  if (!found && programEnd != 0) found = Scan(source, 0, kMaxScan);
  if (!found) throw Failure(Code::notAnArchive);
  return PassStubArchives(source, *found);
}

}  // namespace kozor::container
