// CommandLine.h - the archiver's command lines: words, switches, operands, and the response files
// that operands name.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/codec/Codec.h"

namespace kozor::commands {

enum class Command { Add, Delete, MakeProgram };

enum class NewMethod { Lh1, Lh5, Lh6, Lh7, Stored };

// How new members are packed.
struct PackSettings {
  NewMethod method = NewMethod::Lh5;  // -o1, -o5, -o6, -o7, -z1
  int level = codec::kDefaultLevel;   // -ol1 to -ol9
  unsigned threads = 0;               // -j<n>; 0: as many as there are processors
  bool keepsUnixFacts = false;        // -unix
  bool keepsMembers = false;          // -keep: a name that the archive holds is refused
};

struct Operand {
  std::string text;
  // Whether any part was in quotes.  Quoted text is a name, whatever characters it holds.
  bool isQuoted = false;
};

struct CommandLine {
  std::optional<Command> command;  // none in lines of the memory calls
  std::string archive;
  std::vector<Operand> operands;  // words after the archive
  std::string workDirectory;      // for temporaries, ends in a separator; empty: beside the archive
  std::string nameList;           // -with: a file, by default in that directory; empty: none
  PackSettings packing;
  bool isDirectoryMode = false;  // -d1
  bool makesProgram = false;     // -gw4
  std::string programSystem;     // -gfor=; empty: the system that the archiver is built for
};

// Words are separated by blanks; double quotes enclose, and are never part of, a word.  Words that
// begin with '-' are switches up to the first operand, which is the archive; unknown ones are
// accepted.  After the archive every word is an operand.
//
// The environment variable KOZOR_ARCHIVER holds switches for PackSettings, -gfor= and -with, that
// are read before those of a line.  Anything else in it is ignored.

// Parses a line of Unlha, with a command.  Throws ResultCode::UnknownCommand, and
// ResultCode::NoFileName if the archive or the files that the command needs are missing.  An `a`
// line with a list of names needs no files.
CommandLine ParseCommand(std::string_view line);

// Parses a line of the memory calls, which names an archive and one member.  Throws
// ResultCode::NoFileName.
CommandLine ParseMemoryCall(std::string_view line);

// Reads the names in a response file: one per line, with any line ends.  Surrounding blanks and
// double quotes are removed, empty lines ignored.  Throws ResultCode::ResponseFileNotRead.
std::vector<std::string> ReadResponseFile(const std::string& path);
// The same without holding all of them.
void ForEachInResponseFile(const std::string& path,
                           const std::function<void(const std::string&)>& use);

}  // namespace kozor::commands
