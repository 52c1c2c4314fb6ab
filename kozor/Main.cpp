// Main.cpp - kozor, a command-line program for LZH archives and backup sets.
//
// Exit codes: 0 success, 1 something failed or was left out, 2 invalid command line, 128 + n
// stopped by signal n (130 for Ctrl-C).
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "Commands.h"
#include "Completion.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kExitSignal = 128;

constexpr std::string_view kHelp =
    R"(Usage: kozor COMMAND [OPTION]... [OPERAND]...

Makes, lists, tests and extracts LZH archives, and backs files up over several
volumes.

Commands:
)";

constexpr std::string_view kHelpEnd = R"(
Run "kozor COMMAND --help" for the options of a command.  Options may stand
before and after operands; "--" ends them.  "kozor completion SHELL" prints a
completion script for bash, zsh or fish.

Exit status: 0 success, 1 something failed or was left out, 2 invalid command
line, 130 interrupted by Ctrl-C.
)";

constexpr std::array kCommands = {
    &kAddCommand,    &kExtractCommand, &kListCommand,    &kTestCommand,   &kPrintCommand,
    &kDeleteCommand, &kBackupCommand,  &kRestoreCommand, &kVerifyCommand, &kInfoCommand};

void PrintHelp() {
  std::string text(kHelp);
  for (const Command* command : kCommands) {
    std::string name(command->name);
    name.resize(10, ' ');
    text += "  " + name + std::string(command->purpose) + "\n";
  }
  text += "\nOptions of every command:\n" + OptionsHelp(kCommonOptions);
  text += kHelpEnd;
  PrintText(text);
}

void PrintHelp(const Command& command) {
  std::string text(command.help);
  if (!command.notes.empty()) text.append("\n").append(command.notes);
  if (!command.options.empty()) text += "\nOptions:\n" + OptionsHelp(command.options);
  PrintText(text + "\nOptions of every command:\n" + OptionsHelp(kCommonOptions));
}

const Command& FindCommand(const std::string& name) {
  const auto* const found =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&](const Command* command) { return command->name == name; });
  if (found != std::end(kCommands)) return **found;
  std::array<std::string_view, kCommands.size()> names;
  std::transform(kCommands.begin(), kCommands.end(), names.begin(),
                 [](const Command* command) { return command->name; });
  throw UsageError("unknown command " + Visible(name) + Suggestion(name, names));
}

void SetUpConsole(const Arguments& arguments) {
  arguments.Exclude("--quiet", {"--verbose"});
  if (arguments.Has("--quiet")) SetVerbosity(Verbosity::Quiet);
  if (arguments.Has("--verbose")) SetVerbosity(Verbosity::Verbose);
  const std::string when = arguments.Value("--progress", "auto");
  if (when != "auto" && when != "always" && when != "never") {
    throw UsageError("--progress must be auto, always or never, not " + Visible(when));
  }
  SetProgress(when == "auto"     ? ShowWhen::Auto
              : when == "always" ? ShowWhen::Always
                                 : ShowWhen::Never);
}

// The command whose help a usage error refers to.
const Command* current = nullptr;

void Run(std::vector<std::string> words) {
  if (words.empty()) throw UsageError("no command given");
  const std::string name = words.front();
  words.erase(words.begin());
  if (name == "--version") return PrintLine("kozor " KOZOR_VERSION);
  if (name == "--help" || name == "-h" || (name == "help" && words.empty())) return PrintHelp();
  if (name == "completion") {
    if (words.size() != 1) throw UsageError("completion takes one operand: bash, zsh or fish");
    return PrintText(CompletionScript(words.front(), kCommands));
  }
  if (name == "help") return PrintHelp(FindCommand(words.front()));
  const Command& command = FindCommand(name);
  const auto end = std::find(words.begin(), words.end(), "--");
  const auto asks = [](const std::string& word) { return word == "--help" || word == "-h"; };
  if (std::any_of(words.begin(), end, asks)) return PrintHelp(command);
  current = &command;
  const Arguments arguments(std::move(words), command.options);
  if (arguments.Has("--version")) return PrintLine("kozor " KOZOR_VERSION);
  SetUpConsole(arguments);
  command.run(arguments);
}

// Runs the command line and turns every outcome into an exit code.
int RunToExitCode(int argc, char** argv) {
  try {
    SetUpHost();
    Run(CommandWords(argc, argv));
    HideProgress();
    FinishStandardOutput();
    return Complaints() > 0 ? kExitFailure : 0;
  } catch (const UsageError& error) {
    const std::string command = current == nullptr ? "" : std::string(current->name) + ' ';
    Complain(std::string(error.what()) + "\nRun \"kozor " + command + "--help\" for usage.");
    return kExitUsage;
  } catch (const Interrupted&) {
    Complain("interrupted");
    return kExitSignal + StopSignal();
  } catch (const std::bad_alloc&) {
    Complain("not enough memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return kExitFailure;
}

// Memory that is wanted where nothing may be thrown, as in the destructors of some libraries.
[[noreturn]] void EndWithoutMemory() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    std::fputs("kozor: not enough memory\n", stderr);
    std::_Exit(kExitFailure);
  } catch (...) {
  }
  std::abort();
}

}  // namespace

}  // namespace kozor::program

int main(int argc, char** argv) {
  std::set_terminate(kozor::program::EndWithoutMemory);
  return kozor::program::RunToExitCode(argc, argv);
}
