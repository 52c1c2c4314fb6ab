// MemberOutput.h - the output stream for new members.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/container/File.h"

namespace kozor::container {

// Writes to a file from an offset on, through a buffer.  Bytes written earlier can be overwritten,
// because a header is complete only after its data, and be taken back.
//
// The very first byte can be kept back: the file has a zero, the end mark, in its place until it is
// released.
class MemberOutput {
 public:
  enum class FirstByte { Written, KeptBack };

  MemberOutput(File& target, std::uint64_t beginOffset, FirstByte first);

  std::uint64_t Position() const { return bufferBegin + buffer.size(); }
  bool IsEmpty() const { return Position() == begin; }

  // All of these may throw ResultCode::NoDiskSpace or ResultCode::CannotWrite.
  void Write(ByteSpan bytes);
  // Overwrites bytes written earlier.
  void Overwrite(std::uint64_t offset, ByteSpan bytes);
  // Discards everything from `offset` on.
  void TakeBack(std::uint64_t offset);
  // Writes the buffer, truncates the file after it and flushes to the medium.
  void Finish();
  std::uint8_t KeptByte() const { return keptByte; }
  // Writes the first byte and flushes it to the medium.
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
