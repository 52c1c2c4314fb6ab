// MemberOutput.cpp - see MemberOutput.h.
#include "engine/container/MemberOutput.h"

#include <algorithm>

namespace kozor::container {
namespace {

constexpr std::size_t kBufferBytes = 1 << 20;
constexpr std::size_t kLargePiece = 128 << 10;  // bypasses the buffer

}  // namespace

MemberOutput::MemberOutput(File& target, std::uint64_t beginOffset, FirstByte first)
    : file(target), begin(beginOffset), firstByte(first), bufferBegin(beginOffset) {}

void MemberOutput::Write(ByteSpan bytes) {
  const bool isLarge = bytes.size() >= kLargePiece;
  if (isLarge || buffer.size() + bytes.size() > kBufferBytes) EmptyBuffer();
  if (isLarge) {
    WriteThrough(bufferBegin, bytes);
    bufferBegin += bytes.size();
  } else {
    buffer.insert(buffer.end(), bytes.begin(), bytes.end());
  }
}

void MemberOutput::Overwrite(std::uint64_t offset, ByteSpan bytes) {
  if (offset < bufferBegin) {
    const auto outside =
        static_cast<std::size_t>(std::min<std::uint64_t>(bufferBegin - offset, bytes.size()));
    WriteThrough(offset, bytes.first(outside));
    offset += outside;
    bytes = bytes.subspan(outside);
  }
  std::copy(bytes.begin(), bytes.end(),
            buffer.begin() + static_cast<std::ptrdiff_t>(offset - bufferBegin));
}

void MemberOutput::TakeBack(std::uint64_t offset) {
  if (offset >= bufferBegin) {
    buffer.resize(static_cast<std::size_t>(offset - bufferBegin));
  } else {
    buffer.clear();
    bufferBegin = offset;
  }
}

void MemberOutput::EmptyBuffer() {
  WriteThrough(bufferBegin, buffer);
  bufferBegin += buffer.size();
  buffer.clear();
}

void MemberOutput::WriteThrough(std::uint64_t offset, ByteSpan bytes) {
  if (bytes.empty()) return;
  if (offset != begin || firstByte == FirstByte::Written) {
    file.WriteAt(offset, bytes);
    return;
  }
  constexpr std::uint8_t kEndMark[1] = {0};
  keptByte = bytes[0];
  file.WriteAt(offset, kEndMark);
  file.WriteAt(offset + 1, bytes.subspan(1));
}

void MemberOutput::Finish() {
  EmptyBuffer();
  if (file.Size() != bufferBegin) file.SetSize(bufferBegin);
  file.Flush();
}

void MemberOutput::ReleaseFirstByte() {
  const std::uint8_t byte[1] = {keptByte};
  file.WriteAt(begin, byte);
  file.Flush();
}

}  // namespace kozor::container
