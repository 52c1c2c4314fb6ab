// WildCard.h - does a file name match a mask, by the rules of FindFirstFileA?
//
//   *     any run of characters
//   ?     any character but a dot; nothing at a dot and at the end of the name
//   *.*   every name, with or without a dot
//   *.    names without an extension: a * in front of a dot never takes the last dot of a name
//   a.*   "a" too: a dot in front of a wild-card may match the end of the name
//
// Names and masks are keys of HostNames.h, so case is ignored.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::posix {

class WildCard {
 public:
  explicit WildCard(std::u16string_view maskKey);
  // Takes time in proportion to mask times name at most.
  bool Matches(std::u16string_view nameKey) const;

 private:
  enum class Kind {
    Literal,
    AnyRun,          // any characters
    RunToExtension,  // any characters but the last dot of the name
    AnyOne,          // one character; nothing at a dot or at the end
    DotOrEnd,        // a dot; nothing at the end
  };
  struct Token {
    Kind kind;
    char16_t unit;  // of a Literal
  };

  static bool CanMatchNothing(Kind kind, bool atDot, bool atEnd);
  void AddReachable(std::vector<bool>& states, std::size_t state, bool atDot, bool atEnd) const;

  std::vector<Token> tokens;
};

}  // namespace kozor::posix
