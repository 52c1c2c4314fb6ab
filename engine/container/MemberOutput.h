// MemberOutput.h - the stream of bytes that new members are written to.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/container/File.h"

namespace kozor::container {

// Writes to a file from one offset on, through a buffer.  What has been written can still be
// replaced, since a header is complete only after its data, and taken back.
//
// The first byte of all can be kept back: a zero, the end mark, stands in its place in the file
// until it is released.
class MemberOutput {
 public:
  enum class FirstByte { Written, KeptBack };

  MemberOutput(File& target, std::uint64_t beginOffset, FirstByte first);

  std::uint64_t Position() const { return bufferBegin + buffer.size(); }
  bool IsEmpty() const { return Position() == begin; }

  // All of these may throw ResultCode::NoDiskSpace or ResultCode::CannotWrite.
  void Write(ByteSpan bytes);
  // Replaces bytes that have been written.
  void Overwrite(std::uint64_t offset, ByteSpan bytes);
  // Takes back everything from `offset` on.
  void TakeBack(std::uint64_t offset);
  // Brings everything to the medium and cuts the file behind it.
  void Finish();
  std::uint8_t KeptByte() const { return keptByte; }
  // Puts the first byte in its place, and brings it to the medium.
  void ReleaseFirstByte();

 private:
  void EmptyBuffer();
  void WriteThrough(std::uint64_t offset, ByteSpan bytes);

  File& file;
  const std::uint64_t begin;
  const FirstByte firstByte;
  std::uint8_t keptByte = 0;
  std::uint64_t bufferBegin;  // offset of the buffer in the file
  std::vector<std::uint8_t> buffer;
};

}  // namespace kozor::container
