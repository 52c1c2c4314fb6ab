// WildCard.h - does a file name match a mask, by the rules of FindFirstFileA?
//
//   *     any run of characters
//   ?     any character but a dot; nothing at a dot and at the end of the name
//   *.*   every name, with or without a dot
//   *.    names without an extension: a * in front of a dot never takes the last dot of a name
//   a.*   "a" too: a dot in front of a wild-card may match the end of the name
//
// Names and masks are UTF-16, compared unit by unit: callers fold the case of both (Case.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::text {

// In byte strings of every known code page the two are single bytes, never the second of a pair.
constexpr bool HasWildCards(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}
constexpr bool HasWildCards(std::u16string_view text) {
  return text.find_first_of(u"*?") != std::u16string_view::npos;
}

class WildCard {
 public:
  explicit WildCard(std::u16string_view mask);
  // Takes time in proportion to mask times name at most.
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
  // A flag for each token, and one for the end: can the name read so far lead to here?  As a string
  // it needs no allocation for masks of usual length.
  using States = std::string;

  static bool MatchesNothing(Kind kind, bool atDot, bool atEnd);
  void Skip(States& states, bool atDot, bool atEnd) const;
  bool Consume(States& states, char16_t unit, bool isLastDot) const;

  std::vector<Token> tokens;
};

}  // namespace kozor::text
