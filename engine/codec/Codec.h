// Codec.h - the compression methods of LZH archives, from bytes to bytes.
//
// No files, no globals, no locale.  docs/lzh-methods.md describes the formats: bit order,
// alphabets, limits that writers must keep.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kozor::codec {

class BitWriter;

// A method by the three letters of its id in a member header: "-lh5-" is Method::Lh5.
enum class Method {
  Lh0,
  Lh1,
  Lh2,
  Lh3,
  Lh4,
  Lh5,
  Lh6,
  Lh7,
  Lhx,
  Lk7,  // the other scheme under the id "-lh7-"; only the header tells it apart
  Lzs,
  Lz4,
  Lz5,
  Pm0,
  Pm1,
  Pm2,
  Lhd
};

enum class Status {
  Ok,
  Damaged,      // the packed data breaks a rule of its method
  Truncated,    // the packed data ends before the target is full
  Unsupported,  // no decoder, or no encoder, for this method
  Cancelled,    // the progress function asked to stop
};

// Receives the number of original bytes done, first 0, then at least every 256 KiB, on the caller's
// thread.  Returns false to stop.  May be empty.  May throw: nothing leaks.
using Progress = std::function<bool(std::size_t bytesDone)>;

// Returns the packed data of a member piece by piece, in order; an empty piece is the end.  Each
// piece must stay valid until the next call.  May throw: nothing leaks.
using PackedPieces = std::function<std::span<const std::uint8_t>()>;

// Unpacks a member straight into `target`, whose size is the member's original size.  Never writes
// outside `target`, whatever the packed data holds, and allocates no memory.  A target shorter than
// the original receives its beginning.  On any status but Ok, `target` is valid up to `*bytesDone`
// (if given) and unspecified after that.
Status DecodePieces(Method method, const PackedPieces& packed, std::span<std::uint8_t> target,
                    const Progress& progress = {}, std::size_t* bytesDone = nullptr);

// The same for packed data in one piece.
Status Decode(Method method, std::span<const std::uint8_t> packed, std::span<std::uint8_t> target,
              const Progress& progress = {}, std::size_t* bytesDone = nullptr);

// The method for the three letters of an id: "lh5" for "-lh5-".  Empty if there is no decoder for
// it.
std::optional<Method> FindMethod(std::string_view letters);

// Whether Decode knows the method.  Lhd (a directory) has no data and counts as known.
bool CanDecode(Method method);

// An upper bound on the original size of that many packed bytes: a header that states more is
// damaged.  It follows from the format alone, and is loose where an item can take no bits.  0 for a
// method that Decode doesn't know.
std::uint64_t MostUnpackedBytes(Method method, std::uint64_t packedBytes);

// The encoder's levels, from the fastest to the one that packs best.  Up to level 6 parsing is
// lazy, from 7 on near-optimal.  docs/performance.md has figures.
inline constexpr int kFastestLevel = 1;
inline constexpr int kDefaultLevel = 5;
inline constexpr int kSmallestLevel = 9;

class Lh1Encoder;

// Packs one member, fed in pieces of any size.  Memory is bounded at some megabytes, independent of
// the size of the member.  The packed bytes depend on the data, not on the sizes of the pieces.
// Methods: Lh1, which ignores the level, Lh4, Lh5, Lh6, Lh7.
//
// The packed size isn't guaranteed to be smaller: incompressible data grows a little, and the
// caller should then store it as lh0.  No data gives no packed bytes.
//
//   Encoder encoder(Method::Lh5);
//   while (more) encoder.Append(piece, packed);   // appends finished bytes to `packed`
//   encoder.Finish(packed);
class Encoder {
 public:
  // Throws std::invalid_argument for another method or a level out of range.
  explicit Encoder(Method method, int level = kDefaultLevel);
  ~Encoder();

  void Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed);
  // Writes the remaining bits and pads the last byte.  The encoder is then ready for another member
  // and reuses its tables, so it can serve any number of members without new allocations.
  void Finish(std::vector<std::uint8_t>& packed);

 private:
  struct State;
  std::unique_ptr<State> state;
  std::unique_ptr<Lh1Encoder> lh1;  // set instead of `state`
};

// Packs all of `data` in one call.
std::vector<std::uint8_t> Encode(Method method, std::span<const std::uint8_t> data,
                                 int level = kDefaultLevel);

// Members can also be packed segment by segment, on several threads.  All segments of a member but
// the last have kSegmentBytes.  Their bits, concatenated in order and padded, equal the output of
// an Encoder.
inline constexpr std::size_t kSegmentBytes = std::size_t{512} << 10;

// How many bytes before a segment its matches can refer to; 0 for a method that isn't packed in
// segments.
std::size_t HistoryBytes(Method method);

enum class SegmentPlace { Inside, Last };

// Each thread needs its own.  It takes at most 20 MiB: 16 MiB for the matches of levels 7 to 9, the
// rest for tables and items.
class SegmentEncoder {
 public:
  // Like Encoder, for methods with HistoryBytes.
  explicit SegmentEncoder(Method method, int level = kDefaultLevel);
  ~SegmentEncoder();

  // Appends the bits of the segment from `begin` to the end of `data`.  The bytes before it are its
  // history; only the last HistoryBytes are used.
  void Encode(std::span<const std::uint8_t> data, std::size_t begin, SegmentPlace place,
              BitWriter& packed);

 private:
  struct State;
  std::unique_ptr<State> state;
};

// CRC-16/ARC (reflected polynomial 0xA001, initial value 0) of `data`, continued from `crc`.
std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t crc = 0);

}  // namespace kozor::codec
