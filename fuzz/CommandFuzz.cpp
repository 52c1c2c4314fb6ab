// CommandFuzz.cpp - any text as a command line, and any bytes as a response file: operands hold no
// quotes, and the words of a line are in total never longer than the line.
//
// Input: command line (to a zero), response file.
#include "engine/commands/CommandLine.h"
#include "engine/container/Failure.h"
#include "fuzz/Fuzz.h"
#include "tests/support/TestFolder.h"

namespace kozor::fuzz {

using namespace commands;

namespace {

void Check(const CommandLine& line, std::size_t mostBytes) {
  std::size_t bytes = line.archive.size();
  for (const Operand& operand : line.operands) {
    Require(operand.text.find('"') == std::string::npos);
    bytes += operand.text.size();
  }
  Require(bytes <= mostBytes);
}

}  // namespace

void TestInput(Input input) {
  static const test::TestFolder folder;
  const std::string text = input.Text();
  for (const auto parse : {ParseCommand, ParseMemoryCall}) {
    try {
      Check(parse(text), text.size());
    } catch (const container::Failure&) {
    }
  }

  folder.WriteFile("names", input.Rest());
  try {
    std::size_t bytes = 0;
    for (const std::string& name : ReadResponseFile(folder.Lib("names"))) {
      Require(!name.empty() && name.find_first_of("\"\r\n") == std::string::npos);
      bytes += name.size();
    }
    Require(bytes <= input.Rest().size());
  } catch (const container::Failure&) {
  }
}

}  // namespace kozor::fuzz
