// MemberTable.cpp - see MemberTable.h.
//
// A record: kind and flags (1 byte), fault (1), method to unpack by (1), method id (5), attribute
// (1), CRC (2); as variable-length numbers the length of the name, offset, header size, packed and
// original size, and time; then the name.
#include "engine/container/MemberTable.h"

#include <algorithm>

namespace kozor::container {
namespace {

constexpr std::size_t kBlockBytes = BlockFile::kBlockBytes;
constexpr std::size_t kBlocksInMemory = (4 << 20) / kBlockBytes;
constexpr std::size_t kMaxBlocks = 1 << 20;  // so that a place has 32 bits
constexpr std::size_t kFixedBytes = 11;
constexpr std::size_t kMaxNumberBytes = 10;
constexpr std::size_t kMaxNumbers = 6;

// Flags in the first byte, above the two bits of the kind.
constexpr unsigned kKindBits = 0x03;
constexpr unsigned kHasCrc = 0x04;
constexpr unsigned kIsUtc = 0x08;
constexpr unsigned kIsWholeSeconds = 0x10;

class RecordWriter {
 public:
  explicit RecordWriter(std::vector<std::uint8_t>& target) : bytes(target) {}

  void Byte(std::uint64_t value) { bytes.push_back(static_cast<std::uint8_t>(value)); }
  void Number(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) Byte(value | 0x80);
    Byte(value);
  }

 private:
  std::vector<std::uint8_t>& bytes;
};

class RecordReader {
 public:
  explicit RecordReader(const std::uint8_t* record) : next(record) {}

  void Skip(std::size_t bytes) { next += bytes; }
  std::uint8_t Byte() { return *next++; }
  std::uint64_t Number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
      const std::uint64_t byte = Byte();
      value |= (byte & 0x7F) << shift;
      if (byte < 0x80) return value;
    }
  }
  std::string_view Text(std::size_t length) const {
    return {reinterpret_cast<const char*>(next), length};
  }

 private:
  const std::uint8_t* next;
};

// Returns the time as a number; `signs` receives the flags for its clock and unit.
std::uint64_t TimeNumber(const LastWrite& time, unsigned& signs) {
  if (!time.IsUtc()) {
    const DosTime words = time.Local();
    return std::uint64_t{words.date} << 16 | words.time;
  }
  const std::uint64_t ticks = time.Utc();
  signs |= kIsUtc;
  if (ticks % kTicksPerSecond != 0) return ticks;
  signs |= kIsWholeSeconds;
  return ticks / kTicksPerSecond;
}

LastWrite TimeOf(std::uint64_t number, unsigned signs) {
  if ((signs & kIsWholeSeconds) != 0) return LastWrite(number * kTicksPerSecond);
  if ((signs & kIsUtc) != 0) return LastWrite(number);
  DosTime words;
  words.date = static_cast<std::uint16_t>(number >> 16);
  words.time = static_cast<std::uint16_t>(number);
  return LastWrite(words);
}

Member ReadMember(RecordReader record) {
  Member member;
  const unsigned signs = record.Byte();
  member.kind = static_cast<MemberKind>(signs & kKindBits);
  if (const unsigned fault = record.Byte()) member.fault = static_cast<ResultCode>(0x8000 | fault);
  if (const unsigned method = record.Byte()) {
    member.unpacking = static_cast<codec::Method>(method - 1);
  }
  for (char& letter : member.method) letter = static_cast<char>(record.Byte());
  member.attribute = record.Byte();
  const unsigned low = record.Byte();
  const unsigned high = record.Byte();
  if ((signs & kHasCrc) != 0) member.crc = static_cast<std::uint16_t>(high << 8 | low);
  const auto nameBytes = static_cast<std::size_t>(record.Number());
  member.offset = record.Number();
  member.headerBytes = static_cast<std::uint32_t>(record.Number());
  member.packedBytes = record.Number();
  member.originalBytes = record.Number();
  member.lastWrite = TimeOf(record.Number(), signs);
  member.name = record.Text(nameBytes);
  return member;
}

}  // namespace

