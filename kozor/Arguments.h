// Arguments.h - the words of a command line, sorted into options and operands, and the help that is
// made of the same tables.
//
// Options may stand anywhere: "-C base", "--work-dir tmp", "--work-dir=tmp".  After "--" every word
// is an operand, so that names may begin with a hyphen; a single "-" is an operand as well.
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
  std::string_view value;  // what its value is called; empty for an option without one
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

// Options of every command.
extern const std::span<const Option> kCommonOptions;

class Arguments {
 public:
  // Throws UsageError for an option that isn't in `options`, lacks its value or has one too many.
  Arguments(std::vector<std::string> words, std::span<const Option> options);

  // An option goes by its longest name.
  bool Has(std::string_view option) const;
  // The last value given, or `fallback`.
  std::string Value(std::string_view option, std::string_view fallback = "") const;
  // Every value given, in order.
  std::vector<std::string> Values(std::string_view option) const;
  // The value of an option that takes a whole number from `least` to `most`; throws UsageError.
  int Number(std::string_view option, int least, int most, int fallback) const;

  const std::vector<std::string>& Operands() const { return operands; }
  // Operand `index`; throws UsageError that `what` is missing when there are fewer.
  const std::string& Operand(std::size_t index, std::string_view what) const;
  // The operands from `first` on.
  std::vector<std::string> OperandsFrom(std::size_t first) const;
  // Throws UsageError when there are more than `count` operands.
  void AllowOperands(std::size_t count) const;
  // Throws UsageError when two options are given that exclude each other.
  void Exclude(std::string_view option, std::initializer_list<std::string_view> others) const;

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values;
  std::vector<std::string> operands;
};

// The options one below the other, as a help text shows them.
std::string OptionsHelp(std::span<const Option> options);

// ", did you mean X?" for the candidate that a mistyped word comes nearest to; empty when none is
// near.
std::string Suggestion(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace kozor::program
