// FirstHeader.h - finds headers: the first one of an archive, at the start of its file or after a
// prefix, and the next one after damage.
//
// Self-extracting programs and wrappers put bytes of their own in front of the first header, and
// some of those bytes look like headers.
#pragma once

#include "engine/container/ByteSource.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The offset of the first member's header, or of the end mark of an archive without members.
// A header that is damaged counts where an archive would begin.  Throws ResultCode::NotAnArchive.
std::uint64_t FindFirstHeader(ByteSource& source);

// Whether a whole header, or the end mark of an archive without members, begins an archive here.
bool IsArchive(ByteSource& source);

// Where the member after a damaged one begins: where the header that stands at `damaged` says, if
// the archive goes on there; else at the first place from which members without damage lead to the
// end of the file.  The file's size if there is none.
std::uint64_t FindAfterDamage(ByteSource& source, std::uint64_t damaged, const MemberHeader& header,
                              HeaderStatus status);

}  // namespace kozor::container
