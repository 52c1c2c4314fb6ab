// Commands.h - what the program can do.  Each command has a source file of its own, with its help
// beside the code that keeps the promise.
#pragma once

#include <span>
#include <string_view>

#include "Arguments.h"

namespace kozor::program {

struct Command {
  std::string_view name;
  std::string_view purpose;  // one line
  std::string_view help;     // synopsis and explanation
  std::span<const Option> options;
  // Complains of what went wrong with single files and goes on; throws what ends the run.
  void (*run)(const Arguments& arguments);
};

extern const Command kAddCommand;
extern const Command kExtractCommand;
extern const Command kListCommand;
extern const Command kTestCommand;
extern const Command kPrintCommand;
extern const Command kDeleteCommand;
extern const Command kBackupCommand;
extern const Command kRestoreCommand;
extern const Command kVerifyCommand;
extern const Command kInfoCommand;

}  // namespace kozor::program