template <typename Use>
auto MemberTable::WithRecord(std::size_t position, Use use) const {
  const std::uint32_t place = places[position];
  const Block& block = blocks[place / kBlockBytes];
  if (!block.stored) return use(RecordReader(&block.bytes[place % kBlockBytes]));
  const BlockFile::Pinned pinned = file->Pin(*block.stored, block.size);
  return use(RecordReader(&pinned.Bytes()[place % kBlockBytes]));
}

MemberKind MemberTable::KindAt(std::size_t position) const {
  return WithRecord(position, [](RecordReader record) {
    return static_cast<MemberKind>(record.Byte() & kKindBits);
  });
}

Member MemberTable::operator[](std::size_t position) const {
  return WithRecord(position, ReadMember);
}

std::string MemberTable::NameAt(std::size_t position) const {
  return WithRecord(position, [](RecordReader record) {
    record.Skip(kFixedBytes);
    const auto nameBytes = static_cast<std::size_t>(record.Number());
    for (std::size_t i = 1; i < kMaxNumbers; ++i) record.Number();
    return std::string(record.Text(nameBytes));
  });
}

// The last block is always in memory.
void MemberTable::BeginBlock() {
  if (blocks.size() == kMaxBlocks) throw Failure(ResultCode::NotEnoughMemory);
  blocks.emplace_back().bytes.reserve(kBlockBytes);
  if (blocks.size() <= kBlocksInMemory) return;
  if (!file) file = std::make_shared<BlockFile>();
  Block& full = blocks[blocks.size() - 2];
  full.stored = file->Store(full.bytes);
  if (full.stored) std::vector<std::uint8_t>().swap(full.bytes);
}

std::uint32_t MemberTable::Store(const Member& member) {
  const std::size_t most = kFixedBytes + kMaxNumbers * kMaxNumberBytes + member.name.size();
  if (most > kBlockBytes) throw Failure(ResultCode::NotEnoughMemory);
  if (blocks.empty() || blocks.back().size + most > kBlockBytes) BeginBlock();
  Block& block = blocks.back();
  const std::size_t place = (blocks.size() - 1) * kBlockBytes + block.size;
  RecordWriter record(block.bytes);
  unsigned signs = static_cast<unsigned>(member.kind) | (member.crc ? kHasCrc : 0);
  const std::uint64_t time = TimeNumber(member.lastWrite, signs);
  record.Byte(signs);
  record.Byte(member.fault ? static_cast<unsigned>(*member.fault) & 0xFF : 0);
  record.Byte(member.unpacking ? static_cast<unsigned>(*member.unpacking) + 1 : 0);
  for (const char letter : member.method) record.Byte(static_cast<unsigned char>(letter));
  record.Byte(member.attribute);
  record.Byte(member.crc.value_or(0));
  record.Byte(member.crc.value_or(0) >> 8);
  record.Number(member.name.size());
  for (const std::uint64_t number : {member.offset, std::uint64_t{member.headerBytes},
                                     member.packedBytes, member.originalBytes, time}) {
    record.Number(number);
  }
  block.bytes.insert(block.bytes.end(), member.name.begin(), member.name.end());
  block.size = block.bytes.size();
  return static_cast<std::uint32_t>(place);
}

void MemberTable::Append(const Member& member) {
  places.push_back(Store(member));
}

void MemberTable::Rename(std::size_t position, std::string_view name) {
  Member member = (*this)[position];
  member.name = name;
  places[position] = Store(member);
}

void MemberTable::Cut(std::size_t count) {
  if (count >= size()) return;
  const std::uint32_t place = places[count];
  places.resize(count);
  blocks.resize(place / kBlockBytes + 1);
  Block& last = blocks.back();
  if (last.stored) {
    const BlockFile::Pinned pinned = file->Pin(*last.stored, last.size);
    last.bytes.assign(pinned.Bytes().begin(), pinned.Bytes().end());
    last.stored.reset();
  }
  last.size = place % kBlockBytes;
  last.bytes.resize(last.size);
}

}  // namespace kozor::container
