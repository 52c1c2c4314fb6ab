// NamePages.h - determines the code page of names stored as bytes.
//
// A header may record the page (0x46).  If it doesn't, the process may have set one; otherwise the
// page is guessed from all names of an archive together.  The bytes in the header aren't changed.
#pragma once

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// Whether decoding the name needs a page that the header doesn't record.
bool NeedsPage(const NameFields& name);

// Records the page in the fields; names in foreign pages are converted to UTF-16.  Names that
// aren't valid in the page are left unchanged.
void ApplyPage(unsigned int page, NameFields& name);

// Guesses from one name after the other.
class PageGuess {
 public:
  void Add(const NameFields& name);
  bool IsEmpty() const { return isEmpty; }
  // The first of 932, UTF-8 and EUC-JP in which all names are valid.  0 if there is none; each name
  // is then decoded on its own.
  unsigned int Best() const;

 private:
  bool isEmpty = true;
  bool mayBeShiftJis = true;
  bool mayBeUtf8 = true;
  bool mayBeEuc = true;
};

}  // namespace kozor::container
