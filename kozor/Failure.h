// Failure.h - how a command, or its work on one file, ends early, and what is said of it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "ZorError.h"

namespace kozor::program {

// The command can't go on; the text says why, names included, ready to print.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One file can't be done, and the command goes on with the others.  The text says why, without the
// file's name.
class FileFailure : public std::runtime_error {
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

// The library's error numbers, and the system's (errno), in words: the end of a sentence that
// begins with the name of a file.
std::string_view ErrorText(ZorError error);
std::string SystemErrorText(int number);

// Whether the error is the archive's, the archiver's or the machine's, so that no other member can
// be brought out either.
bool EndsTheRun(ZorError error);

}  // namespace kozor::program
