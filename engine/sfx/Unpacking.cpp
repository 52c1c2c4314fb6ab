// Unpacking.cpp - see Unpacking.h.
#include "engine/sfx/Unpacking.h"

#include "engine/codec/Codec.h"
#include "engine/sfx/System.h"

namespace kozor::sfx {
namespace {

// Unpacked data within this distance may still be read: more than twice the largest window and a
// match.
constexpr std::size_t kReach = std::size_t{2} << 20;

// Unpacks and computes the CRC while the data is in the cache.  `passed` receives the number of
// bytes done.
template <typename Passed>
const char* Unpack(std::span<std::uint8_t> target, const container::MemberHeader& header,
                   container::ByteSpan packed, Passed passed) {
  std::uint16_t crc = 0;
  std::size_t summed = 0;
  const auto sumUpTo = [&](std::size_t done) {
    crc = codec::Crc16(target.subspan(summed, done - summed), crc);
    summed = done;
    passed(done);
    return true;
  };
  switch (codec::Decode(*header.UnpackingMethod(), packed, target, sumUpTo)) {
    case codec::Status::Ok:
      break;
    case codec::Status::Truncated:
      return "damaged: its data ends early";
    default:
      return "damaged: its packed data makes no sense";
  }
  sumUpTo(target.size());
  return header.crc && *header.crc != crc ? "damaged: its checksum doesn't match" : nullptr;
}

}  // namespace

const char* FaultOf(const container::MemberHeader& header) {
  if (!header.UnpackingMethod()) return "its method is not supported";
  return header.ClaimsTooMuch() ? "damaged: its data can't be as long as it says" : nullptr;
}

const char* UnpackInto(std::span<std::uint8_t> target, const container::MemberHeader& header,
                       container::ByteSpan packed) {
  return Unpack(target, header, packed, [](std::size_t) {});
}

const char* TestData(const container::MemberHeader& header, container::ByteSpan packed) {
  if (const char* fault = FaultOf(header)) return fault;
  const std::uint64_t bytes = header.originalBytes;
  if (bytes == 0) return UnpackInto({}, header, packed);
  std::uint8_t* const memory = host::ReserveMemory(bytes);
  if (memory == nullptr) return "not enough memory";
  std::size_t dropped = 0;
  const auto dropBehind = [&](std::size_t done) {
    if (done < dropped + 2 * kReach) return;
    const std::size_t end = (done - kReach) / kReach * kReach;
    host::DropMemory(memory + dropped, end - dropped);
    dropped = end;
  };
  const char* const fault =
      Unpack({memory, static_cast<std::size_t>(bytes)}, header, packed, dropBehind);
  host::FreeMemory(memory, bytes);
  return fault;
}

}  // namespace kozor::sfx
