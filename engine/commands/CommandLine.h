// CommandLine.h - the archiver's command lines: words, switches, operands.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::commands {

enum class NewMethod { Lh5, Lh6, Lh7, Stored };

struct CommandLine {
  std::string command;  // "a", "d", "s"; empty in the lines of the memory calls
  std::string
      workDirectory;  // for temporaries, with a separator at its end; empty: beside the archive
  NewMethod method = NewMethod::Lh5;
  bool isDirectoryMode = false;       // -d1
  bool makesProgram = false;          // -gw4
  std::vector<std::string> operands;  // the archive first

  // Throws ResultCode::NoFileName when the line names no archive.
  const std::string& Archive() const;
};

enum class LineKind { WithCommand, WithoutCommand };

// Words are separated by blanks; double quotes enclose, and are never part of, a word.  Words that
// begin with '-' are switches up to the first operand, which is the archive; unknown ones are
// accepted.  Behind the archive every word is an operand.
CommandLine ParseCommandLine(std::string_view line, LineKind kind);

}  // namespace kozor::commands
