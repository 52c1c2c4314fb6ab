// FailCall.h - makes a system call of the platform layer fail: "the third write fails".
#pragma once

#include <cerrno>
#include <type_traits>

#include "platform/win32/posix/SystemCalls.h"

namespace kozor::test {

// While the object lives, call number `which` (from 1) of one kind fails with an errno value; with
// `Always` all later ones fail too.  Only one object per kind of call at a time.
//
//   FailCall<&posix::SystemCalls::write> failing(3, ENOSPC);
template <auto Kind>
class FailCall;

enum class Failing { Once, Always };

template <typename Result, typename... Arguments, Result (*posix::SystemCalls::*Kind)(Arguments...)>
class FailCall<Kind> {
 public:
  FailCall(int which, int errorNumber, Failing failing = Failing::Once) {
    left = which;
    error = errorNumber;
    always = failing == Failing::Always;
    real = posix::Calls().*Kind;
    posix::Calls().*Kind = Call;
  }
  ~FailCall() { posix::Calls().*Kind = real; }
  FailCall(const FailCall&) = delete;
  FailCall& operator=(const FailCall&) = delete;

 private:
  static Result Call(Arguments... arguments) {
    if (left > 0) --left;
    const bool reached = left == 0;
    if (reached && !always) left = -1;
    if (!reached) return real(arguments...);
    errno = error;
    if constexpr (std::is_same_v<Result, void*>) {
      return reinterpret_cast<Result>(-1);  // a mapping
    } else if constexpr (std::is_pointer_v<Result>) {
      return nullptr;
    } else {
      return static_cast<Result>(-1);
    }
  }

  static inline Result (*real)(Arguments...);
  static inline int left;
  static inline int error;
  static inline bool always;
};

}  // namespace kozor::test
