// Case.cpp - see Case.h.
#include "platform/text/Case.h"

#include <algorithm>

#include "platform/text/TextTables.h"

namespace kozor::text {

char32_t ToUpper(char32_t character) {
  if (character < 0x80) return character >= 'a' && character <= 'z' ? character - 0x20 : character;
  // Fast path: kana, ideographs and Hangul have no case.
  if (character >= 0x2E80 && character < 0xA640) return character;
  const UpperRun* const end = kUpperRuns + kUpperRunCount;
  const UpperRun* const run =
      std::lower_bound(kUpperRuns, end, character,
                       [](const UpperRun& r, char32_t wanted) { return r.last < wanted; });
  if (run == end || character < run->first) return character;
  if ((character - run->first) % static_cast<char32_t>(run->step) != 0) return character;
  return static_cast<char32_t>(static_cast<std::int32_t>(character) + run->distance);
}

}  // namespace kozor::text
