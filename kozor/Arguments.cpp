// Arguments.cpp - see Arguments.h.
#include "Arguments.h"

#include <algorithm>

#include "Failure.h"

namespace kozor::program {

namespace {

const Option& FindOption(std::span<const Option> options, std::string_view name) {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [name](const Option& option) { return option.name == name; });
  if (found == options.end()) throw UsageError("unknown option " + std::string(name));
  return *found;
}

}  // namespace

Arguments::Arguments(std::span<const std::string> words, std::span<const Option> options) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--") {
      operands.insert(operands.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                      words.end());
      return;
    }
    if (word.size() < 2 || word[0] != '-') {
      operands.push_back(word);
      continue;
    }
    const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
    const Option& option = FindOption(options, std::string_view(word).substr(0, equals));
    std::vector<std::string>& given = values[std::string(option.name)];
    if (!option.takesValue) {
      if (equals != std::string::npos) {
        throw UsageError(std::string(option.name) + " takes no value");
      }
    } else if (equals != std::string::npos) {
      given.push_back(word.substr(equals + 1));
    } else if (++i < words.size()) {
      given.push_back(words[i]);
    } else {
      throw UsageError(std::string(option.name) + " needs a value");
    }
  }
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

const std::string& Arguments::Operand(std::size_t index, std::string_view what) const {
  if (index >= operands.size()) throw UsageError(std::string(what) + " is missing");
  return operands[index];
}

std::vector<std::string> Arguments::OperandsFrom(std::size_t first) const {
  if (first >= operands.size()) return {};
  return {operands.begin() + static_cast<std::ptrdiff_t>(first), operands.end()};
}

void Arguments::AllowOperands(std::size_t count) const {
  if (operands.size() > count) throw UsageError("unexpected word " + operands[count]);
}

}  // namespace kozor::program
