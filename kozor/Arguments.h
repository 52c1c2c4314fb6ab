// Arguments.h - parses a command line into options and operands; the help comes from the same
// tables.
//
// Options may stand anywhere: "-C base", "--work-dir tmp", "--work-dir=tmp".  After "--" every word
// is an operand, so that names may begin with a hyphen.  A single "-" is an operand too.
#pragma once

#include <array>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::program {

struct Option {
  std::string_view name;   // with its hyphens; "-v,--verbose" has two
  std::string_view value;  // the placeholder for its value; empty for a flag
  std::string_view help;
};

template <std::size_t First, std::size_t Second>
constexpr std::array<Option, First + Second> Join(const std::array<Option, First>& first,
                                                  const std::array<Option, Second>& second) {
  std::array<Option, First + Second> all{};
  for (std::size_t i = 0; i < First; ++i) all[i] = first[i];
  for (std::size_t i = 0; i < Second; ++i) all[First + i] = second[i];
  return all;
}

// Options of several commands.
inline constexpr Option kExcludeOption = {
    "--exclude", "MASK", "leave out files and directories of this name; may be\nrepeated"};
inline constexpr Option kBaseOption = {
    "-C", "BASE", "directory that paths are relative to (default: the\ncurrent directory)"};

// Options of every command.
extern const std::span<const Option> kCommonOptions;

class Arguments {
 public:
  // Throws UsageError for an unknown option, a missing value, or a value given to a flag.
  Arguments(std::vector<std::string> words, std::span<const Option> options);

  // Options are named by their longest name.
  bool Has(std::string_view option) const;
  // The last value given, or `fallback`.
  std::string Value(std::string_view option, std::string_view fallback = "") const;
  // Every value given, in order.
  std::vector<std::string> Values(std::string_view option) const;
  // The value of an option as an integer from `least` to `most`, or `fallback`; throws UsageError.
  int Number(std::string_view option, int least, int most, int fallback) const;

  const std::vector<std::string>& Operands() const { return operands; }
  // Operand `index`; throws UsageError with its name, `what`, if there are fewer operands.
  const std::string& Operand(std::size_t index, std::string_view what) const;
  // The operands from `first` on.
  std::vector<std::string> OperandsFrom(std::size_t first) const;
  // Throws UsageError if there are more than `count` operands.
  void AllowOperands(std::size_t count) const;
  // Throws UsageError if `option` is given together with one of `others`.
  void Exclude(std::string_view option, std::initializer_list<std::string_view> others) const;
  // Throws UsageError if `option` is given without `other`.
  void Require(std::string_view option, std::string_view other) const;

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values;
  std::vector<std::string> operands;
};

// The options as lines of a help text.
std::string OptionsHelp(std::span<const Option> options);

// "; did you mean X?" with the candidate nearest to a mistyped word; empty if none is near.
std::string Suggestion(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace kozor::program
