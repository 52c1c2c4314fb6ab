// VolumeFormat.h - the format of a volume of a backup set: layouts, limits, header.
//
//   volume   = header, application ID, volume label, memo, payload up to the end of the file
//   payloads = the payloads of all volumes, end to end: for each file its record head, its bytes
//
// Structures match the bytes on the medium: fields are unaligned, numbers little-endian on every
// machine.  Complete description, for other implementations: docs/volume-format.md.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/ByteOrder.h"
#include "platform/classlib/ClassLib.h"

inline constexpr char kVolumeIdentification100[] = "Morlig Filer Library Version 1.00";
inline constexpr char kVolumeIdentification101[] = "Morlig Filer Library Version 1.01";
inline constexpr char kVolumeDigits[] = "0123456789";

// The value of SetBackupVersion that selects version 1.00; any other one selects 1.01.
inline constexpr int kBackupVersion100 = 100;

struct ZorVolumeHeader {                                 // offset, version 1.01
  char identification[64];                               //      0  zero-terminated
  char digits[32];                                       //     64  zero-terminated
  kozor::LittleEndian<std::int32_t> applicationIdBytes;  //     96
  kozor::LittleEndian<std::int32_t> volumeLabelBytes;    //    100
  kozor::LittleEndian<std::int32_t> memoBytes;           //    104
  kozor::LittleEndian<std::int32_t> volumeNumber;        //    108  from 1
  kozor::LittleEndian<std::int32_t> numberOfFiles;       //    112  of the set, in every volume
};
static_assert(alignof(ZorVolumeHeader) == 1 && sizeof(ZorVolumeHeader) == 116 &&
              offsetof(ZorVolumeHeader, applicationIdBytes) == 96 &&
              offsetof(ZorVolumeHeader, volumeNumber) == 108);

struct ZorVolumeHeader100 {                               // offset, version 1.00
  char identification[64];                                //      0
  char digits[32];                                        //     64  ignored by readers
  kozor::LittleEndian<std::uint16_t> applicationIdBytes;  //     96
  kozor::LittleEndian<std::uint16_t> volumeLabelBytes;    //     98
  kozor::LittleEndian<std::uint16_t> memoBytes;           //    100
  kozor::LittleEndian<std::uint16_t> volumeNumber;        //    102
  kozor::LittleEndian<std::int32_t> numberOfFiles;        //    104
};
static_assert(alignof(ZorVolumeHeader100) == 1 && sizeof(ZorVolumeHeader100) == 108 &&
              offsetof(ZorVolumeHeader100, applicationIdBytes) == 96 &&
              offsetof(ZorVolumeHeader100, volumeNumber) == 102);

// A shorter file isn't accepted as a volume, whichever version its header has.  (A last volume of
// version 1.00 with fewer than 7 bytes of areas can be shorter; docs/volume-format.md has a
// remedy.)
inline constexpr std::uint32_t kShortestVolumeBytes = sizeof(ZorVolumeHeader);

// Room for a stored name with its terminator.
inline constexpr std::uint32_t kNameAreaBytes = 524;

// A record head takes its fixed bytes and the name with its terminator; the rest of the name area
// isn't stored.
struct ZorFileRecord {                           // offset, both versions
  kozor::LittleEndian<std::uint8_t> attribute;   //      0  low 8 bits of FILE_ATTRIBUTE_*
  kozor::LittleEndian<std::uint8_t> reserved;    //      1  written as 0, ignored by readers
  kozor::LittleEndian<std::int32_t> timeStamp;   //      2  last write, seconds since 1970 UTC
  kozor::LittleEndian<std::uint32_t> fileBytes;  //      6  bytes of data after the head
  kozor::LittleEndian<std::uint16_t> nameWord;   //     10  characters * 2 + wide flag
  char name[kNameAreaBytes];                     //     12
};
inline constexpr std::uint32_t kRecordFixedBytes = 12;
static_assert(alignof(ZorFileRecord) == 1 && sizeof(ZorFileRecord) == 536 &&
              offsetof(ZorFileRecord, timeStamp) == 2 &&
              offsetof(ZorFileRecord, name) == kRecordFixedBytes);

constexpr bool ZorIsWideName(std::uint16_t nameWord) {
  return (nameWord & 1) != 0;
}

// The name word of a byte name of `length` bytes, without its terminator.
constexpr std::uint16_t ZorNameWord(std::uint32_t length) {
  return static_cast<std::uint16_t>(length * 2);
}

// The size in bytes of a name with this name word, with its terminator; up to 65,536.
constexpr std::uint32_t ZorNameBytes(std::uint16_t nameWord) {
  const std::uint32_t characters = (nameWord >> 1) + 1U;
  return ZorIsWideName(nameWord) ? characters * 2 : characters;
}

// The name of a record whose name area holds the complete name.  The length in the name word ends
// the name even if the terminator is damaged.  A wide name is converted to the active code page;
// characters that it can't express become its default character.
CString ZorRecordName(const ZorFileRecord& record);

// A header with the two constant texts and every other field 0.
ZorVolumeHeader ZorMakeVolumeHeader();

// The same header in the layout of version 1.00.  Lengths and volume number are cut to 16 bits.
ZorVolumeHeader100 ZorNarrowVolumeHeader(const ZorVolumeHeader& header);

// Bytes of a volume's header in a set of this backup version.
std::uint32_t ZorVolumeHeaderBytes(int backupVersion);

// Reads a header of either version from the first `count` bytes of a volume.  Returns its size, 108
// or 116, or 0 if there is no complete header.  `header` then has the texts of version 1.01 for a
// volume of version 1.00 too; the digits of a volume of version 1.01 are those that were read.
std::uint32_t ZorParseVolumeHeader(const void* bytes, std::size_t count, ZorVolumeHeader* header);

// The same at the file's position.  Returns 1 and leaves the file right after the header, or
// returns 0 and leaves the position unchanged.  Throws CFileException* if the file can't be read.
int ZorReadVolumeHeader(CFile& file, ZorVolumeHeader* header);

// Whether the two constant texts are right, each up to and including its terminator.
bool ZorIsVolumeHeader(const ZorVolumeHeader& header);
