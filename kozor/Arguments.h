// Arguments.h - the words of a command line, sorted into options and operands.
//
// Options may stand anywhere: "-C base", "--work-dir tmp", "--work-dir=tmp".  Behind "--" every
// word is an operand, so that names may begin with a hyphen; a single "-" is an operand as well.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::program {

struct Option {
  std::string_view name;  // with its hyphens
  bool takesValue;
};

class Arguments {
 public:
  // Throws UsageError for an option that isn't in `options`, lacks its value or has one too many.
  Arguments(std::span<const std::string> words, std::span<const Option> options);

  bool Has(std::string_view option) const;
  // The last value given, or `fallback`.
  std::string Value(std::string_view option, std::string_view fallback = "") const;
  // Every value given, in order.
  std::vector<std::string> Values(std::string_view option) const;

  const std::vector<std::string>& Operands() const { return operands; }
  // Operand `index`; throws UsageError that `what` is missing when there are fewer.
  const std::string& Operand(std::size_t index, std::string_view what) const;
  // The operands from `first` on.
  std::vector<std::string> OperandsFrom(std::size_t first) const;
  // Throws UsageError when there are more than `count` operands.
  void AllowOperands(std::size_t count) const;

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values;
  std::vector<std::string> operands;
};

}  // namespace kozor::program
