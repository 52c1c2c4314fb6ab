// ArchiveModel.h - an archive split into fields, to be changed and reassembled.
#pragma once

#include "fuzz/Mutation.h"
#include "tests/engine/RawArchive.h"

namespace kozor::fuzz {

struct ArchiveModel {
  Bytes prefix = {};
  std::vector<test::RawMember> members = {};
  Bytes tail = {0};  // from the end mark on
};

// Bytes that aren't a readable member go to the prefix or the tail.
ArchiveModel TakeApart(std::span<const std::uint8_t> archive);
Bytes PutTogether(const ArchiveModel& model);

}  // namespace kozor::fuzz
