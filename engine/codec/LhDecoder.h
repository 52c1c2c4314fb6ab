// LhDecoder.h - unpacks the block-Huffman methods.
#pragma once

#include "engine/codec/DecodeJob.h"
#include "engine/codec/LhFormat.h"

namespace kozor::codec {

Status DecodeLh(const LhMethod& method, DecodeJob& job);

}  // namespace kozor::codec
