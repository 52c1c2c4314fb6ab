// MemberHeader.h - the contents of a member's header, independent of its level.
//
// An archive is a run of members, each a header followed by packed data, and one zero byte as end
// mark.  Four header levels exist and may be mixed; levels 1 to 3 carry a chain of extension
// headers.  Facts and quirks: docs/archiver.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "engine/codec/Codec.h"
#include "engine/container/ByteSource.h"

namespace kozor::container {

// No valid header is longer.
inline constexpr std::size_t kMaxHeaderBytes = 1 << 20;

// The first bytes of every level hold the method, the sizes, the time and the level itself.
inline constexpr std::size_t kCommonHeaderBytes = 21;

// The five characters of a method id, such as "-lh5-".
using MethodId = std::array<char, 5>;

inline constexpr MethodId kStoredMethod = {'-', 'l', 'h', '0', '-'};
inline constexpr MethodId kDirectoryMethod = {'-', 'l', 'h', 'd', '-'};

// Compares the letters between an id's hyphens.  Reading code must compare this way and never with
// a whole id: it is part of self-extracting programs, and many programs would mistake a whole id
// there for the beginning of the archive.
constexpr bool HasLetters(const MethodId& id, const char (&letters)[4]) {
  return id[1] == letters[0] && id[2] == letters[1] && id[3] == letters[2];
}

// The undecoded name fields of a header.  MemberName.h interprets them together, after the whole
// chain has been read.
struct NameFields {
  std::string base = {};                                     // in the base header of levels 0 and 1
  std::optional<std::string> file = std::nullopt;            // extension 0x01
  std::optional<std::string> directory = std::nullopt;       // extension 0x02
  std::optional<std::u16string> unicodeFile = std::nullopt;  // extension 0x44
  std::optional<std::u16string> unicodeDirectory = std::nullopt;  // extension 0x45
  std::uint32_t codePage = 0;  // extension 0x46, of the byte strings above; 0 if not recorded
};

// A part of a header, or of a member's unpacked data.
struct DataPart {
  std::uint32_t offset = 0;
  std::uint32_t bytes = 0;
};

struct MemberHeader {
  std::uint8_t level = 0;
  MethodId method{};
  std::uint8_t osId = 0;          // 0 in level 0
  std::uint32_t headerBytes = 0;  // from the first byte to the packed data
  std::uint64_t packedBytes = 0;
  std::uint64_t originalBytes = 0;
  std::optional<std::uint16_t> crc;  // of the original data; very old writers omit it
  NameFields name;

  // Last write: 100 ns since 1601 in UTC, or 0 if the header has only the DOS words, which are in
  // the writer's local time.
  std::uint64_t utcTime = 0;
  std::uint16_t dosDate = 0;
  std::uint16_t dosTime = 0;

  // DOS attributes, FILE_ATTRIBUTE_ARCHIVE if none are recorded.  Level 0 writers on other systems
  // put their own bits there.
  std::uint16_t attribute = 0x20;
  std::uint32_t unixMode = 0;  // including the file type; 0 if not recorded

  // Where in the header a comment is, in the code page of the names; no bytes if there is none.
  DataPart comment;

  // The part of the unpacked data that is the file itself, if a header names it; no bytes if not.
  DataPart capsule;

  // The method for unpacking the data; empty if there is no decoder.
  std::optional<codec::Method> UnpackingMethod() const;

  // Whether the original size exceeds what the packed bytes can unpack to with that method.
  bool ClaimsTooMuch() const;

  bool IsDirectoryMethod() const { return HasLetters(method, "lhd"); }
  // A symbolic link is a directory member with a UNIX mode of that type.
  bool IsLink() const { return IsDirectoryMethod() && (unixMode & 0xF000) == 0xA000; }
  // By the DOS attribute, or by a UNIX mode without any write bit.
  bool IsReadOnly() const {
    return (attribute & 1) != 0 || (unixMode != 0 && (unixMode & 0222) == 0);
  }
};

enum class HeaderStatus {
  Complete,
  Incomplete,     // the header continues after the bytes given
  ChecksumWrong,  // of the base header, or the header CRC; the fields are filled in
  Broken,         // violates a rule of its level, or isn't a header
};

// Reads the header that begins at the first of `bytes`.  Verifies every checksum of the header,
// reads nothing outside `bytes`, and allocates no more than the header's size.  The caller must
// check for the end mark: a zero byte is a broken header here.
HeaderStatus ParseMemberHeader(ByteSpan bytes, MemberHeader& header);

// Whether the method belongs to a family used in archives: "-lh?-", "-lx?-", "-lz?-", "-pm?-",
// except the ids that programs contain as bait ("-pms-", "-lhs-").
bool IsArchiveMethod(const MethodId& method);

}  // namespace kozor::container
