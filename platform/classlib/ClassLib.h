// ClassLib.h - includes the whole class library.
//
// One source for every system: the classes use only the Win32 names that platform/win32 provides.
// Common rules:
//
// - Text is CString or const char*, bytes in the active ANSI code page.
// - Failures of files and streams are thrown by pointer, as classes derived from CException
//   (CException.h).  Exhausted memory throws std::bad_alloc.
// - Different threads may use different objects at once, but not the same one.
// - The names are in an inline namespace, so a program may have its own CString or CFile in another
//   source file.
#pragma once

#include "platform/classlib/CArchive.h"
#include "platform/classlib/CException.h"
#include "platform/classlib/CFile.h"
#include "platform/classlib/CFileFind.h"
#include "platform/classlib/CList.h"
#include "platform/classlib/CObject.h"
#include "platform/classlib/CStdioFile.h"
#include "platform/classlib/CString.h"
#include "platform/win32/Win32.h"
