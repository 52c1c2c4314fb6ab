// FirstHeader.h - finds where an archive begins: at the start of its file, or behind a prefix.
//
// Self-extracting programs and wrappers put bytes of their own in front of the first header, and
// some of those bytes look like headers.
#pragma once

#include "engine/container/ByteSource.h"

namespace kozor::container {

// The offset of the first member's header, or of the end mark of an archive without members.
// Throws ResultCode::NotAnArchive, or one of the header codes when the file begins with a header
// that is damaged.
std::uint64_t FindFirstHeader(ByteSource& source);

}  // namespace kozor::container
