// ClassLib.h - the class library: one door to its names.
//
// One source for every system: the classes are written on the Win32 names only, which
// platform/win32 provides.  What all of them have in common:
//
// - Text is CString or const char*, bytes in the active ANSI code page.
// - Failures of files and streams are thrown by pointer, as classes derived from CException
//   (CException.h).  Exhausted memory is std::bad_alloc, as operator new throws it.
// - No object may be used by two threads at once; different objects may.
// - The names stand in an inline namespace: they are written without it, and a program may have a
//   CString or CFile of its own in another source file.
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
