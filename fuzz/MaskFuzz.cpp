// MaskFuzz.cpp - any mask against any name: the automaton agrees with a backtracking matcher.
//
// Input: mask (to a zero), name (to a zero).
#include "fuzz/Fuzz.h"
#include "platform/text/WildCard.h"

namespace kozor::fuzz {
namespace {

constexpr std::size_t kMostBytes = 12;  // of each: backtracking is exponential

class SlowMatcher {
 public:
  SlowMatcher(std::string_view givenMask, std::string_view matched)
      : mask(givenMask), name(matched), end(mask.find_last_not_of('.') + 1) {}

  bool Matches(std::size_t at = 0, std::size_t place = 0) const {
    if (at == end) return place == name.size();
    const char next = at + 1 < mask.size() ? mask[at + 1] : '\0';
    const bool atEnd = place == name.size();
    const bool atDot = !atEnd && name[place] == '.';
    const auto withOne = [&](std::size_t then) { return !atEnd && Matches(then, place + 1); };
    switch (mask[at]) {
      case '*':
        if (Matches(at + 1, place)) return true;
        return !(next == '.' && place == name.rfind('.')) && withOne(at);
      case '?':
        return (atEnd || atDot) ? Matches(at + 1, place) : withOne(at + 1);
      case '.':
        if (atEnd && (next == '*' || next == '?')) return Matches(at + 1, place);
        [[fallthrough]];
      default:
        return !atEnd && name[place] == mask[at] && withOne(at + 1);
    }
  }

 private:
  const std::string_view mask;
  const std::string_view name;
  const std::size_t end;  // trailing dots of a mask are ignored
};

}  // namespace

void TestInput(Input input) {
  std::string mask = input.Text();
  std::string name = input.Text();
  const auto wide = [](const std::string& text) {
    return std::u16string(text.begin(), text.end());
  };
  text::WildCard(wide(mask)).Matches(wide(name));  // of any length
  mask.resize(std::min(mask.size(), kMostBytes));
  name.resize(std::min(name.size(), kMostBytes));
  const std::string rules = mask == "*.*" ? "*" : mask;
  Require(text::WildCard(wide(mask)).Matches(wide(name)) == SlowMatcher(rules, name).Matches());
}

}  // namespace kozor::fuzz
