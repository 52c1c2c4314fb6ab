// CommandLine.cpp - see CommandLine.h.
#include "engine/commands/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "engine/container/Failure.h"
#include "engine/container/File.h"
#include "engine/container/Path.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::ResultCode;

constexpr std::string_view kBlanks = " \t";

// Searching bytes is safe: blanks and quotes are never trail bytes.
std::vector<Operand> SplitWords(std::string_view line) {
  std::vector<Operand> words;
  bool isInWord = false;
  bool isInQuotes = false;
  for (const char c : line) {
    if (kBlanks.find(c) != std::string_view::npos && !isInQuotes) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (c == '"') {
      isInQuotes = !isInQuotes;
      words.back().isQuoted = true;
    } else {
      words.back().text += c;
    }
  }
  return words;
}

// "-w0" and "-w" put temporaries beside the archive.
std::string WorkDirectory(const std::string& value) {
  if (value.empty() || value == "0") return {};
  return container::PathOf(value).AsFolder();
}

// Parses the number of a switch; nothing unless it is within the range.
std::optional<unsigned> NumberIn(std::string_view digits, unsigned least, unsigned most) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
  return isWhole && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

void ApplyPackSwitch(std::string_view word, PackSettings& packing) {
  constexpr unsigned kMostThreads = 1024;  // more is a mistake
  if (word == "-o1") packing.method = NewMethod::Lh1;
  if (word == "-o5") packing.method = NewMethod::Lh5;
  if (word == "-o6") packing.method = NewMethod::Lh6;
  if (word == "-o7") packing.method = NewMethod::Lh7;
  if (word == "-z1") packing.method = NewMethod::Stored;
  if (word == "-unix") packing.keepsUnixFacts = true;
  if (word == "-keep") packing.keepsMembers = true;
  if (word.starts_with("-ol")) {
    const auto level = NumberIn(word.substr(3), codec::kFastestLevel, codec::kSmallestLevel);
    if (level) packing.level = static_cast<int>(*level);
  }
  if (word.starts_with("-j")) {
    const auto threads = NumberIn(word.substr(2), 1, kMostThreads);
    if (threads) packing.threads = *threads;
  }
}

// The switches that the environment may hold, too.
void ApplyCommonSwitch(const std::string& word, CommandLine& line) {
  constexpr std::string_view kSystem = "-gfor=";
  if (word.starts_with(kSystem)) line.programSystem = word.substr(kSystem.size());
  ApplyPackSwitch(word, line.packing);
}

void ApplyDefaultSwitch(const std::string& word, CommandLine& line) {
  constexpr std::string_view kWith = "-with";
  if (word.starts_with(kWith)) line.nameList = word.substr(kWith.size());
  ApplyCommonSwitch(word, line);
}

void ApplyDefaults(CommandLine& line) {
  const char* const switches = std::getenv("KOZOR_ARCHIVER");
  if (switches == nullptr) return;
  for (const Operand& word : SplitWords(switches)) ApplyDefaultSwitch(word.text, line);
}

void ApplySwitch(const std::string& word, CommandLine& line) {
  if (word.starts_with("-w")) line.workDirectory = WorkDirectory(word.substr(2));
  if (word == "-d1") line.isDirectoryMode = true;
  if (word == "-gw4") line.makesProgram = true;
  ApplyCommonSwitch(word, line);
}

using WordIterator = std::vector<Operand>::iterator;

// Parses switches, archive and operands.
CommandLine ParseArguments(WordIterator word, WordIterator end) {
  CommandLine line;
  ApplyDefaults(line);
  for (; word != end && word->text.starts_with('-'); ++word) ApplySwitch(word->text, line);
  if (word != end) line.archive = std::move(word++->text);
  line.operands.assign(std::make_move_iterator(word), std::make_move_iterator(end));
  return line;
}

void RequireNames(const CommandLine& line, std::size_t operandCount) {
  if (line.archive.empty() || line.operands.size() < operandCount) {
    throw Failure(ResultCode::NoFileName);
  }
}

Command CommandOf(const std::string& letter, const CommandLine& line) {
  if (letter == "a") return Command::Add;
  if (letter == "d") return Command::Delete;
  if (letter == "s" && line.makesProgram) return Command::MakeProgram;
  throw Failure(ResultCode::UnknownCommand);
}

std::string NameInLine(std::string_view line) {
  const std::size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
  const std::size_t end = line.find_last_not_of(kBlanks) + 1;
  std::string name(line.substr(begin, end - begin));
  std::erase(name, '"');
  return name;
}

}  // namespace

CommandLine ParseCommand(std::string_view text) {
  std::vector<Operand> words = SplitWords(text);
  if (words.empty()) throw Failure(ResultCode::UnknownCommand);
  CommandLine line = ParseArguments(words.begin() + 1, words.end());
  line.command = CommandOf(words.front().text, line);
  const bool hasList = line.command == Command::Add && !line.nameList.empty();
  RequireNames(line, line.command == Command::MakeProgram || hasList ? 0 : 1);
  return line;
}

CommandLine ParseMemoryCall(std::string_view text) {
  std::vector<Operand> words = SplitWords(text);
  CommandLine line = ParseArguments(words.begin(), words.end());
  RequireNames(line, 1);
  return line;
}

void ForEachInResponseFile(const std::string& path,
                           const std::function<void(const std::string&)>& use) {
  constexpr std::string_view kLineEnds = "\r\n\x1A";  // 0x1A marks the end of old text files
  constexpr std::size_t kPieceBytes = 64 << 10;
  container::File file;
  if (!file.Open(path, container::File::Mode::Read)) throw Failure(ResultCode::ResponseFileNotRead);
  const auto useLine = [&](std::string_view line) {
    const std::string name = NameInLine(line);
    if (!name.empty()) use(name);
  };
  std::vector<std::uint8_t> piece(kPieceBytes);
  std::string text;  // a line whose end hasn't been read yet
  for (std::uint64_t offset = 0;; offset += kPieceBytes) {
    const std::size_t read = file.ReadAt(offset, piece);
    std::size_t begin = 0;
    std::size_t end = text.size();
    text.append(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(read));
    while ((end = text.find_first_of(kLineEnds, end)) != text.npos) {
      useLine(std::string_view(text).substr(begin, end - begin));
      begin = ++end;
    }
    text.erase(0, begin);
    if (read < kPieceBytes) break;
  }
  useLine(text);
}

std::vector<std::string> ReadResponseFile(const std::string& path) {
  std::vector<std::string> names;
  ForEachInResponseFile(path, [&](const std::string& name) { names.push_back(name); });
  return names;
}

}  // namespace kozor::commands
