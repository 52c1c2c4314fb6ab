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
    {Method::lh0, DecodeStored},
    {Method::lh4, [](DecodeJob& job) { return DecodeLh(kLh4, job); }},
    {Method::lh5, [](DecodeJob& job) { return DecodeLh(kLh5, job); }},
    {Method::lh6, [](DecodeJob& job) { return DecodeLh(kLh6, job); }},
    {Method::lh7, [](DecodeJob& job) { return DecodeLh(kLh7, job); }},
    {Method::lhx, [](DecodeJob& job) { return DecodeLh(kLhx, job); }},
    {Method::lz4, DecodeStored},
    {Method::pm0, DecodeStored},
    {Method::lhd, DecodeStored},
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
  const Status status = row ? row->decode(job) : Status::unsupported;
  if (bytesDone) *bytesDone = job.done;
  return status;
}

bool CanDecode(Method method) {
  return FindDecoder(method) != nullptr;
}

}  // namespace kozor::codec
