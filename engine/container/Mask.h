// Mask.h - file masks with '*' and '?', by the rules of Windows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kozor::container {

// '*' stands for any run of characters, '?' for one, or for none in front of a dot and at the end.
//
//   *.*     every name, also one without a dot
//   *.      names without a dot
//   a*.txt  a.txt, abc.txt, a.b.txt
//   a??     a, ab, abc
//   a.?     a, a.b
class Mask {
 public:
  // Names that are compared must have their case folded in the same way as the mask.
  explicit Mask(std::u16string_view text);

  bool Matches(std::u16string_view name) const;

  static bool IsMask(std::u16string_view text) {
    return text.find_first_of(u"*?") != std::u16string_view::npos;
  }

 private:
  enum class Kind {
    character,     // itself
    anyRun,        // '*'
    runToLastDot,  // '*' in front of a dot: any run that leaves the last dot of the name alone
    anyOne,        // '?'
    dotOrEnd,      // '.' in front of a wild-card: a dot, or nothing at the end of the name
  };
  struct Element {
    Kind kind;
    char16_t character;
  };
  class Matcher;

  std::vector<Element> elements;
};

}  // namespace kozor::container
