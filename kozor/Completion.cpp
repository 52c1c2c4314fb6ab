// Completion.cpp - see Completion.h.
//
// The first word is completed to a command, words that begin with a hyphen to options of that
// command, and all others to file names by the shell.
#include "Completion.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Console.h"
#include "Failure.h"

namespace kozor::program {

namespace {

// The possible values of an option, found by the value's name in the help.  Other values aren't
// completed.
struct ValueWords {
  std::string_view value;
  std::string_view words;  // empty for paths
};
constexpr std::array<ValueWords, 7> kValueWords = {{
    {"BASE", ""},
    {"DIR", ""},
    {"DIRECTORY", ""},
    {"FILE", ""},
    {"METHOD", "lh0 lh1 lh5 lh6 lh7"},
    {"SHELL", "bash zsh fish"},
    {"WHEN", "auto always never"},
}};

const ValueWords* WordsFor(const Option& option) {
  const auto* const found =
      std::find_if(kValueWords.begin(), kValueWords.end(),
                   [&](const ValueWords& known) { return known.value == option.value; });
  return found == kValueWords.end() ? nullptr : found;
}

// "-l" and "--long" of "-l,--long".
std::vector<std::string> NamesOf(const Option& option) {
  const std::string all(option.name);
  const std::size_t comma = all.find(',');
  if (comma == std::string::npos) return {all};
  return {all.substr(0, comma), all.substr(comma + 1)};
}

std::vector<Option> OptionsOf(const Command& command) {
  std::vector<Option> options(command.options.begin(), command.options.end());
  options.insert(options.end(), kCommonOptions.begin(), kCommonOptions.end());
  return options;
}

// A help text on one line, with a backslash in front of each of the given characters.
std::string OneLine(std::string_view help, std::string_view special) {
  std::string line;
  for (const char character : help) {
    if (special.find(character) != std::string_view::npos) line += '\\';
    line += character == '\n' ? ' ' : character;
  }
  return line;
}

std::string InQuotes(const std::string& text) {
  std::string quoted = "'";
  for (const char character : text) {
    quoted += character == '\'' ? "'\\''" : std::string(1, character);
  }
  return quoted + "'";
}

std::string BashScript(std::span<const Command* const> commands) {
  std::string names;
  std::string cases;
  for (const Command* command : commands) {
    names += std::string(command->name) + ' ';
    std::string words;
    std::string values;
    for (const Option& option : OptionsOf(*command)) {
      std::string pattern;
      for (const std::string& name : NamesOf(option)) {
        words += name + ' ';
        pattern += (pattern.empty() ? "" : "|") + name;
      }
      if (option.value.empty()) continue;
      const ValueWords* const known = WordsFor(option);
      values += "        " + pattern + ") ";
      if (known == nullptr) {
        values += "compopt +o default; return";
      } else if (known->words.empty()) {
        values += "return";
      } else {
        values += "words='" + std::string(known->words) + "'";
      }
      values += ";;\n";
    }
    cases.append("    ").append(command->name).append(")\n      case $previous in\n");
    cases.append(values).append("        *) words='").append(words);
    cases.append("' options=1;;\n      esac;;\n");
  }
  return "# bash completion for kozor\n"
         "_kozor() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local words='" +
         names +
         "help --help --version' options=\n"
         "  if [ \"$COMP_CWORD\" -gt 1 ]; then\n"
         "    case ${COMP_WORDS[1]} in\n" +
         cases +
         "    help) ;;\n"
         "    *) return;;\n"
         "    esac\n"
         "  fi\n"
         "  if [ -n \"$options\" ]; then\n"
         "    case $current in -*) ;; *) return;; esac\n"
         "  fi\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "}\n"
         "complete -o default -F _kozor kozor\n";
}

std::string ZshAction(const Option& option) {
  const ValueWords* const known = WordsFor(option);
  std::string action = ":" + std::string(option.value) + ":";
  if (known == nullptr) return action;
  return action + (known->words.empty() ? "_files" : "(" + std::string(known->words) + ")");
}

std::string ZshScript(std::span<const Command* const> commands) {
  std::string names;
  std::string cases;
  for (const Command* command : commands) {
    names +=
        "    " + InQuotes(std::string(command->name) + ":" + OneLine(command->purpose, ":")) + "\n";
    cases += "    " + std::string(command->name) + ")\n      _arguments -s \\\n";
    for (const Option& option : OptionsOf(*command)) {
      const std::string help = "[" + OneLine(option.help, "[]:\\") + "]";
      for (const std::string& name : NamesOf(option)) {
        std::string spec = "*" + name;  // any number of times
        if (!option.value.empty()) spec += name.starts_with("--") ? "=" : "+";
        spec += help;
        if (!option.value.empty()) spec += ZshAction(option);
        cases += "        " + InQuotes(spec) + " \\\n";
      }
    }
    cases += "        '*:file:_files';;\n";
  }
  return "#compdef kozor\n"
         "_kozor() {\n"
         "  local -a commands=(\n" +
         names +
         "  )\n"
         "  if (( CURRENT == 2 )); then\n"
         "    _describe command commands\n"
         "    return\n"
         "  fi\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  case $words[1] in\n" +
         cases +
         "    help) _describe command commands;;\n"
         "  esac\n"
         "}\n"
         "_kozor \"$@\"\n";
}

std::string FishScript(std::span<const Command* const> commands) {
  std::string script = "# fish completion for kozor\n";
  for (const Command* command : commands) {
    const std::string name(command->name);
    script += "complete -c kozor -n __fish_use_subcommand -f -a " + name + " -d " +
              InQuotes(std::string(command->purpose)) + "\n";
    for (const Option& option : OptionsOf(*command)) {
      script += "complete -c kozor -n '__fish_seen_subcommand_from " + name + "'";
      for (const std::string& optionName : NamesOf(option)) {
        script += optionName.starts_with("--") ? " -l " + optionName.substr(2)
                                               : " -s " + optionName.substr(1);
      }
      if (!option.value.empty()) {
        const ValueWords* const known = WordsFor(option);
        script += known != nullptr && known->words.empty() ? " -r" : " -x";
        if (known != nullptr && !known->words.empty()) {
          script += " -a " + InQuotes(std::string(known->words));
        }
      }
      script += " -d " + InQuotes(OneLine(option.help, "")) + "\n";
    }
  }
  return script;
}

}  // namespace

std::string CompletionScript(const std::string& shell, std::span<const Command* const> commands) {
  if (shell == "bash") return BashScript(commands);
  if (shell == "zsh") return ZshScript(commands);
  if (shell == "fish") return FishScript(commands);
  throw UsageError("completion scripts exist for bash, zsh and fish, not for " + Visible(shell));
}

}  // namespace kozor::program
