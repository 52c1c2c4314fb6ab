// ArchiveModel.cpp - see ArchiveModel.h.
#include "fuzz/ArchiveModel.h"

#include <algorithm>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberHeader.h"

namespace kozor::fuzz {
namespace {

using container::ByteSpan;
using container::MemberHeader;
using test::RawMember;

std::uint32_t Number(ByteSpan bytes, std::size_t position, std::size_t width) {
  return width == 2 ? container::ReadU16(bytes, position) : container::ReadU32(bytes, position);
}

// `bytes` is a valid header.
void TakeChain(ByteSpan bytes, std::size_t begin, RawMember& member) {
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

RawMember TakeMember(ByteSpan bytes, const MemberHeader& header) {
  RawMember member;
  member.level = static_cast<int>(header.level);
  member.method.assign(bytes.begin() + 2, bytes.begin() + 7);
  member.originalBytes = container::ReadU32(bytes, 11);
  member.time = container::ReadU32(bytes, 15);
  member.attribute = bytes[19];
  member.hasHeaderCrc = false;
  member.crc = header.crc.value_or(0);
  member.osId = static_cast<char>(header.osId);
  if (member.level >= 2) {
    TakeChain(bytes, member.level == 2 ? 26 : 32, member);
    return member;
  }
  member.name = header.name.base;
  const std::size_t base = bytes[0] + 2U;
  const std::size_t end = 22U + bytes[21] + (member.level == 0 ? 2 : 3);
  const std::size_t extraEnd = base - (member.level == 0 ? 0 : 2);
  for (std::size_t i = end; i < extraEnd; ++i) member.extra += static_cast<char>(bytes[i]);
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

}  // namespace

ArchiveModel TakeApart(std::span<const std::uint8_t> archive) {
  ArchiveModel model;
  const std::size_t begin = BeginOf(archive);
  const auto prefix = archive.first(begin);
  model.prefix.assign(prefix.begin(), prefix.end());
  auto left = archive.subspan(begin);
  MemberHeader header;
  while (container::ParseMemberHeader(left, header) == container::HeaderStatus::Complete) {
    RawMember member = TakeMember(left.first(header.headerBytes), header);
    left = left.subspan(header.headerBytes);
    const auto data = left.first(
        static_cast<std::size_t>(std::min<std::uint64_t>(header.packedBytes, left.size())));
    member.contents.assign(data.begin(), data.end());
    member.packedError = static_cast<std::uint32_t>(header.packedBytes - data.size());
    left = left.subspan(data.size());
    model.members.push_back(std::move(member));
  }
  model.tail.assign(left.begin(), left.end());
  return model;
}

Bytes PutTogether(const ArchiveModel& model) {
  Bytes members = test::RawArchive(model.members);
  members.pop_back();  // the end mark
  return test::Join({model.prefix, members, model.tail});
}

}  // namespace kozor::fuzz
