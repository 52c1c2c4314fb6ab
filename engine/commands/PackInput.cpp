// PackInput.cpp - see PackInput.h.
#include "engine/commands/PackInput.h"

#include <algorithm>

#include "engine/commands/Progress.h"

namespace kozor::commands {

// A piece is one step of progress.
container::ByteSpan FileInput::Next() {
  buffer.resize(kProgressStep);
  const std::size_t read = file.ReadAt(position, buffer);
  position += read;
  return container::ByteSpan(buffer).first(read);
}

container::ByteSpan MemoryInput::Next() {
  const container::ByteSpan piece = rest.first(std::min(rest.size(), kProgressStep));
  rest = rest.subspan(piece.size());
  return piece;
}

}  // namespace kozor::commands
