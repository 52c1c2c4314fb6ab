// Failure.h - the exceptions that end a command, or its work on one file, and texts for error
// numbers.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "ZorError.h"

namespace kozor::program {

// The command can't go on.  The text is ready to print and includes names.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One file fails, and the command goes on with the others.  The text doesn't include the file's
// name.
class FileFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line is invalid.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A signal asked the program to stop, and the run has ended.
struct Interrupted {};

// Texts for the library's error numbers, to follow the name of a file.
std::string_view ErrorText(ZorError error);

// Whether the error concerns the archive, the archiver or the machine, so that other members would
// fail too.
bool EndsTheRun(ZorError error);

}  // namespace kozor::program
