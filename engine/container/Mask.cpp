// Mask.cpp - see Mask.h.
//
// The mask is a row of elements, and the matcher keeps the set of places in it that the name read
// so far can have led to.  So a name costs its length times that of the mask at most, whatever the
// number of wild-cards.
#include "engine/container/Mask.h"

#include <algorithm>

namespace kozor::container {
namespace {

constexpr char16_t kEnd = 0;  // behind the last character of a name

bool IsWild(char16_t c) {
  return c == u'*' || c == u'?';
}

}  // namespace

Mask::Mask(std::u16string_view text) {
  if (text == u"*.*") text = u"*";
  // A dot at the end of a mask says that there is no extension; it is not looked for.
  const std::size_t length = std::min(text.find_last_not_of(u'.') + 1, text.size());
  for (std::size_t i = 0; i < length; ++i) {
    const char16_t next = i + 1 < text.size() ? text[i + 1] : kEnd;
    switch (text[i]) {
      case u'*':
        elements.push_back({next == u'.' ? Kind::runToLastDot : Kind::anyRun, 0});
        break;
      case u'?':
        elements.push_back({Kind::anyOne, 0});
        break;
      case u'.':
        elements.push_back({IsWild(next) ? Kind::dotOrEnd : Kind::character, u'.'});
        break;
      default:
        elements.push_back({Kind::character, text[i]});
    }
  }
}

class Mask::Matcher {
 public:
  Matcher(const std::vector<Element>& mask, std::u16string_view text)
      : elements(mask), name(text), lastDot(text.rfind(u'.')), places(mask.size() + 1) {}

  bool Run() {
    places[0] = true;
    for (std::size_t i = 0; i < name.size(); ++i) {
      PassOver(name[i]);
      Consume(name[i], i == lastDot);
    }
    PassOver(kEnd);
    return places.back();
  }

 private:
  // Elements that may stand for nothing where `c` comes next.
  void PassOver(char16_t c) {
    for (std::size_t at = 0; at < elements.size(); ++at) {
      if (places[at] && MayBeEmpty(elements[at].kind, c)) places[at + 1] = true;
    }
  }

  static bool MayBeEmpty(Kind kind, char16_t c) {
    switch (kind) {
      case Kind::anyRun:
      case Kind::runToLastDot:
        return true;
      case Kind::anyOne:
        return c == u'.' || c == kEnd;
      case Kind::dotOrEnd:
        return c == kEnd;
      case Kind::character:
        break;
    }
    return false;
  }

  // Elements that take `c`.
  void Consume(char16_t c, bool isLastDot) {
    std::vector<bool> after(places.size());
    for (std::size_t at = 0; at < elements.size(); ++at) {
      if (!places[at]) continue;
      switch (elements[at].kind) {
        case Kind::anyRun:
          after[at] = true;
          break;
        case Kind::runToLastDot:
          if (!isLastDot) after[at] = true;
          break;
        case Kind::anyOne:
          if (c != u'.') after[at + 1] = true;
          break;
        case Kind::dotOrEnd:
        case Kind::character:
          if (c == elements[at].character) after[at + 1] = true;
          break;
      }
    }
    places.swap(after);
  }

  const std::vector<Element>& elements;
  const std::u16string_view name;
  const std::size_t lastDot;
  std::vector<bool> places;  // places[i]: the name so far leads to in front of element i
};

bool Mask::Matches(std::u16string_view name) const {
  const bool takesAll = elements.size() == 1 && elements[0].kind == Kind::anyRun;
  return takesAll || Matcher(elements, name).Run();
}

}  // namespace kozor::container
