// MemberWalker.cpp - see MemberWalker.h.
#include "engine/container/MemberWalker.h"

#include <algorithm>

namespace kozor::container {
namespace {

constexpr std::uint8_t kPadding = 0x1A;  // CP/M and MSX fill the last sector with it
constexpr std::size_t kPiece = 4 << 10;
constexpr std::size_t kUsualHeaderBytes = 512;

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

HeaderStatus ParseHeaderAt(ByteSource& source, std::uint64_t offset, MemberHeader& header) {
  for (std::size_t wanted = kUsualHeaderBytes;; wanted *= 8) {
    const ByteSpan bytes = source.At(offset, wanted);
    const HeaderStatus status = ParseMemberHeader(bytes, header);
    const bool canGrow = bytes.size() == wanted && wanted <= kMaxHeaderBytes;
    if (status != HeaderStatus::Incomplete || !canGrow) return status;
  }
}

bool MemberWalker::IsAtEnd() {
  const ByteSpan first = source.At(next, 1);
  hasEndMark = !first.empty() && first[0] == 0;
  if (hasEndMark || next == source.Size()) return true;
  return !first.empty() && first[0] == kPadding && IsPaddingToTheEnd(source, next);
}

bool MemberWalker::Next(MemberHeader& header) {
  if (IsAtEnd()) return false;
  status = ParseHeaderAt(source, next, header);
  if (status == HeaderStatus::Incomplete) status = HeaderStatus::Broken;
  if (status != HeaderStatus::Complete) return false;
  if (header.packedBytes > source.Size() - next - header.headerBytes) {
    status = HeaderStatus::Broken;
    isCutInData = true;
    return false;
  }
  current = next;
  next += header.headerBytes + header.packedBytes;
  return true;
}

}  // namespace kozor::container
