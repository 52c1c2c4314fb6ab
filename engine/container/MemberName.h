// MemberName.h - names of members: in headers, as shown, and as stored.
//
// A shown name is a path in the working code page with '\' between components.  It begins with '\'
// only if the name in the archive began with a separator; a directory's ends in '\'.  It can't lead
// out of a destination or contain characters that file names can't: components "." and "..", empty
// ones and a drive letter are dropped, and '_' replaces characters that are forbidden in file names
// or missing in the working code page.
#pragma once

#include <string>
#include <string_view>

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The longest name, in bytes, that fits in the records for the archiver's callers.
inline constexpr std::size_t kMaxShownBytes = 533;

struct ShownName {
  std::string text;      // in the working code page; may be empty
  std::u16string key;    // the same with case folded: equal for names that differ only in case
  bool altered = false;  // '_' replaces something
  bool strayed = false;  // a drive letter or a component ".." was dropped
};

// The longest prefix of whole characters that has at most `limit` bytes.
std::string_view CutName(std::string_view name, std::size_t limit, unsigned int workingPage);

// Adds a mark to a name, as in "name.txt~12" and "directory~12\".  The name is truncated before the
// mark if the result would exceed kMaxShownBytes.
std::string MarkName(std::string_view name, std::size_t number, unsigned int workingPage);

// Decodes the name of a member.  Unicode names have precedence, then the recorded code page.
// Without either, the bytes are code page 932, or UTF-8 if they are valid UTF-8 but not valid 932.
ShownName DecodeName(const NameFields& fields, bool isDirectory, unsigned int workingPage);

// Removes the target of a symbolic link from the fields, leaving the link's name, and returns it,
// still encoded, with 0xFF between components.  Empty if the fields aren't those of a link.
//
// A header stores both as one path, "name|target", which is split at its last separator like any
// other.
std::string TakeLinkTarget(NameFields& fields);

// The stored name of `path`, which is in the working code page.  Its root ("C:", "\\server\share")
// is removed, so the name of a rooted path begins with '\'; '/' counts as '\'.  Empty if nothing is
// left, or if it holds a character forbidden in file names.
std::string StoredNameOf(std::string_view path, unsigned int workingPage);

// Converts text for comparison with shown names: '/' becomes '\', and characters that the working
// code page has twice get the code used in names.
std::string NormalizeName(std::string_view text, unsigned int workingPage);
std::u16string KeyOf(std::string_view name, unsigned int workingPage);

// A name in the form of header fields.
struct StoredName {
  std::string directory;       // each component is followed by 0xFF; may be empty
  std::string file;            // empty if a name ends in '\'
  std::uint32_t codePage = 0;  // 0 for ASCII, which needn't be recorded
};

// The encoding of new names: many UNIX programs take the bytes of a name as they are, and so expect
// UTF-8; others expect code page 932.
enum class NameEncoding { ShiftJisIfPossible, Utf8 };

// Encodes a name from StoredNameOf, a directory's with a trailing '\', or a link's with its target
// ("name|target").
StoredName EncodeName(std::string_view name, unsigned int workingPage,
                      NameEncoding encoding = NameEncoding::ShiftJisIfPossible);

}  // namespace kozor::container
