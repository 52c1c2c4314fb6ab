// WildCard.cpp - see WildCard.h.
//
// The mask becomes a list of tokens.  A name is read once, with the set of all tokens that could be
// next: a mask with many stars costs no more than one with few.
#include "platform/win32/posix/WildCard.h"

namespace kozor::posix {

WildCard::WildCard(std::u16string_view maskKey) {
  if (maskKey == u"*.*") maskKey = u"*";
  const bool wantsNoExtension = maskKey.ends_with(u"*.");
  while (maskKey.ends_with(u'.')) maskKey.remove_suffix(1);
  for (std::size_t i = 0; i < maskKey.size(); ++i) {
    const bool last = i + 1 == maskKey.size();
    const char16_t next = last ? u'\0' : maskKey[i + 1];
    if (maskKey[i] == u'*') {
      const bool stopsAtExtension = next == u'.' || (last && wantsNoExtension);
      tokens.push_back({stopsAtExtension ? Kind::RunToExtension : Kind::AnyRun, 0});
    } else if (maskKey[i] == u'?') {
      tokens.push_back({Kind::AnyOne, 0});
    } else if (maskKey[i] == u'.' && (next == u'*' || next == u'?')) {
      tokens.push_back({Kind::DotOrEnd, 0});
    } else {
      tokens.push_back({Kind::Literal, maskKey[i]});
    }
  }
}

bool WildCard::CanMatchNothing(Kind kind, bool atDot, bool atEnd) {
  switch (kind) {
    case Kind::AnyRun:
    case Kind::RunToExtension:
      return true;
    case Kind::AnyOne:
      return atDot || atEnd;
    case Kind::DotOrEnd:
      return atEnd;
    case Kind::Literal:
      break;
  }
  return false;
}

// A state is the number of tokens behind us.  Adds it and all that follow without a character.
void WildCard::AddReachable(std::vector<bool>& states, std::size_t state, bool atDot,
                            bool atEnd) const {
  while (!states[state]) {
    states[state] = true;
    if (state == tokens.size() || !CanMatchNothing(tokens[state].kind, atDot, atEnd)) return;
    ++state;
  }
}

bool WildCard::Matches(std::u16string_view nameKey) const {
  if (tokens.size() == 1 && tokens[0].kind == Kind::AnyRun) return true;
  const std::size_t lastDot = nameKey.rfind(u'.');
  const auto isDot = [&](std::size_t i) { return i < nameKey.size() && nameKey[i] == u'.'; };
  std::vector<bool> states(tokens.size() + 1);
  AddReachable(states, 0, isDot(0), nameKey.empty());
  for (std::size_t i = 0; i < nameKey.size(); ++i) {
    const bool nextDot = isDot(i + 1);
    const bool nextEnd = i + 1 == nameKey.size();
    std::vector<bool> next(states.size());
    bool any = false;
    for (std::size_t state = 0; state < tokens.size(); ++state) {
      if (!states[state]) continue;
      const Token& token = tokens[state];
      const bool stays =
          token.kind == Kind::AnyRun || (token.kind == Kind::RunToExtension && i != lastDot);
      const bool passes = (token.kind == Kind::Literal && token.unit == nameKey[i]) ||
                          (token.kind == Kind::DotOrEnd && isDot(i)) ||
                          (token.kind == Kind::AnyOne && !isDot(i));
      if (stays) AddReachable(next, state, nextDot, nextEnd);
      if (passes) AddReachable(next, state + 1, nextDot, nextEnd);
      any = any || stays || passes;
    }
    if (!any) return false;
    states.swap(next);
  }
  return states.back();
}

}  // namespace kozor::posix
