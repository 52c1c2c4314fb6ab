// ProgramEnd.cpp - see ProgramEnd.h.
#include "engine/container/ProgramEnd.h"

#include <algorithm>

namespace kozor::container {
namespace {

constexpr std::size_t kMaxTableEntries = 256;       // of a program's sections or segments
constexpr std::uint32_t kMzMagic = 0x5A4D;          // "MZ"
constexpr std::uint32_t kElfMagic = 0x46'4C'45'7F;  // 0x7F, "ELF"

// The end of the image of a Windows program.
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

// The end of the section headers, which linkers put last, or of the last segment, whichever is
// later.
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

}  // namespace

std::uint64_t EndOfProgram(ByteSource& source) {
  const ByteSpan start = source.At(0, 4);
  if (start.size() < 4) return 0;
  const std::uint32_t magic = ReadU32(start, 0);
  std::uint64_t end = 0;
  if ((magic & 0xFFFF) == kMzMagic) end = EndOfMz(source);
  if (magic == kElfMagic) end = EndOfElf64(source);
  return end < source.Size() ? end : 0;
}

}  // namespace kozor::container
