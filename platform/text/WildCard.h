// WildCard.h - matches file names against a mask by the rules of FindFirstFileA.
//
//   *     any run of characters
//   ?     any character but a dot; nothing at a dot and at the end of the name
//   *.*   every name, with or without a dot
//   *.    names without an extension: a * before a dot never matches the last dot of a name
//   a.*   "a" too: a dot before a wild-card may match the end of the name
//
// Names and masks are UTF-16, compared unit by unit: callers fold case in both (Case.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::text {

// Searching bytes is safe: * and ? are never trail bytes in a known code page.
constexpr bool HasWildCards(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}
constexpr bool HasWildCards(std::u16string_view text) {
  return text.find_first_of(u"*?") != std::u16string_view::npos;
}

class WildCard {
 public:
  explicit WildCard(std::u16string_view mask);
  // Takes time proportional to the length of the mask times that of the name at most.
  bool Matches(std::u16string_view name) const;

 private:
  enum class Kind : unsigned char {
    Literal,
    AnyRun,          // any characters
    RunToExtension,  // any characters but the last dot of the name
    AnyOne,          // one character; nothing at a dot or at the end
    DotOrEnd,        // a dot; nothing at the end
  };
  struct Token {
    Kind kind;
    char16_t unit = 0;  // of a Literal
  };
  // The active states of the automaton: one flag for each token, and one for the end.  A string,
  // because it needs no allocation for masks of usual length.
  using States = std::string;

  static bool MatchesNothing(Kind kind, bool atDot, bool atEnd);
  void Skip(States& states, bool atDot, bool atEnd) const;
  bool Consume(States& states, char16_t unit, bool isLastDot) const;

  std::vector<Token> tokens;
};

}  // namespace kozor::text
