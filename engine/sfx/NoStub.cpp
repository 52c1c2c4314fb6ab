// NoStub.cpp - stands for the stub on systems that have none.
#include "engine/sfx/Stub.h"

namespace kozor::sfx {

std::span<const std::uint8_t> Stub() {
  return {};
}

}  // namespace kozor::sfx
