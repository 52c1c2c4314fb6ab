// Main.cpp - kozor, a command-line program for LZH archives and backup sets.
//
// Exit codes: 0 everything done, 1 something failed or was left out, 2 the command line makes no
// sense, 128 + n a signal n ended the run (130 for Ctrl-C).
#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "StandardStreams.h"

namespace kozor::program {

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kExitSignal = 128;

constexpr std::string_view kHelp =
    R"(Usage: kozor COMMAND [OPTION...] [OPERAND...]

LZH archives and backup sets.

Commands:
)";

constexpr std::string_view kHelpEnd = R"(
"kozor COMMAND --help" tells more.  Options may stand anywhere in front of "--".

Exit codes: 0 everything done, 1 something failed or was left out, 2 the command
line makes no sense, 130 stopped by Ctrl-C.
)";

const Command* const kCommands[] = {&kAddCommand,     &kExtractCommand, &kListCommand,
                                    &kPrintCommand,   &kDeleteCommand,  &kBackupCommand,
                                    &kRestoreCommand, &kInfoCommand};

void PrintHelp() {
  std::string text(kHelp);
  for (const Command* command : kCommands) {
    std::string name(command->name);
    name.resize(10, ' ');
    text += "  " + name + std::string(command->purpose) + "\n";
  }
  text += kHelpEnd;
  PrintText(text);
}

const Command& FindCommand(const std::string& name) {
  const auto* const found =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&](const Command* command) { return command->name == name; });
  if (found == std::end(kCommands)) throw UsageError("unknown command " + Visible(name));
  return **found;
}

bool AsksForHelp(const std::vector<std::string>& words) {
  const auto end = std::find(words.begin(), words.end(), "--");
  return std::find_if(words.begin(), end, [](const std::string& word) {
           return word == "--help" || word == "-h";
         }) != end;
}

void Run(std::vector<std::string> words) {
  if (words.empty()) throw UsageError("no command given");
  const std::string name = words.front();
  words.erase(words.begin());
  if (name == "--version") return PrintLine("kozor " KOZOR_VERSION);
  if (name == "--help" || name == "-h" || (name == "help" && words.empty())) return PrintHelp();
  if (name == "help") return PrintText(std::string(FindCommand(words.front()).help));
  const Command& command = FindCommand(name);
  if (AsksForHelp(words)) return PrintText(std::string(command.help));
  command.run(Arguments(words, command.options));
}

// Runs the command line and turns every way in which it can end into an exit code.
int RunToExitCode(const std::vector<std::string>& words) {
  try {
    Run(words);
    FinishStandardOutput();
    return Complaints() > 0 ? kExitFailure : 0;
  } catch (const UsageError& error) {
    Complain(std::string(error.what()) + "\nkozor --help tells how to use the program");
    return kExitUsage;
  } catch (const Interrupted&) {
    Complain("stopped");
    return kExitSignal + StopSignal();
  } catch (const std::bad_alloc&) {
    Complain("not enough memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return kExitFailure;
}

}  // namespace

}  // namespace kozor::program

int main(int argc, char** argv) {
  kozor::program::SetUpHost();
  return kozor::program::RunToExitCode({argv + 1, argv + argc});
}
