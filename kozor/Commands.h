// Commands.h - the program's commands.  Each one has its own source file, with its help text.
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
  // Complains about failures of single files and goes on; throws to end the run.
  void (*run)(const Arguments& arguments);
  std::string_view notes = {};  // printed after `help`; for what several commands have in common
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
