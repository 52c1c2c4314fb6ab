// MemberPacker.cpp - see MemberPacker.h.
#include "engine/commands/MemberPacker.h"

#include <utility>

namespace kozor::commands {
namespace {

using container::ByteSpan;
using container::Failure;
using container::MemberOutput;
using container::NewMember;
using container::ResultCode;

codec::Method CodecMethodOf(NewMethod method) {
  switch (method) {
    case NewMethod::Lh6:
      return codec::Method::Lh6;
    case NewMethod::Lh7:
      return codec::Method::Lh7;
    case NewMethod::Lh5:
    case NewMethod::Stored:
      break;
  }
  return codec::Method::Lh5;
}

container::MethodId IdOf(codec::Method method) {
  const char digit = method == codec::Method::Lh7 ? '7' : method == codec::Method::Lh6 ? '6' : '5';
  return {'-', 'l', 'h', digit, '-'};
}

// Hands the whole input on, and counts and sums it.
template <typename Take>
void ReadAll(PackInput& input, NewMember& member, Progress& progress, Take take) {
  member.originalBytes = 0;
  member.crc = 0;
  for (ByteSpan piece = input.Next(); !piece.empty(); piece = input.Next()) {
    member.originalBytes += piece.size();
    if (member.originalBytes > kMaxMemberBytes) throw Failure(ResultCode::UnknownKind);
    member.crc = codec::Crc16(piece, member.crc);
    take(piece);
    progress.Report(member.originalBytes);
  }
}

void Store(PackInput& input, NewMember& member, MemberOutput& output, Progress& progress) {
  member.method = container::kStoredMethod;
  ReadAll(input, member, progress, [&](ByteSpan piece) { output.Write(piece); });
}

}  // namespace

void MemberPacker::PackWith(codec::Method method, PackInput& input, NewMember& member,
                            MemberOutput& output, Progress& progress) {
  // An encoder that is left in the middle of a member is not used again.
  auto node = encoders.extract(method);
  codec::Encoder encoder = node.empty() ? codec::Encoder(method) : std::move(node.mapped());
  const auto writePacked = [&] {
    output.Write(packed);
    packed.clear();
  };
  packed.clear();
  member.method = IdOf(method);
  ReadAll(input, member, progress, [&](ByteSpan piece) {
    encoder.Append(piece, packed);
    writePacked();
  });
  encoder.Finish(packed);
  writePacked();
  encoders.emplace(method, std::move(encoder));
}

void MemberPacker::Pack(PackInput& input, NewMethod method, NewMember& member, MemberOutput& output,
                        Progress& progress) {
  const std::uint64_t headerOffset = output.Position();
  output.Write(container::BuildHeader(member));  // keeps the place
  const std::uint64_t dataOffset = output.Position();
  if (method == NewMethod::Stored) {
    Store(input, member, output, progress);
  } else {
    PackWith(CodecMethodOf(method), input, member, output, progress);
    if (output.Position() - dataOffset >= member.originalBytes) {
      output.TakeBack(dataOffset);
      input.Rewind();
      Store(input, member, output, progress);
    }
  }
  member.packedBytes = output.Position() - dataOffset;
  output.Overwrite(headerOffset, container::BuildHeader(member));
}

}  // namespace kozor::commands
