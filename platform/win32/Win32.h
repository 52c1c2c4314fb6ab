// Win32.h - the only header to include for the Win32 and C run-time names.
//
// On Windows it includes the system's own headers.  On POSIX the same names, argument types and
// results are implemented here (docs/platform.md), but only the functions and flags that the
// project uses; any other flag is refused with ERROR_INVALID_PARAMETER.
#pragma once

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
// Must precede mbctype.h, whose macros (_S1, _S2) clash with names inside the C++ library.
#include <type_traits>

#include <mbctype.h>
#include <mbstring.h>
#include <time.h>
#include <windows.h>

#if defined(KOZOR_OWN_NAMES)
#include "platform/win32/windows/Redirect.h"
#endif

#else

#include "platform/win32/PosixFiles.h"
#include "platform/win32/PosixSystem.h"
#include "platform/win32/PosixText.h"
#include "platform/win32/PosixTypes.h"

#endif
