// Decode.cpp - the table of methods that can be unpacked.
//
// The stub of self-extracting programs is built with KOZOR_SMALL_CODEC and knows only the methods
// that the archiver writes: all decoders would exceed its size limit.
#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "engine/codec/Codec.h"
#include "engine/codec/Decoders.h"

namespace kozor::codec {
namespace {

// A method's best possible ratio: at most `bytes` bytes for each `bits` bits begun.
struct Yield {
  std::uint64_t bits;
  std::uint64_t bytes;
};

// In the block methods, items of single-symbol codes take no bits, so a block can cost no more than
// its head: the count, and the shortest form of each code.
constexpr std::uint64_t kMostItems = 65535;
constexpr Yield kNothing{1, 0};
constexpr Yield kStored{8, 1};
constexpr Yield kLh1Match{1 + 3 + 6, 60};
constexpr Yield kNarrowBlock{16 + 10 + 18 + 2 * 4, kMostItems * 256};
#ifndef KOZOR_SMALL_CODEC
constexpr Yield kLh2Match{1 + 8 + 6, 287};
// Here literals can be free but not matches: at most three fit in the bits of a head.
constexpr Yield kLh3Block{16 + 24 + 1, kMostItems + std::uint64_t{3} * 287};
constexpr Yield kLk7Block{16 + 10 + 18 + 2 * 6, kMostItems * 514};
constexpr Yield kLzsMatch{1 + 11 + 4, 17};
constexpr Yield kLz5Matches{8 + 8 * 16, std::uint64_t{8} * 18};
constexpr Yield kPm1Copy{1 + 18 + 6, 244};
constexpr Yield kPm2Stretch{1, 4096};  // one free symbol; a bit per stretch: no new code
#endif
constexpr Yield kWideBlock{16 + 10 + 18 + 2 * 5, kMostItems * 256};

struct Row {
  char letters[4];  // of the id, without hyphens: see HasLetters in MemberHeader.h
  Method method;
  Decoder decode;
  Yield best;
};

constexpr Row kMethods[] = {
    {"lh0", Method::Lh0, DecodeStored, kStored},   {"lh1", Method::Lh1, DecodeLh1, kLh1Match},
    {"lh4", Method::Lh4, DecodeLh4, kNarrowBlock}, {"lh5", Method::Lh5, DecodeLh5, kNarrowBlock},
    {"lh6", Method::Lh6, DecodeLh6, kWideBlock},   {"lh7", Method::Lh7, DecodeLh7, kWideBlock},
    {"lhd", Method::Lhd, DecodeStored, kNothing},
#ifndef KOZOR_SMALL_CODEC
    {"lh2", Method::Lh2, DecodeLh2, kLh2Match},    {"lh3", Method::Lh3, DecodeLh3, kLh3Block},
    {"lhx", Method::Lhx, DecodeLhx, kWideBlock},   {"", Method::Lk7, DecodeLk7, kLk7Block},
    {"lzs", Method::Lzs, DecodeLzs, kLzsMatch},    {"lz4", Method::Lz4, DecodeStored, kStored},
    {"lz5", Method::Lz5, DecodeLz5, kLz5Matches},  {"pm0", Method::Pm0, DecodeStored, kStored},
    {"pm1", Method::Pm1, DecodePm1, kPm1Copy},     {"pm2", Method::Pm2, DecodePm2, kPm2Stretch},
#endif
};

const Row* FindRow(Method method) {
  const Row* row = std::ranges::find(kMethods, method, &Row::method);
  return row != std::end(kMethods) ? row : nullptr;
}

}  // namespace

Status DecodeStored(DecodeJob& job) {
  std::span<const std::uint8_t> piece;
  return job.Run([&](std::size_t limit) {
    while (job.done < limit) {
      if (piece.empty()) piece = job.packed();
      if (piece.empty()) return Status::Truncated;
      const std::size_t bytes = std::min(piece.size(), limit - job.done);
      std::copy_n(piece.data(), bytes, job.target.data() + job.done);
      job.done += bytes;
      piece = piece.subspan(bytes);
    }
    return Status::Ok;
  });
}

Status DecodePieces(Method method, const PackedPieces& packed, std::span<std::uint8_t> target,
                    const Progress& progress, std::size_t* bytesDone) {
  DecodeJob job{packed, target, progress};
  const Row* row = FindRow(method);
  const Status status = row ? row->decode(job) : Status::Unsupported;
  if (bytesDone) *bytesDone = job.done;
  return status;
}

Status Decode(Method method, std::span<const std::uint8_t> packed, std::span<std::uint8_t> target,
              const Progress& progress, std::size_t* bytesDone) {
  const PackedPieces onePiece = [&packed] { return std::exchange(packed, {}); };
  return DecodePieces(method, onePiece, target, progress, bytesDone);
}

std::optional<Method> FindMethod(std::string_view letters) {
  const Row* row = std::ranges::find(
      kMethods, letters, [](const Row& known) { return std::string_view(known.letters); });
  if (row == std::end(kMethods) || letters.empty()) return std::nullopt;
  return row->method;
}

bool CanDecode(Method method) {
  return FindRow(method) != nullptr;
}

std::uint64_t MostUnpackedBytes(Method method, std::uint64_t packedBytes) {
  constexpr std::uint64_t kForgivenBits = 32;  // see BitReader.h
  constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();
  const Row* row = FindRow(method);
  if (!row || row->best.bytes == 0) return 0;
  if (packedBytes > std::uint64_t{1} << 40) return kUnlimited;
  const std::uint64_t items = (packedBytes * 8 + kForgivenBits) / row->best.bits + 1;
  return items > kUnlimited / row->best.bytes ? kUnlimited : items * row->best.bytes;
}

}  // namespace kozor::codec
