// Engine.h - the archiver module as other programs load it.
#pragma once

#include <stdexcept>
#include <string>

#include "engine/api/Unlha32.h"

namespace kozor::test {

// The thirteen entry points, loaded by name.
class Engine {
  struct Entry {
    FARPROC address;
    template <class Function>
    operator Function*() const {  // NOLINT(google-explicit-constructor): to initialise those below
      return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
    }
  };
  Entry Find(const char* name) const {
    const FARPROC address = module != nullptr ? GetProcAddress(module, name) : nullptr;
    if (address == nullptr) throw std::runtime_error(std::string("no UNLHA32.DLL with ") + name);
    return {address};
  }

  const HMODULE module = LoadLibraryA("UNLHA32.DLL");

 public:
  Engine() = default;
  ~Engine() { FreeLibrary(module); }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  decltype(&::UnlhaGetRunning) GetRunning = Find("UnlhaGetRunning");
  decltype(&::Unlha) Command = Find("Unlha");
  decltype(&::UnlhaCheckArchive) CheckArchive = Find("UnlhaCheckArchive");
  decltype(&::UnlhaSetOwnerWindowEx) SetOwnerWindowEx = Find("UnlhaSetOwnerWindowEx");
  decltype(&::UnlhaKillOwnerWindowEx) KillOwnerWindowEx = Find("UnlhaKillOwnerWindowEx");
  decltype(&::UnlhaSetCursorMode) SetCursorMode = Find("UnlhaSetCursorMode");
  decltype(&::UnlhaOpenArchive) OpenArchive = Find("UnlhaOpenArchive");
  decltype(&::UnlhaCloseArchive) CloseArchive = Find("UnlhaCloseArchive");
  decltype(&::UnlhaFindFirst) FindFirst = Find("UnlhaFindFirst");
  decltype(&::UnlhaFindNext) FindNext = Find("UnlhaFindNext");
  decltype(&::UnlhaGetAttribute) GetAttribute = Find("UnlhaGetAttribute");
  decltype(&::UnlhaExtractMem) ExtractMem = Find("UnlhaExtractMem");
  decltype(&::UnlhaCompressMem) CompressMem = Find("UnlhaCompressMem");
};

}  // namespace kozor::test
