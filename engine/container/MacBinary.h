// MacBinary.h - the wrapper that Macintosh archivers put round a file.
//
// A Macintosh file has two forks and types that other systems don't know.  MacBinary is 128 bytes
// about the file, the data fork, and the resource fork, each fork padded with zeros to a multiple
// of 128.  The sizes and the CRC of a member include all of it.
#pragma once

#include <optional>
#include <string_view>

#include "engine/container/ByteSource.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The data fork in the unpacked data of a member, if that is a file in MacBinary of exactly this
// length.  `name` is the member's file name without directories; if it has characters beyond ASCII,
// the name in the wrapper isn't compared with it, because the code pages may differ.
std::optional<DataPart> FindDataFork(ByteSpan data, std::string_view name);

}  // namespace kozor::container
