// Arguments.cpp - see Arguments.h.
#include "Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>

#include "Console.h"
#include "Failure.h"

namespace kozor::program {

namespace {

constexpr std::array<Option, 5> kCommon = {{
    {"-v,--verbose", "", "print the name of each file when it is done"},
    {"-q,--quiet", "", "print errors only"},
    {"--progress", "WHEN", "show progress: auto (default: on a terminal), always\nor never"},
    {"-h,--help", "", "show this help"},
    {"--version", "", "show the version"},
}};

// "--verbose" of "-v,--verbose".
std::string_view LongestName(std::string_view names) {
  return names.substr(names.rfind(',') + 1);
}

// The parser treats "[a,b]" as a list of two.  A mark before such a word keeps it whole.
constexpr char kMark = '\x01';

std::string Marked(const std::string& word) {
  return word.starts_with('[') && word.ends_with(']') ? kMark + word : word;
}

std::vector<std::string> WithoutMarks(std::vector<std::string> words) {
  for (std::string& word : words) {
    if (word.starts_with(kMark)) word.erase(0, 1);
  }
  return words;
}

// The edit distance: insertions, deletions and substitutions of characters.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

[[noreturn]] void RefuseUnknown(std::string word, std::span<const Option> options) {
  word.resize(std::min(word.size(), word.find('=')));
  std::vector<std::string_view> names;
  for (const Option& option : options) names.push_back(LongestName(option.name));
  const bool isLetter = word.size() <= 2;  // any other letter would be as near
  throw UsageError("unknown option " + Visible(word) + (isLetter ? "" : Suggestion(word, names)));
}

}  // namespace

const std::span<const Option> kCommonOptions = kCommon;

Arguments::Arguments(std::vector<std::string> words, std::span<const Option> own) {
  std::vector<Option> options(own.begin(), own.end());
  options.insert(options.end(), kCommon.begin(), kCommon.end());

  CLI::App parser;
  parser.set_help_flag();
  parser.allow_extras();
  parser.allow_windows_style_options(false);  // "/x" is a path
  CLI::Option* const operandOption = parser.add_option("operands")->expected(-1)->take_all();
  std::vector<CLI::Option*> known;
  for (const Option& option : options) {
    const std::string name(option.name);
    known.push_back(option.value.empty() ? parser.add_flag(name)->disable_flag_override()
                                         : parser.add_option(name)->take_all()->expected(1));
    known.back()->allow_extra_args(false);
  }

  // A value may begin with a hyphen, and may even be "--".
  std::transform(words.begin(), words.end(), words.begin(), Marked);
  std::reverse(words.begin(), words.end());
  try {
    parser.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    const std::string text = error.what();
    const auto named = std::find_if(known.begin(), known.end(), [&](const CLI::Option* option) {
      return text.starts_with(option->get_name() + ":") ||
             text.starts_with(option->get_single_name() + " ");
    });
    if (named == known.end()) throw UsageError(text);
    const Option& option = options[static_cast<std::size_t>(named - known.begin())];
    throw UsageError(std::string(LongestName(option.name)) +
                     (option.value.empty() ? " takes no value" : " needs a value"));
  }
  for (const std::string& extra : parser.remaining()) {
    if (extra != "--") RefuseUnknown(extra, options);
  }
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (known[i]->count() == 0) continue;
    values[std::string(LongestName(options[i].name))] =
        options[i].value.empty() ? std::vector<std::string>() : WithoutMarks(known[i]->results());
  }
  operands = WithoutMarks(operandOption->results());
}

bool Arguments::Has(std::string_view option) const {
  return values.contains(option);
}

std::string Arguments::Value(std::string_view option, std::string_view fallback) const {
  const auto found = values.find(option);
  return found == values.end() ? std::string(fallback) : found->second.back();
}

std::vector<std::string> Arguments::Values(std::string_view option) const {
  const auto found = values.find(option);
  return found == values.end() ? std::vector<std::string>() : found->second;
}

int Arguments::Number(std::string_view option, int least, int most, int fallback) const {
  if (!Has(option)) return fallback;
  const std::string text = Value(option);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < least || number > most) {
    throw UsageError(std::string(option) + " must be a number from " + std::to_string(least) +
                     " to " + std::to_string(most) + ", not " + Visible(text));
  }
  return number;
}

const std::string& Arguments::Operand(std::size_t index, std::string_view what) const {
  if (index >= operands.size()) throw UsageError("missing operand: " + std::string(what));
  return operands[index];
}

std::vector<std::string> Arguments::OperandsFrom(std::size_t first) const {
  if (first >= operands.size()) return {};
  return {operands.begin() + static_cast<std::ptrdiff_t>(first), operands.end()};
}

void Arguments::AllowOperands(std::size_t count) const {
  if (operands.size() > count) throw UsageError("unexpected operand: " + Visible(operands[count]));
}

void Arguments::Exclude(std::string_view option,
                        std::initializer_list<std::string_view> others) const {
  if (!Has(option)) return;
  for (const std::string_view other : others) {
    if (!Has(other)) continue;
    throw UsageError(std::string(option) + " can't be combined with " + std::string(other));
  }
}

void Arguments::Require(std::string_view option, std::string_view other) const {
  if (!Has(option) || Has(other)) return;
  throw UsageError(std::string(option) + " requires " + std::string(other));
}

std::string OptionsHelp(std::span<const Option> options) {
  constexpr std::size_t kHelpColumn = 22;
  std::string text;
  for (const Option& option : options) {
    std::string line = "  ";
    const std::size_t comma = option.name.find(',');
    line += option.name.substr(0, comma);
    if (comma != std::string_view::npos) {
      line += ", ";
      line += option.name.substr(comma + 1);
    }
    if (!option.value.empty()) line += " " + std::string(option.value);
    line.resize(std::max(line.size() + 1, kHelpColumn), ' ');
    for (const char character : option.help) {
      line += character;
      if (character == '\n') line.append(kHelpColumn, ' ');
    }
    text += line + '\n';
  }
  return text;
}

std::string Suggestion(std::string_view word, std::span<const std::string_view> candidates) {
  std::string_view nearest;
  // Two swapped letters are two changes.
  std::size_t least = word.size() < 3 ? 2 : std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string_view candidate : candidates) {
    const bool completes = word.size() >= 3 && candidate.starts_with(word);
    const std::size_t distance = completes ? 0 : Distance(word, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest.empty() ? "" : "; did you mean " + std::string(nearest) + "?";
}

}  // namespace kozor::program
