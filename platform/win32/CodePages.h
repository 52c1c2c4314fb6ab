// CodePages.h - the code pages that an application chooses for names.  All settings are
// process-wide; make them before other threads use the library.
#pragma once

#include "platform/Export.h"

// Sets the active code page: 932 or 65001.  The default is 932; on Windows, the system's ANSI code
// page.  Returns 1, or 0 with ERROR_INVALID_PARAMETER for any other.  Existing path strings aren't
// converted.
ZOR_PLATFORM_API int KzSetActiveCodePage(unsigned int codePage);

// The code page of names in archives that don't record theirs: 932, 65001, 437, 850, 852, 866, 936,
// 949, 950, 1250 to 1252, 10000, 28591 or 51932.  With 0, the default, it is guessed once per
// archive.  A name that isn't valid in the page is read as with 0.  Returns 1, or 0 with
// ERROR_INVALID_PARAMETER for any other.
ZOR_PLATFORM_API int KzSetNameCodePage(unsigned int codePage);
