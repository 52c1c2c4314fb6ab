// MemberHeader.cpp - reads member headers of levels 0 to 3.
#include "engine/container/MemberHeader.h"

#include <algorithm>
#include <numeric>

#include "engine/container/ExtensionChain.h"
#include "engine/container/MemberTime.h"

namespace kozor::container {
namespace {

bool IsLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsPmarc(const MethodId& method) {
  return method[1] == 'p' && method[2] == 'm';
}

// Levels 0 and 1: byte 0 is the number of bytes after byte 1, and byte 1 is their sum.
bool BaseSumFits(ByteSpan bytes) {
  const ByteSpan summed = bytes.subspan(2, bytes[0]);
  return std::accumulate(summed.begin(), summed.end(), 0U) % 256 == bytes[1];
}

// The CRC of a header in which the bytes from `begin` to `end`, at most three, count as zero.
std::uint16_t CrcWithZeros(ByteSpan header, std::size_t begin, std::size_t end) {
  constexpr std::uint8_t kZeros[3] = {};
  std::uint16_t crc = codec::Crc16(header.first(begin));
  crc = codec::Crc16(ByteSpan(kZeros).first(end - begin), crc);
  return codec::Crc16(header.subspan(end), crc);
}

// The CRC covers the whole header, with its own two bytes as zero.
bool HeaderCrcFits(ByteSpan header, const ChainResult& chain) {
  const std::size_t begin = chain.crcPosition;
  return begin == 0 || CrcWithZeros(header, begin, begin + 2) == chain.headerCrc;
}

HeaderStatus CheckHeaderCrc(ByteSpan bytes, const ChainResult& chain, const MemberHeader& header) {
  if (bytes.size() < header.headerBytes) return HeaderStatus::Incomplete;
  return HeaderCrcFits(bytes.first(header.headerBytes), chain) ? HeaderStatus::Complete
                                                               : HeaderStatus::ChecksumWrong;
}

// A few writers omit the header CRC.  But if the first extension has its size and holds the correct
// value, its id has been damaged, which no other test detects.
bool HasLostItsCrc(ByteSpan header, const ChainBounds& bounds, const ChainResult& chain) {
  constexpr std::size_t kCrcBytes = 2;
  const std::size_t next = bounds.begin + 1 + kCrcBytes + bounds.width;
  if (chain.crcPosition != 0 || header[bounds.begin - bounds.width] != next - bounds.begin) {
    return false;
  }
  const std::size_t crcPosition = bounds.begin + 1;  // after the id, which should be zero
  return CrcWithZeros(header, bounds.begin, crcPosition + kCrcBytes) ==
         ReadU16(header, crcPosition);
}

void ReadDosTime(ByteSpan bytes, MemberHeader& header) {
  header.dosTime = ReadU16(bytes, 15);
  header.dosDate = ReadU16(bytes, 17);
}

// Some writers add fields after the CRC of a level 0 header.  The -pm?- family has a comment there.
void ReadLevel0Extra(ByteSpan extra, MemberHeader& header) {
  if (IsPmarc(header.method)) {
    const auto bytes = static_cast<std::uint32_t>(extra.size());
    header.comment = {header.headerBytes - bytes, bytes};
  }
  if (extra.empty() || IsPmarc(header.method)) return;
  const bool isUnix = extra[0] == 'U' && extra.size() >= 12;
  const bool isOs9On68K = extra[0] == 'K' && extra.size() >= 16;
  const bool isOs9 = extra[0] == '9' && extra.size() >= 22 && extra[9] == 0xCC;
  if (isUnix || isOs9On68K) header.utcTime = FileTimeOfUnix(ReadU32(extra, 2));
  if (isUnix) header.unixMode = ReadU16(extra, 6);
  if (isOs9On68K) header.unixMode = UnixModeOfOs9(ReadU16(extra, 10));
  if (isOs9) header.unixMode = UnixModeOfOs9(ReadU16(extra, 1));
}

HeaderStatus ParseLevel0(ByteSpan bytes, MemberHeader& header) {
  const std::size_t total = bytes[0] + 2U;
  if (total < 22) return HeaderStatus::Broken;
  if (bytes.size() < total) return HeaderStatus::Incomplete;
  const std::size_t crcPosition = 22U + bytes[21];
  const bool hasCrc = crcPosition + 2 <= total;
  if (!hasCrc && crcPosition != total) return HeaderStatus::Broken;
  header.headerBytes = static_cast<std::uint32_t>(total);
  header.attribute = bytes[19];
  header.name.base.assign(bytes.begin() + 22,
                          bytes.begin() + static_cast<std::ptrdiff_t>(crcPosition));
  ReadDosTime(bytes, header);
  if (hasCrc) {
    header.crc = ReadU16(bytes, crcPosition);
    ReadLevel0Extra(bytes.subspan(crcPosition + 2, total - crcPosition - 2), header);
  }
  return BaseSumFits(bytes) ? HeaderStatus::Complete : HeaderStatus::ChecksumWrong;
}

HeaderStatus ParseLevel1(ByteSpan bytes, MemberHeader& header) {
  const std::size_t baseBytes = bytes[0] + 2U;
  if (baseBytes < 27) return HeaderStatus::Broken;
  if (bytes.size() < baseBytes) return HeaderStatus::Incomplete;
  const std::size_t crcPosition = 22U + bytes[21];
  if (crcPosition + 5 > baseBytes) return HeaderStatus::Broken;

  header.name.base.assign(bytes.begin() + 22,
                          bytes.begin() + static_cast<std::ptrdiff_t>(crcPosition));
  header.crc = ReadU16(bytes, crcPosition);
  header.osId = bytes[crcPosition + 2];
  ReadDosTime(bytes, header);

  header.headerBytes = static_cast<std::uint32_t>(baseBytes);
  if (!BaseSumFits(bytes)) return HeaderStatus::ChecksumWrong;

  // The packed size field includes the chain, so that old programs could skip both.
  const std::uint64_t skipBytes = header.packedBytes;
  const std::size_t limit =
      baseBytes + static_cast<std::size_t>(std::min<std::uint64_t>(skipBytes, kMaxHeaderBytes));
  ChainResult chain;
  const HeaderStatus status = ReadExtensionChain(bytes, {baseBytes, limit, 2}, header, chain);
  if (status != HeaderStatus::Complete) return status;
  header.headerBytes = static_cast<std::uint32_t>(chain.end);
  header.packedBytes = skipBytes - (chain.end - baseBytes);
  return CheckHeaderCrc(bytes, chain, header);
}

// Unless a CRC covers the header, only zeros may follow the chain; anything else means that the
// chain was cut off.
bool IsPadding(ByteSpan bytes, std::size_t begin, std::size_t end) {
  return begin >= end || std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                     bytes.begin() + static_cast<std::ptrdiff_t>(end),
                                     [](std::uint8_t byte) { return byte == 0; });
}

// The fields that levels 2 and 3 share.  `chainBegin` is where the extension headers begin.
HeaderStatus ParseLevel2Or3(ByteSpan bytes, std::size_t total, std::size_t chainBegin,
                            std::size_t width, MemberHeader& header) {
  header.utcTime = FileTimeOfUnix(ReadU32(bytes, 15));
  header.crc = ReadU16(bytes, 21);
  header.osId = bytes[23];

  // OS-9/68K writers don't count the size word itself: the chain then ends two bytes later.
  const bool mayEndLate = header.level == 2 && header.osId == 'K';
  const ChainBounds bounds = {chainBegin, mayEndLate ? total + 2 : total, width};
  ChainResult chain;
  const HeaderStatus status = ReadExtensionChain(bytes, bounds, header, chain);
  if (status != HeaderStatus::Complete) return status;
  if (chain.end > total && chain.end != total + 2) return HeaderStatus::Broken;
  header.headerBytes = static_cast<std::uint32_t>(std::max(total, chain.end));
  if (chain.crcPosition == 0 && !IsPadding(bytes, chain.end, total)) return HeaderStatus::Broken;
  if (HasLostItsCrc(bytes.first(header.headerBytes), bounds, chain)) {
    return HeaderStatus::ChecksumWrong;
  }
  return CheckHeaderCrc(bytes, chain, header);
}

HeaderStatus ParseLevel2(ByteSpan bytes, MemberHeader& header) {
  const std::size_t total = ReadU16(bytes, 0);
  if (total < 26 || bytes[0] == 0) return HeaderStatus::Broken;
  if (bytes.size() < total) return HeaderStatus::Incomplete;
  return ParseLevel2Or3(bytes, total, 26, 2, header);
}

HeaderStatus ParseLevel3(ByteSpan bytes, MemberHeader& header) {
  if (ReadU16(bytes, 0) != 4) return HeaderStatus::Broken;
  if (bytes.size() < 32) return HeaderStatus::Incomplete;
  const std::size_t total = ReadU32(bytes, 24);
  if (total < 32 || total > kMaxHeaderBytes) return HeaderStatus::Broken;
  if (bytes.size() < total) return HeaderStatus::Incomplete;
  return ParseLevel2Or3(bytes, total, 32, 4, header);
}

HeaderStatus ParseByLevel(ByteSpan bytes, MemberHeader& header) {
  switch (header.level) {
    case 0:
      return ParseLevel0(bytes, header);
    case 1:
      return ParseLevel1(bytes, header);
    case 2:
      return ParseLevel2(bytes, header);
    case 3:
      return ParseLevel3(bytes, header);
    default:
      return HeaderStatus::Broken;
  }
}

// Macintosh writers also separate path components by ':'.
void SeparateMacintoshNames(NameFields& name) {
  const auto separate = [](std::string& text) {
    std::replace(text.begin(), text.end(), ':', '\xFF');
  };
  separate(name.base);
  if (name.file) separate(*name.file);
  if (name.directory) separate(*name.directory);
}

// Amiga programs put a comment after the name and a zero byte.
void FindComment(MemberHeader& header) {
  constexpr std::size_t kNameBegin = 22;
  const std::string& name = header.name.base;
  const std::size_t begin = std::min(name.find('\0'), name.size() - 1) + 1;
  if (begin == name.size()) return;
  header.comment = {static_cast<std::uint32_t>(kNameBegin + begin),
                    static_cast<std::uint32_t>(name.size() - begin)};
}

// Some writers, on the Amiga for one, store directories as stored members of size 0 without a file
// name.  In level 0 their path ends in a separator; '\\' is one if the attribute says so, because
// it may be the second byte of a character.
bool IsStoredDirectory(const MemberHeader& header) {
  constexpr std::uint16_t kDirectory = 0x10;
  const NameFields& name = header.name;
  if (!HasLetters(header.method, "lh0") || header.packedBytes != 0 || header.originalBytes != 0) {
    return false;
  }
  if (header.level == 0) {
    return name.base.ends_with('/') || name.base.ends_with('\xFF') ||
           (name.base.ends_with('\\') && (header.attribute & kDirectory) != 0);
  }
  return name.base.empty() && (!name.file || name.file->empty()) && !name.unicodeFile &&
         name.directory && !name.directory->empty();
}

}  // namespace

