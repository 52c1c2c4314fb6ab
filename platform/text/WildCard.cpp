// WildCard.cpp - see WildCard.h.
//
// The mask is compiled into tokens and run as a non-deterministic automaton: the name is read once
// with the set of active states.  So many stars cost no more than few.
#include "platform/text/WildCard.h"

namespace kozor::text {

WildCard::WildCard(std::u16string_view mask) {
  if (mask == u"*.*") mask = u"*";
  // Trailing dots match nothing themselves; after a star they mean "no extension".
  const std::size_t length = mask.find_last_not_of(u'.') + 1;
  tokens.reserve(length);
  for (std::size_t i = 0; i < length; ++i) {
    const char16_t next = i + 1 < mask.size() ? mask[i + 1] : u'\0';
    if (mask[i] == u'*') {
      tokens.push_back({next == u'.' ? Kind::RunToExtension : Kind::AnyRun});
    } else if (mask[i] == u'?') {
      tokens.push_back({Kind::AnyOne});
    } else if (mask[i] == u'.' && (next == u'*' || next == u'?')) {
      tokens.push_back({Kind::DotOrEnd});
    } else {
      tokens.push_back({Kind::Literal, mask[i]});
    }
  }
}

bool WildCard::MatchesNothing(Kind kind, bool atDot, bool atEnd) {
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

// Adds the states that are reachable without reading a character.
void WildCard::Skip(States& states, bool atDot, bool atEnd) const {
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (states[i] && MatchesNothing(tokens[i].kind, atDot, atEnd)) states[i + 1] = true;
  }
}

// Reads one character; returns false if no state is left.  Works in place from the end, so that no
// token consumes the character twice.
bool WildCard::Consume(States& states, char16_t unit, bool isLastDot) const {
  bool any = false;
  states.back() = false;
  for (std::size_t i = tokens.size(); i-- > 0;) {
    if (!states[i]) continue;
    const auto [kind, literal] = tokens[i];
    const bool stays = kind == Kind::AnyRun || (kind == Kind::RunToExtension && !isLastDot);
    const bool passes = (kind == Kind::Literal && unit == literal) ||
                        (kind == Kind::DotOrEnd && unit == u'.') ||
                        (kind == Kind::AnyOne && unit != u'.');
    states[i] = stays;
    if (passes) states[i + 1] = true;
    any = any || stays || passes;
  }
  return any;
}

bool WildCard::Matches(std::u16string_view name) const {
  if (tokens.size() == 1 && tokens[0].kind == Kind::AnyRun) return true;
  const std::size_t lastDot = name.rfind(u'.');
  States states(tokens.size() + 1, false);
  states[0] = true;
  for (std::size_t i = 0; i < name.size(); ++i) {
    Skip(states, name[i] == u'.', false);
    if (!Consume(states, name[i], i == lastDot)) return false;
  }
  Skip(states, false, true);
  return states.back();
}

}  // namespace kozor::text
