// NamePages.h - the code pages of names that headers hold as bytes.
//
// A header may record the page (0x46).  Where it does not, the process may have chosen one, and
// else the page is guessed from all the names of an archive together.  The bytes in the header stay
// what they are, whatever they are taken for.
#pragma once

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// Whether the meaning of the name depends on a page that the header does not record.
bool NeedsPage(const NameFields& name);

// Records the page in the fields; names in pages that only the system's converter knows become
// UTF-16.  Names that are not valid in the page are left as they are.
void ApplyPage(unsigned int page, NameFields& name);

// Looks at one name after the other.
class PageGuess {
 public:
  void Add(const NameFields& name);
  // The first of 932, UTF-8 and EUC-JP in which all names are valid; 0 when none is, and each name
  // is taken by itself then.
  unsigned int Best() const;

 private:
  bool mayBeShiftJis = true;
  bool mayBeUtf8 = true;
  bool mayBeEuc = true;
};

}  // namespace kozor::container
