// FirstHeader.h - finds headers: the first one of an archive, at the start of its file or after a
// prefix, and the next one after damage.
//
// Self-extracting programs and wrappers put their own bytes before the first header, and some of
// those look like headers.
#pragma once

#include "engine/container/ByteSource.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// Returns the offset of the first header, or of the end mark of an empty archive.  A damaged header
// at the position where an archive would begin counts as well.  Throws ResultCode::NotAnArchive.
std::uint64_t FindFirstHeader(ByteSource& source);

// Whether the header that FindFirstHeader finds is valid, or the archive is empty.  Throws what
// FindFirstHeader throws.
bool IsArchive(ByteSource& source);

// Returns the offset of the member after a damaged one: that given by the header at `damaged`, if
// the archive continues there, else the first one from which undamaged members lead to the end of
// the file or to further damage, else the first of those that lead farthest, else the file's size.
std::uint64_t FindAfterDamage(ByteSource& source, std::uint64_t damaged, const MemberHeader& header,
                              HeaderStatus status);

}  // namespace kozor::container
