// ArchiveModel.cpp - see ArchiveModel.h.
#include "fuzz/ArchiveModel.h"

#include <algorithm>
#include <numeric>

#include "engine/codec/Codec.h"
#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberHeader.h"

namespace kozor::fuzz {
namespace {

using container::ByteSpan;
using container::MemberHeader;

std::uint32_t Number(ByteSpan bytes, std::size_t position, std::size_t width) {
  return width == 2 ? container::ReadU16(bytes, position) : container::ReadU32(bytes, position);
}

void AppendText(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

// `bytes` is a valid header.
void TakeChain(ByteSpan bytes, std::size_t begin, ModelMember& member) {
  const std::size_t width = member.level == 3 ? 4 : 2;
  while (const std::size_t size = Number(bytes, begin - width, width)) {
    const ByteSpan payload = bytes.subspan(begin + 1, size - 1 - width);
    const std::string text(payload.begin(), payload.end());
    if (bytes[begin] == 0x00) {
      member.hasHeaderCrc = true;
    } else if (bytes[begin] == 0x01 && member.level >= 2 && member.name.empty()) {
      member.name = text;
    } else {
      member.extensions.push_back({bytes[begin], text});
    }
    begin += size;
  }
}

ModelMember TakeMember(ByteSpan bytes, const MemberHeader& header) {
  ModelMember member;
  member.level = header.level;
  member.method.assign(bytes.begin() + 2, bytes.begin() + 7);
  member.originalBytes = container::ReadU32(bytes, 11);
  member.time = container::ReadU32(bytes, 15);
  member.attribute = bytes[19];
  member.crc = header.crc.value_or(0);
  member.osId = header.osId;
  if (member.level >= 2) {
    TakeChain(bytes, member.level == 2 ? 26 : 32, member);
    return member;
  }
  member.name = header.name.base;
  const std::size_t base = bytes[0] + 2U;
  const std::size_t end = 22U + bytes[21] + (member.level == 0 ? 2 : 3);
  const std::size_t extraEnd = base - (member.level == 0 ? 0 : 2);
  if (end < extraEnd)
    member.extra.assign(bytes.begin() + static_cast<std::ptrdiff_t>(end),
                        bytes.begin() + static_cast<std::ptrdiff_t>(extraEnd));
  if (member.level == 1) TakeChain(bytes, base, member);
  return member;
}

std::size_t BeginOf(std::span<const std::uint8_t> archive) {
  container::MemorySource source(archive);
  try {
    return static_cast<std::size_t>(container::FindFirstHeader(source));
  } catch (const container::Failure&) {
    return archive.size();
  }
}

// Appends the chain with the size in front of it.  Returns the position of the header CRC, or 0.
std::size_t AppendChain(Bytes& bytes, const ModelMember& member) {
  const std::size_t width = member.level == 3 ? 4 : 2;
  std::size_t crcPosition = 0;
  const auto append = [&](std::uint8_t id, std::string_view payload) {
    container::AppendNumber(bytes, 1 + payload.size() + width, width);
    if (id == 0) crcPosition = bytes.size() + 1;
    bytes.push_back(id);
    AppendText(bytes, payload);
  };
  if (member.hasHeaderCrc) append(0x00, std::string(2, '\0'));
  if (member.level >= 2) append(0x01, member.name);
  for (const Extension& extension : member.extensions) append(extension.id, extension.payload);
  container::AppendNumber(bytes, 0, width);
  return crcPosition;
}

void MendBase(Bytes& bytes, std::size_t baseBytes, std::uint8_t lie) {
  bytes[0] = static_cast<std::uint8_t>(baseBytes - 2);
  const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(baseBytes);
  bytes[1] = static_cast<std::uint8_t>(std::accumulate(bytes.begin() + 2, end, unsigned{lie}));
}

void AppendBase(Bytes& bytes, const ModelMember& member) {
  constexpr std::size_t kMostBytes = 200;  // the size of a base header is one byte
  const std::string_view name = std::string_view(member.name).substr(0, kMostBytes);
  bytes.push_back(static_cast<std::uint8_t>(name.size()));
  AppendText(bytes, name);
  container::AppendNumber(bytes, member.crc, 2);
  if (member.level == 1) bytes.push_back(member.osId);
  AppendText(bytes, std::string_view(member.extra).substr(0, kMostBytes + 22 - name.size()));
}

Bytes HeaderOf(const ModelMember& member) {
  Bytes bytes(2);
  const auto packed = static_cast<std::uint32_t>(member.data.size()) + member.packedLie;
  AppendText(bytes, member.method);
  container::AppendNumber(bytes, packed, 4);
  container::AppendNumber(bytes, member.originalBytes, 4);
  container::AppendNumber(bytes, member.time, 4);
  bytes.push_back(member.attribute);
  bytes.push_back(static_cast<std::uint8_t>(member.level));
  if (member.level <= 1) {
    AppendBase(bytes, member);
  } else {
    container::AppendNumber(bytes, member.crc, 2);
    bytes.push_back(member.osId);
    if (member.level == 3) container::AppendNumber(bytes, 0, 4);
  }
  const std::size_t baseBytes = bytes.size() + (member.level == 0 ? 0 : 2);
  std::size_t crcPosition = member.level == 0 ? 0 : AppendChain(bytes, member);
  if (member.level == 1) {
    container::WriteNumber(&bytes[7], packed + (bytes.size() - baseBytes), 4);
  }
  if (member.level <= 1) MendBase(bytes, baseBytes, member.sumLie);
  if (member.level == 2) {
    if (bytes.size() % 256 == 0) bytes.push_back(0);
    container::WriteNumber(bytes.data(), bytes.size() % 0x10000, 2);
  }
  if (member.level == 3) {
    container::WriteNumber(bytes.data(), 4, 2);
    container::WriteNumber(&bytes[24], bytes.size(), 4);
  }
  if (crcPosition != 0) {
    const auto crc = static_cast<std::uint16_t>(codec::Crc16(bytes) + member.sumLie);
    container::WriteNumber(&bytes[crcPosition], crc, 2);
  }
  return bytes;
}

}  // namespace

ArchiveModel TakeApart(std::span<const std::uint8_t> archive) {
  ArchiveModel model;
  const std::size_t begin = BeginOf(archive);
  const auto prefix = archive.first(begin);
  model.prefix.assign(prefix.begin(), prefix.end());
  auto left = archive.subspan(begin);
  MemberHeader header;
  while (container::ParseMemberHeader(left, header) == container::HeaderStatus::Complete) {
    ModelMember member = TakeMember(left.first(header.headerBytes), header);
    left = left.subspan(header.headerBytes);
    const auto data = left.first(
        static_cast<std::size_t>(std::min<std::uint64_t>(header.packedBytes, left.size())));
    member.data.assign(data.begin(), data.end());
    member.packedLie = static_cast<std::uint32_t>(header.packedBytes - data.size());
    left = left.subspan(data.size());
    model.members.push_back(std::move(member));
  }
  model.tail.assign(left.begin(), left.end());
  return model;
}

Bytes PutTogether(const ArchiveModel& model) {
  Bytes bytes = model.prefix;
  for (const ModelMember& member : model.members) {
    const Bytes header = HeaderOf(member);
    bytes.insert(bytes.end(), header.begin(), header.end());
    bytes.insert(bytes.end(), member.data.begin(), member.data.end());
  }
  bytes.insert(bytes.end(), model.tail.begin(), model.tail.end());
  return bytes;
}

}  // namespace kozor::fuzz
