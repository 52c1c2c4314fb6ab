// Attributes.h - the FILE_ATTRIBUTE_* bits of host files.
//
// They are kept in the extended attribute "user.DOSATTRIB" as text such as "0x21".  A file without
// it is FILE_ATTRIBUTE_ARCHIVE, a directory has none, and either is hidden too if its name begins
// with a dot.  Attributes equal to that default aren't stored.  A file without write bits is
// read-only too.
#pragma once

#include <optional>
#include <string_view>

#include "platform/win32/posix/Metadata.h"

namespace kozor::posix {

// The stored part, if any.  Malformed text counts as none.
std::optional<DWORD> StoredAttributes(const char* hostPath);
std::optional<DWORD> StoredAttributes(int file);

// All attributes, as the Win32 calls report them: FILE_ATTRIBUTE_NORMAL if there are none.
// `hostName` is the last component of the path.
DWORD AttributesOf(const Metadata& metadata, std::string_view hostName,
                   std::optional<DWORD> stored);
// The same, reading the stored part.
DWORD AttributesOf(const Metadata& metadata, std::string_view hostName, const char* hostPath);

// Whether writing to, replacing and deleting the file must fail.
bool IsReadOnly(const Metadata& metadata, std::optional<DWORD> stored);

// Stores attributes and sets the mode bits for read-only.  A directory keeps its mode bits, because
// on Windows files can still be created in a read-only one.  Returns false with errno set.  A file
// system without extended attributes isn't an error.
bool StoreAttributes(const char* hostPath, const Metadata& metadata, DWORD attributes);

// Sets the attributes of a new or truncated file: the default ones and those in `asked`.
bool ResetAttributes(const char* hostPath, const Metadata& metadata, DWORD asked);

}  // namespace kozor::posix
