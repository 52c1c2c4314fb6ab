// ActiveCodePage.h - the code page of library paths, which the application has chosen.
#pragma once

#include "platform/text/CodePage.h"

namespace kozor::posix {

// Its number, 932 or 65001, and the page itself.
unsigned ActiveCodePage();
const text::CodePage& ActivePage();

// True where the active code page has two-byte characters and this byte begins one.
bool IsLeadByte(unsigned char byte);

}  // namespace kozor::posix
