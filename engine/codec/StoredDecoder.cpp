// StoredDecoder.cpp - the methods that pack nothing: lh0, lz4, pm0, and a directory's empty data.
#include <algorithm>

#include "engine/codec/DecodeJob.h"

namespace kozor::codec {

Status DecodeStored(DecodeJob& job) {
  const std::size_t available = std::min(job.packed.size(), job.target.size());
  do {
    if (!job.Report()) return Status::Cancelled;
    const std::size_t piece = std::min(job.NextReport(), available) - job.done;
    std::copy_n(job.packed.data() + job.done, piece, job.target.data() + job.done);
    job.done += piece;
  } while (job.done < available);
  return job.IsFull() ? Status::Ok : Status::Truncated;
}

}  // namespace kozor::codec
