// ProgramFile.h - what makes a file a program: its suffix on Windows, mode bits as well elsewhere.
#pragma once

#include "platform/Export.h"

#if defined(_WIN32)

constexpr char kProgramSuffix[] = ".exe";

inline int KzMakeProgram(const char* /*path*/, const char* /*like*/) {
  return 1;
}

#else

constexpr char kProgramSuffix[] = ".run";

// Lets all those run the file `path` who may read it, and no one else read it than those who may
// read the file `like`.  Library paths; the owner can always read and run it.  Returns 1; 0 with
// GetLastError on failure.
ZOR_PLATFORM_API int KzMakeProgram(const char* path, const char* like);

#endif
