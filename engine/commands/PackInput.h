// PackInput.h - the original data of a new member: a file or a block of memory, read in pieces.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/container/File.h"

namespace kozor::commands {

class PackInput {
 public:
  virtual ~PackInput() = default;

  // The next piece, empty at the end.  It holds good until the next call.
  virtual container::ByteSpan Next() = 0;
  // Goes back to the start.
  virtual void Rewind() = 0;
};

class FileInput : public PackInput {
 public:
  // `buffer` is lent for the pieces.
  FileInput(container::File& opened, std::vector<std::uint8_t>& lent)
      : file(opened), buffer(lent) {}

  container::ByteSpan Next() override;
  void Rewind() override { position = 0; }

 private:
  container::File& file;
  std::vector<std::uint8_t>& buffer;
  std::uint64_t position = 0;
};

class MemoryInput : public PackInput {
 public:
  explicit MemoryInput(container::ByteSpan bytes) : contents(bytes), rest(bytes) {}

  container::ByteSpan Next() override;
  void Rewind() override { rest = contents; }

 private:
  const container::ByteSpan contents;
  container::ByteSpan rest;
};

}  // namespace kozor::commands
