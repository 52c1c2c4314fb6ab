// Redirect.h - redirects the Win32 names in our own code to Calls.h.  It applies only with
// KOZOR_OWN_NAMES, which the build defines for our sources: a program that includes the public
// headers still uses the system's calls.
#pragma once

#include "platform/win32/windows/Calls.h"

#define _mbctolower kozor::windows::_mbctolower
#define _mbscmp kozor::windows::_mbscmp
#define _mbsicmp kozor::windows::_mbsicmp
#define _mbsnbcmp kozor::windows::_mbsnbcmp
#define CharNextA kozor::windows::CharNextA
#define CharPrevA kozor::windows::CharPrevA
#define CreateDirectoryA kozor::windows::CreateDirectoryA
#define CreateFileA kozor::windows::CreateFileA
#define DeleteFileA kozor::windows::DeleteFileA
#define FindFirstFileA kozor::windows::FindFirstFileA
#define FindFirstFileExA kozor::windows::FindFirstFileExA
#define GetACP kozor::windows::GetACP
#define GetDiskFreeSpaceA kozor::windows::GetDiskFreeSpaceA
#define GetDriveTypeA kozor::windows::GetDriveTypeA
#define GetFileAttributesA kozor::windows::GetFileAttributesA
#define GetFileAttributesExA kozor::windows::GetFileAttributesExA
#define GetFinalPathNameByHandleA kozor::windows::GetFinalPathNameByHandleA
#define GetFullPathNameA kozor::windows::GetFullPathNameA
#define GetTempPathA kozor::windows::GetTempPathA
#define IsDBCSLeadByte kozor::windows::IsDBCSLeadByte
#define MoveFileExA kozor::windows::MoveFileExA
#define RemoveDirectoryA kozor::windows::RemoveDirectoryA
#define SetFileAttributesA kozor::windows::SetFileAttributesA
#define WideCharToMultiByte kozor::windows::WideCharToMultiByte
