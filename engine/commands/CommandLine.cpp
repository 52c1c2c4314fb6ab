// CommandLine.cpp - see CommandLine.h.
#include "engine/commands/CommandLine.h"

#include "engine/container/Failure.h"
#include "engine/container/TemporaryArchive.h"

namespace kozor::commands {
namespace {

// Blanks and quotes are no trail bytes in any code page.
std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  bool isInWord = false;
  bool isQuoted = false;
  for (const char c : line) {
    const bool isBlank = c == ' ' || c == '\t';
    if (isBlank && !isQuoted) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (c == '"') {
      isQuoted = !isQuoted;
    } else {
      words.back() += c;
    }
  }
  return words;
}

// "-w0" and "-w" put temporaries beside the archive.
std::string WorkDirectory(const std::string& value) {
  if (value.empty() || value == "0") return {};
  return container::AsDirectory(value);
}

void ApplySwitch(const std::string& word, CommandLine& line) {
  if (word.starts_with("-w")) line.workDirectory = WorkDirectory(word.substr(2));
  if (word == "-d1") line.isDirectoryMode = true;
  if (word == "-gw4") line.makesProgram = true;
  if (word == "-o5") line.method = NewMethod::Lh5;
  if (word == "-o6") line.method = NewMethod::Lh6;
  if (word == "-o7") line.method = NewMethod::Lh7;
  if (word == "-z1") line.method = NewMethod::Stored;
}

}  // namespace

const std::string& CommandLine::Archive() const {
  if (operands.empty() || operands.front().empty()) {
    throw container::Failure(container::ResultCode::NoFileName);
  }
  return operands.front();
}

CommandLine ParseCommandLine(std::string_view text, LineKind kind) {
  CommandLine line;
  std::vector<std::string> words = SplitWords(text);
  auto word = words.begin();
  if (kind == LineKind::WithCommand && word != words.end()) line.command = *word++;
  for (; word != words.end() && word->starts_with('-'); ++word) ApplySwitch(*word, line);
  line.operands.assign(std::make_move_iterator(word), std::make_move_iterator(words.end()));
  return line;
}

}  // namespace kozor::commands
