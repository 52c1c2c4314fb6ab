// Decode.cpp - finds the decoder of a method.  A method is one row here and one file beside this.
#include <algorithm>
#include <iterator>

#include "engine/codec/Codec.h"
#include "engine/codec/DecodeJob.h"
#include "engine/codec/LhDecoder.h"

namespace kozor::codec {
namespace {

struct Row {
  Method method;
  Decoder decode;
};

constexpr Row kDecoders[] = {
    {Method::Lh0, DecodeStored},
    {Method::Lh4, [](DecodeJob& job) { return DecodeLh(kLh4, job); }},
    {Method::Lh5, [](DecodeJob& job) { return DecodeLh(kLh5, job); }},
    {Method::Lh6, [](DecodeJob& job) { return DecodeLh(kLh6, job); }},
    {Method::Lh7, [](DecodeJob& job) { return DecodeLh(kLh7, job); }},
    {Method::Lhx, [](DecodeJob& job) { return DecodeLh(kLhx, job); }},
    {Method::Lz4, DecodeStored},
    {Method::Pm0, DecodeStored},
    {Method::Lhd, DecodeStored},
};

const Row* FindDecoder(Method method) {
  const Row* row = std::ranges::find(kDecoders, method, &Row::method);
  return row != std::end(kDecoders) ? row : nullptr;
}

}  // namespace

Status Decode(Method method, std::span<const std::uint8_t> packed, std::span<std::uint8_t> target,
              const Progress& progress, std::size_t* bytesDone) {
  DecodeJob job{packed, target, progress};
  const Row* row = FindDecoder(method);
  const Status status = row ? row->decode(job) : Status::Unsupported;
  if (bytesDone) *bytesDone = job.done;
  return status;
}

bool CanDecode(Method method) {
  return FindDecoder(method) != nullptr;
}

}  // namespace kozor::codec
