// ActivePage.h - the code pages that the application has chosen, for all modules of the process.
//
// The platform library stores the choice.  Its functions are looked up at run time, because the
// archiver isn't linked with it.  In a process without that library, the archiver uses the system's
// ANSI code page.
#pragma once

#include "platform/Export.h"

extern "C" {
// The chosen active code page; 0 if none was chosen.
ZOR_PLATFORM_API unsigned int KzChosenCodePage();
// The code page set by KzSetNameCodePage.
ZOR_PLATFORM_API unsigned int KzChosenNameCodePage();
}

namespace kozor::windows {

unsigned int ActivePage();
unsigned int NamePage();

}  // namespace kozor::windows
