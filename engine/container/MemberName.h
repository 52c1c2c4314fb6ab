// MemberName.h - names of members: as they stand in headers, as they are shown, as they are stored.
//
// A name that is shown is a path of components with '\' between them, in the working code page.  It
// begins with a '\' only if the name in the archive began with a separator, and a directory's ends
// in one.  Nothing in it can climb out of a destination or hold what no file name can: components
// "." and "..", empty ones and a drive letter are dropped, and '_' stands in the place of
// characters that file names cannot hold or the working code page cannot express.
#pragma once

#include <string>
#include <string_view>

#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The longest name, in bytes, that callers of the archiver can be told whole.
inline constexpr std::size_t kMaxShownBytes = 533;

struct ShownName {
  std::string text;      // in the working code page; empty when nothing of the name is left
  std::u16string key;    // the same with case folded: equal for names that differ in case alone
  bool altered = false;  // '_' stands for something else
  bool strayed = false;  // a drive letter or a component ".." was dropped
};

// The longest beginning of whole characters that has at most `limit` bytes.
std::string_view CutName(std::string_view name, std::size_t limit, unsigned int workingPage);

// A name with a mark at its end, as in "name.txt~12" and "directory~12\".  It is cut in front of
// the mark where it would have more than kMaxShownBytes.
std::string MarkName(std::string_view name, std::size_t number, unsigned int workingPage);

// Decodes the name of a member.  Unicode names win, then the recorded code page; without either the
// bytes are code page 932, or UTF-8 if they are valid there and not valid 932.
ShownName DecodeName(const NameFields& fields, bool isDirectory, unsigned int workingPage);

// The name under which something given as `path`, in the working code page, is stored: its root
// ("C:", "\\server\share") is left out, so a rooted one begins with '\'; '/' counts as '\'.  Empty
// when nothing is left, or when it holds what no file name can.
std::string StoredNameOf(std::string_view path, unsigned int workingPage);

// Text to be compared with names: '/' counts as '\', and characters that the working code page has
// twice come in the form in which names show them.
std::string NormalizeName(std::string_view text, unsigned int workingPage);
std::u16string KeyOf(std::string_view name, unsigned int workingPage);

// A name in the form of header fields.
struct StoredName {
  std::string directory;       // components ended by 0xFF; empty when there is no directory
  std::string file;            // empty for a directory
  std::uint32_t codePage = 0;  // 0 when all is ASCII and need not be recorded
};

// Encodes a name as StoredNameOf gives it, or one of a directory, which ends in '\': in code page
// 932 if it can be expressed there, else in UTF-8.
StoredName EncodeName(std::string_view name, unsigned int workingPage);

}  // namespace kozor::container
