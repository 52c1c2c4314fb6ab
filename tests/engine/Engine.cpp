// Engine.cpp - see Engine.h.
#include "tests/engine/Engine.h"

#include <stdexcept>
#include <string>

namespace kozor::test {

Engine::Engine() : module(LoadLibraryA("UNLHA32.DLL")) {}

Engine::~Engine() {
  FreeLibrary(module);
}

Engine::Entry Engine::Find(const char* name) const {
  const FARPROC address = module != nullptr ? GetProcAddress(module, name) : nullptr;
  if (address == nullptr) throw std::runtime_error(std::string("no UNLHA32.DLL with ") + name);
  return {address};
}

}  // namespace kozor::test
