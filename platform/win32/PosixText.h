// PosixText.h - characters of the active code page, comparisons and conversions on POSIX.
//
// The active code page is 932 unless the application has chosen 65001 (PosixAdmin.h).  In 932 a
// character has one or two bytes; in 65001 every byte counts as a character, as in the real calls;
// that is safe because no byte of a multi-byte sequence is ASCII.  A lead byte before the
// terminator counts as a one-byte character.
// Include Win32.h, never this file.
#pragma once

#include "platform/Export.h"
#include "platform/win32/PosixTypes.h"

ZOR_PLATFORM_API UINT WINAPI GetACP();
ZOR_PLATFORM_API int WINAPI IsDBCSLeadByte(BYTE byte);
// The next character; stays on the terminator.
ZOR_PLATFORM_API LPSTR WINAPI CharNextA(LPCSTR text);
// The character before `current`, or `start`.
ZOR_PLATFORM_API LPSTR WINAPI CharPrevA(LPCSTR start, LPCSTR current);

// Convert between a code page and UTF-16.  Pages: CP_ACP, 932, 65001, 1252, 437, 20127; others fail
// with ERROR_INVALID_PARAMETER.  A length of -1 means up to and including the terminator; a target
// size of 0 queries the size.  Return the count written or needed, or 0 on failure
// (ERROR_INSUFFICIENT_BUFFER, ERROR_NO_UNICODE_TRANSLATION, ERROR_INVALID_FLAGS).
// 932 is the Microsoft mapping: 0x8160 is U+FF5E.  To 932, other readings of the same characters
// (U+301C, U+2016, U+2212, U+00A2, U+00A3, U+00AC, U+2014) are accepted too; nothing else is
// approximated, with or without WC_NO_BEST_FIT_CHARS.
ZOR_PLATFORM_API int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH text, int bytes,
                                                char16_t* wide, int units);
ZOR_PLATFORM_API int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH wide, int units,
                                                LPSTR text, int bytes, LPCCH defaultChar,
                                                LPBOOL usedDefaultChar);

// C run-time library.  Case is folded for ASCII letters and, in 932, full-width Latin letters.
ZOR_PLATFORM_API unsigned int _mbctolower(unsigned int character);
// Negative, 0 or positive, by the values of the first characters that differ.
ZOR_PLATFORM_API int _mbscmp(const unsigned char* a, const unsigned char* b);
ZOR_PLATFORM_API int _mbsicmp(const unsigned char* a, const unsigned char* b);
// Compares at most `bytes` bytes.
ZOR_PLATFORM_API int _mbsnbcmp(const unsigned char* a, const unsigned char* b, std::size_t bytes);
