// MemberPacker.h - packs one member into an archive.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "engine/codec/Codec.h"
#include "engine/commands/CommandLine.h"
#include "engine/commands/PackInput.h"
#include "engine/commands/Progress.h"
#include "engine/container/HeaderWriter.h"
#include "engine/container/MemberOutput.h"

namespace kozor::commands {

// The largest file that can be added.  The sizes of a header have 32 bits, and those who unpack a
// member into a mapped file reserve up to 1 KiB more than its size.
inline constexpr std::uint64_t kMaxMemberBytes = 0xFFFFFFFF - 1024;

class MemberPacker {
 public:
  // Writes header and data of a member; `member` holds its name, time and attribute, and gets the
  // sizes and the CRC.  Packed data that came out no smaller than the original is replaced by the
  // original, which is read a second time.  Throws ResultCode::UnknownKind when the input turns out
  // to be 4 GiB or more, and what input, output and progress throw.
  void Pack(PackInput& input, NewMethod method, container::NewMember& member,
            container::MemberOutput& output, Progress& progress);

 private:
  void PackWith(codec::Method method, PackInput& input, container::NewMember& member,
                container::MemberOutput& output, Progress& progress);

  // Encoders are kept with their tables from member to member.
  std::map<codec::Method, codec::Encoder> encoders;
  std::vector<std::uint8_t> packed;
};

}  // namespace kozor::commands
