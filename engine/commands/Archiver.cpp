// Archiver.cpp - dispatches commands; see Archiver.h.
#include "engine/commands/Archiver.h"

namespace kozor::commands {

void Archiver::Run(std::string_view text, const ProgressListener& listener) {
  const CommandLine line = ParseCommand(text);
  switch (*line.command) {
    case Command::Add:
      return Add(line, listener);
    case Command::Delete:
      return Delete(line, listener);
    case Command::MakeProgram:
      return Convert(line, listener);
  }
}

}  // namespace kozor::commands
