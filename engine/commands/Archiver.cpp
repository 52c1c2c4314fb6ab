// Archiver.cpp - the choice of the command; see Archiver.h.
#include "engine/commands/Archiver.h"

#include "engine/container/Failure.h"

namespace kozor::commands {

void Archiver::Run(std::string_view text, const ProgressListener& listener) {
  const CommandLine line = ParseCommandLine(text, LineKind::WithCommand);
  if (line.command == "a") {
    Add(line, listener);
  } else if (line.command == "d") {
    Delete(line, listener);
  } else if (line.command == "s" && line.makesProgram) {
    Convert(line, listener);
  } else {
    throw container::Failure(container::ResultCode::UnknownCommand);
  }
}

}  // namespace kozor::commands