HeaderStatus ParseMemberHeader(ByteSpan bytes, MemberHeader& header) {
  header = {};
  if (bytes.size() < kCommonHeaderBytes + 1) return HeaderStatus::Incomplete;
  std::copy_n(bytes.begin() + 2, header.method.size(), header.method.begin());
  const MethodId& id = header.method;
  if (id[0] != '-' || id[4] != '-' || !std::all_of(id.begin() + 1, id.end() - 1, IsLetterOrDigit)) {
    return HeaderStatus::Broken;
  }
  header.packedBytes = ReadU32(bytes, 7);
  header.originalBytes = ReadU32(bytes, 11);
  header.level = bytes[20];
  const HeaderStatus status = ParseByLevel(bytes, header);
  FindComment(header);
  if (header.osId == 'm') SeparateMacintoshNames(header.name);
  if (status == HeaderStatus::Complete && IsStoredDirectory(header)) header.method[3] = 'd';
  return status;
}

std::optional<codec::Method> MemberHeader::UnpackingMethod() const {
  if (method.front() != '-' || method.back() != '-' || IsDirectoryMethod()) return std::nullopt;
  const auto found = codec::FindMethod({&method[1], 3});
  // A DOS program used this id for another scheme; only it writes this OS id.
  const bool isOtherScheme = found == codec::Method::Lh7 && level == 1 && osId == ' ';
  if (isOtherScheme) {
    return codec::CanDecode(codec::Method::Lk7) ? std::optional(codec::Method::Lk7) : std::nullopt;
  }
  return found;
}

bool MemberHeader::ClaimsTooMuch() const {
  constexpr std::uint64_t kPlausibleYield = 1024;  // of an unknown method
  if (IsDirectoryMethod()) return false;
  const auto unpacking = UnpackingMethod();
  return originalBytes > (unpacking ? codec::MostUnpackedBytes(*unpacking, packedBytes)
                                    : kPlausibleYield * packedBytes);
}

bool IsArchiveMethod(const MethodId& method) {
  const bool isLarc = method[1] == 'l' && method[2] == 'z';
  const bool isLha = method[1] == 'l' && (method[2] == 'h' || method[2] == 'x');
  const bool isFamily = isLarc || isLha || IsPmarc(method);
  const bool isBait = method[3] == 's' && !isLarc;
  return method[0] == '-' && method[4] == '-' && isFamily && IsLetterOrDigit(method[3]) && !isBait;
}

}  // namespace kozor::container
