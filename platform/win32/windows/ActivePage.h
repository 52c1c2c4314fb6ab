// ActivePage.h - the code pages that the application has chosen, for all modules of the process.
//
// The choice is kept by the platform library, which is asked for it by name: so the archiver, which
// links no library of ours, follows it in a program that has that library, and in any other takes
// the system's ANSI code page.
#pragma once

#include "platform/Export.h"

extern "C" {
// The active code page; 0 when nothing was chosen.
ZOR_PLATFORM_API unsigned int KzChosenCodePage();
// What KzSetNameCodePage has chosen.
ZOR_PLATFORM_API unsigned int KzChosenNameCodePage();
}

namespace kozor::windows {

unsigned int ActivePage();
unsigned int NamePage();

}  // namespace kozor::windows
