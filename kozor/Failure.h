// Failure.h - how a command ends early.  Each kind has an exit code of its own, given by Main.cpp.
#pragma once

#include <stdexcept>

namespace kozor::program {

// The command can't go on; the text says why, names included, ready to print.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line can't be understood.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A signal asked the program to stop, and the run has ended.
struct Interrupted {};

}  // namespace kozor::program
