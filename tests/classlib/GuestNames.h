// GuestNames.h - what a program may define beside ours in the same source file, in either order:
// the usual aliases as far as they agree, and any names in a namespace of its own.
#pragma once

#include <string>

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef unsigned int DWORD;
typedef unsigned int UINT;

namespace guest {

using BOOL = bool;
using DWORD = unsigned long;

class CString {
 public:
  explicit CString(const char* given) : text(given) {}
  std::string text;
};

class CFile {
 public:
  BOOL IsOpen() const { return true; }
  DWORD Length() const { return ~0UL; }
};

// The namespace's own names win over the global ones.
inline bool AreOurOwn() {
  const CString string("own");
  const CFile file;
  return string.text == "own" && file.IsOpen() && file.Length() > 0xFFFFFFFFUL;
}

}  // namespace guest
