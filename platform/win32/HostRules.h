// HostRules.h - rules of the host's file system that Win32 has no call for.
#pragma once

// Non-zero where two names that differ in case alone are two files: what is created takes an
// existing name only if it is spelt the same.
#if defined(_WIN32)
inline int KzCreatesExactly() {
  return 0;
}
#else
inline int KzCreatesExactly() {
  return 1;
}
#endif
