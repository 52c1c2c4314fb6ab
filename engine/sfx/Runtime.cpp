// Runtime.cpp - the parts of the C++ run-time library that the program needs on every system.
//
// There are no exceptions: where the C++ library would throw, the program ends with a message.
// Objects with static storage must be constant or initialised on first use, and are never
// destroyed.
#include "engine/sfx/Console.h"

extern "C" {

void abort() {
  kozor::sfx::Die("this should never happen");
}

[[noreturn]] void __cxa_pure_virtual() {
  abort();
}

// Compilers register destructors for the end of the program with one of these.  They are never run.
void* __dso_handle = nullptr;
int __cxa_atexit(void (*)(void*), void*, void*) {
  return 0;
}
int atexit(void (*)()) {
  return 0;
}

}  // extern "C"

namespace std {

// The containers call these for an invalid size or position.
void __throw_length_error(const char*) {
  kozor::sfx::Die("not enough memory");
}
void __throw_bad_alloc() {
  kozor::sfx::Die("not enough memory");
}
void __throw_bad_array_new_length() {
  kozor::sfx::Die("not enough memory");
}
void __throw_logic_error(const char*) {
  abort();
}
void __throw_out_of_range_fmt(const char*, ...) {
  abort();
}
void __throw_bad_function_call() {
  abort();
}

}  // namespace std
