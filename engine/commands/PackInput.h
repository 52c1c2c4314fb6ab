// PackInput.h - the data of a new member: a file or a block of memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

#include "engine/container/File.h"

namespace kozor::commands {

class PackInput {
 public:
  virtual ~PackInput() = default;

  // Reads the next bytes into `target` and returns their number, less than its size only at the
  // end.
  virtual std::size_t Read(std::span<std::uint8_t> target) = 0;
  // Goes back to the start.
  virtual void Rewind() = 0;
};

class FileInput : public PackInput {
 public:
  explicit FileInput(container::File opened) : file(std::move(opened)) {}

  std::size_t Read(std::span<std::uint8_t> target) override {
    const std::size_t read = file.ReadAt(position, target);
    position += read;
    return read;
  }
  void Rewind() override { position = 0; }

 private:
  container::File file;
  std::uint64_t position = 0;
};

// The caller owns the bytes.
class MemoryInput : public PackInput {
 public:
  explicit MemoryInput(container::ByteSpan bytes) : contents(bytes), rest(bytes) {}

  std::size_t Read(std::span<std::uint8_t> target) override {
    const container::ByteSpan piece = rest.first(std::min(rest.size(), target.size()));
    std::copy(piece.begin(), piece.end(), target.begin());
    rest = rest.subspan(piece.size());
    return piece.size();
  }
  void Rewind() override { rest = contents; }

 private:
  const container::ByteSpan contents;
  container::ByteSpan rest;
};

}  // namespace kozor::commands
