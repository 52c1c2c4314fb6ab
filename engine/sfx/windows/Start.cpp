// Start.cpp - the entry point of the program, and its heap.
#include <windows.h>

#include <new>
#include <vector>

#include "engine/sfx/Console.h"
#include "engine/sfx/Program.h"
#include "engine/sfx/System.h"
#include "engine/sfx/windows/Wide.h"

void* operator new(std::size_t bytes) {
  void* const memory = HeapAlloc(GetProcessHeap(), 0, bytes);
  if (memory == nullptr) kozor::sfx::Die("not enough memory");
  return memory;
}
void operator delete(void* memory) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  HeapFree(GetProcessHeap(), 0, memory);
}

// Cuts the command line into words, without expanding wild-cards.
extern "C" int __wgetmainargs(int* count, wchar_t*** words, wchar_t*** environment, int expand,
                              int* newMode);

extern "C" [[noreturn, gnu::used]] void kozorStart() {
  using namespace kozor::sfx;
  int count = 0;
  wchar_t** wide = nullptr;
  wchar_t** environment = nullptr;
  int newMode = 0;
  __wgetmainargs(&count, &wide, &environment, 0, &newMode);
  std::vector<std::string> words;
  for (int i = 0; i < count; ++i) words.push_back(host::ToUtf8(wide[i]));
  std::vector<const char*> pointers;
  for (const std::string& word : words) pointers.push_back(word.c_str());
  host::Exit(RunProgram(pointers));
}
