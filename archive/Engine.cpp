// Engine.cpp - loads UNLHA32.DLL, binds what the library calls, and frees it again.
#include "archive/Engine.h"

namespace {

// Sets `entry` to the function of that name, or to null.  Returns whether it was found.
template <typename Function>
bool Bind(HMODULE module, const char* name, Function*& entry) {
  // A function pointer type between the two casts: compilers warn of a direct one.
  using AnyFunction = void (*)();
  entry = reinterpret_cast<Function*>(reinterpret_cast<AnyFunction>(GetProcAddress(module, name)));
  return entry != nullptr;
}

}  // namespace

// A bare name, so the platform's search order decides where the module is found.
ZorEngine::ZorEngine() : module(LoadLibraryA("UNLHA32.DLL")), ready(0) {
  if (module == nullptr) return;
  const bool bound = Bind(module, "UnlhaGetRunning", UnlhaGetRunning) &&
                     Bind(module, "Unlha", Unlha) &&
                     Bind(module, "UnlhaCheckArchive", UnlhaCheckArchive) &&
                     Bind(module, "UnlhaSetOwnerWindowEx", UnlhaSetOwnerWindowEx) &&
                     Bind(module, "UnlhaKillOwnerWindowEx", UnlhaKillOwnerWindowEx) &&
                     Bind(module, "UnlhaSetCursorMode", UnlhaSetCursorMode) &&
                     Bind(module, "UnlhaOpenArchive", UnlhaOpenArchive) &&
                     Bind(module, "UnlhaCloseArchive", UnlhaCloseArchive) &&
                     Bind(module, "UnlhaFindFirst", UnlhaFindFirst) &&
                     Bind(module, "UnlhaFindNext", UnlhaFindNext) &&
                     Bind(module, "UnlhaGetAttribute", UnlhaGetAttribute) &&
                     Bind(module, "UnlhaExtractMem", UnlhaExtractMem) &&
                     Bind(module, "UnlhaCompressMem", UnlhaCompressMem);
  ready = bound ? 1 : 0;
}

ZorEngine::~ZorEngine() {
  if (module != nullptr) FreeLibrary(module);
}

ZorError ZorErrorFromEngine(int code) {
  constexpr int kBase = 0x8000;
  if (code == 0) return ZorErrorNone;
  if (code < kBase + ZorErrorDiskFull || code > kBase + ZorErrorEngine802C) {
    return ZorErrorEngineUnknown;
  }
  return static_cast<ZorError>(code - kBase);
}
