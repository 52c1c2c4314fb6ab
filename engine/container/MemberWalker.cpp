// MemberWalker.cpp - see MemberWalker.h.
#include "engine/container/MemberWalker.h"

#include <algorithm>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"

namespace kozor::container {
namespace {

constexpr std::uint8_t kPadding = 0x1A;  // CP/M and MSX fill the last sector with it
constexpr std::size_t kPiece = 4 << 10;

bool IsPaddingToTheEnd(ByteSource& source, std::uint64_t offset) {
  while (offset < source.Size()) {
    const ByteSpan piece = source.At(offset, kPiece);
    const bool isPadding =
        std::all_of(piece.begin(), piece.end(), [](std::uint8_t byte) { return byte == kPadding; });
    if (piece.empty() || !isPadding) return false;
    offset += piece.size();
  }
  return true;
}

}  // namespace

bool MemberWalker::IsAtEnd() {
  const ByteSpan first = source.At(next, 1);
  hasEndMark = !first.empty() && first[0] == 0;
  if (hasEndMark || next == source.Size()) return true;
  return !first.empty() && first[0] == kPadding && IsPaddingToTheEnd(source, next);
}

bool MemberWalker::Next(MemberHeader& header) {
  if (IsAtEnd()) return false;
  const HeaderStatus status = ParseHeaderAt(source, next, header);
  if (status == HeaderStatus::checksumWrong) throw Failure(Code::headerChecksum);
  if (status != HeaderStatus::complete) throw Failure(Code::headerDamaged);
  if (header.packedBytes > source.Size() - next - header.headerBytes) {
    throw Failure(Code::headerDamaged);  // the file ends inside the packed data
  }
  current = next;
  next += header.headerBytes + header.packedBytes;
  return true;
}

}  // namespace kozor::container
