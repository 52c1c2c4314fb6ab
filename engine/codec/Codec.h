// Codec.h - the compression methods of LZH archives, from bytes to bytes.
//
// No files, no globals, no locale: a packed member and a target in memory go in, a status comes
// out. The facts behind it (bit order, alphabets, limits that writers must keep) stand in
// docs/lzh-methods.md.
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

// Told how many bytes of the original are done, at least every 256 KiB and first with 0, on the
// caller's thread; returns false to stop.  May be empty.  It may throw: nothing is left behind.
using Progress = std::function<bool(std::size_t bytesDone)>;

// Hands out the packed data of a member piece by piece, in order; an empty piece is the end.  Each
// piece must hold good until the next call.  It may throw: nothing is left behind.
using PackedPieces = std::function<std::span<const std::uint8_t>()>;

// Unpacks a member straight into `target`, whose size is the member's original size.  Nothing is
// ever written outside `target`, whatever the packed data holds, and no memory is allocated.  A
// target shorter than the original is filled with its beginning.  On any status but Ok, `target`
// holds what had been unpacked up to `*bytesDone` (if given); the rest of it is unspecified.
Status DecodePieces(Method method, const PackedPieces& packed, std::span<std::uint8_t> target,
                    const Progress& progress = {}, std::size_t* bytesDone = nullptr);

// The same for packed data that is in memory as a whole.
Status Decode(Method method, std::span<const std::uint8_t> packed, std::span<std::uint8_t> target,
              const Progress& progress = {}, std::size_t* bytesDone = nullptr);

// The method that the three letters of an id stand for: "lh5" for "-lh5-".  Empty when there is no
// decoder for it.
std::optional<Method> FindMethod(std::string_view letters);

// Whether Decode knows the method.  Lhd (a directory) has no data and counts as known.
bool CanDecode(Method method);

// A bound on what that many packed bytes can unpack to: a header that claims more is wrong.  It
// follows from the format alone, and is generous where a format lets an item take no bits.  0 for a
// method that Decode does not know.
std::uint64_t MostUnpackedBytes(Method method, std::uint64_t packedBytes);

// Whether there is an encoder for the method.
bool CanEncode(Method method);

// How hard an encoder searches, from the fastest to the one that packs best.  Up to level 6 it
// takes the best match at hand, from 7 on it weighs every way through the data. docs/performance.md
// has figures.
inline constexpr int kFastestLevel = 1;
inline constexpr int kDefaultLevel = 5;
inline constexpr int kSmallestLevel = 9;

class Lh1Encoder;

// Packs one member, fed in pieces of any size.  Memory stays bounded, at some megabytes, whatever
// the size of the member, and the same data gives the same packed bytes whatever the sizes of the
// pieces.  Methods: Lh1, for which no level makes a difference, Lh4, Lh5, Lh6, Lh7.
//
// Nothing is promised about the packed size: data that does not compress comes out a little larger
// than it went in, and a caller then stores it as lh0.  No data gives no packed bytes.
//
//   Encoder encoder(Method::Lh5);
//   while (more) encoder.Append(piece, packed);   // appends finished bytes to `packed`
//   encoder.Finish(packed);
class Encoder {
 public:
  // Throws std::invalid_argument unless CanEncode(method) and the level is one.
  explicit Encoder(Method method, int level = kDefaultLevel);
  ~Encoder();
  Encoder(Encoder&&) noexcept;
  Encoder& operator=(Encoder&&) noexcept;

  void Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed);
  // Writes what is left and pads the last byte.  The encoder is then ready for another member, and
  // keeps its tables: one encoder serves any number of members without new allocations.
  void Finish(std::vector<std::uint8_t>& packed);

 private:
  struct State;
  std::unique_ptr<State> state;
  std::unique_ptr<Lh1Encoder> lh1;  // instead of a state
};

// The whole of `data` in one call.
std::vector<std::uint8_t> Encode(Method method, std::span<const std::uint8_t> data,
                                 int level = kDefaultLevel);

// Members can also be packed segment by segment, on several threads.  All segments of a member but
// the last have kSegmentBytes; their bits, joined in order and padded, are what an Encoder makes.
inline constexpr std::size_t kSegmentBytes = std::size_t{512} << 10;

// How many bytes before a segment its matches reach back to; 0 for a method that is not packed in
// segments.
std::size_t HistoryBytes(Method method);

enum class SegmentPlace { Inside, Last };

// Each thread needs one of its own.  It takes at most 20 MiB: 16 MiB for what levels 7 to 9 know of
// the matches, the rest for tables and items.
class SegmentEncoder {
 public:
  // As Encoder, for methods that have HistoryBytes.
  explicit SegmentEncoder(Method method, int level = kDefaultLevel);
  ~SegmentEncoder();
  SegmentEncoder(SegmentEncoder&&) noexcept;
  SegmentEncoder& operator=(SegmentEncoder&&) noexcept;

  // Appends the bits of the segment that begins at `begin` and goes to the end of `data`.  The
  // bytes before it are its history, of which the last HistoryBytes count.
  void Encode(std::span<const std::uint8_t> data, std::size_t begin, SegmentPlace place,
              BitWriter& packed);

 private:
  struct State;
  std::unique_ptr<State> state;
};

// CRC-16/ARC (reflected polynomial 0xA001, initial value 0) of `data`, continued from `crc`.
std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t crc = 0);

}  // namespace kozor::codec
