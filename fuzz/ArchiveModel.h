// ArchiveModel.h - an archive split into fields, to be changed and reassembled.
#pragma once

#include <string>

#include "fuzz/Mutation.h"

namespace kozor::fuzz {

struct Extension {
  std::uint8_t id = 0;
  std::string payload;
};

// Sizes and checksums are computed; the errors given here are added to them.
struct ModelMember {
  unsigned level = 2;
  std::string method = "-lh0-";
  std::uint32_t packedLie = 0;  // claimed minus true size
  std::uint32_t originalBytes = 0;
  std::uint32_t time = 0x4B3D3B00;
  std::uint8_t attribute = 0x20;
  std::uint16_t crc = 0;  // of the original data
  std::uint8_t osId = 'M';
  std::string name = {};   // in levels 2 and 3 an extension 0x01
  std::string extra = {};  // at the end of the base header of levels 0 and 1
  bool hasHeaderCrc = false;
  std::vector<Extension> extensions = {};  // without 0x00, and without the name in levels 2 and 3
  std::uint8_t sumLie = 0;                 // of the base header, or the header CRC
  Bytes data = {};
};

struct ArchiveModel {
  Bytes prefix = {};
  std::vector<ModelMember> members = {};
  Bytes tail = {0};  // from the end mark on
};

// Bytes that aren't a readable member go to the prefix or the tail.
ArchiveModel TakeApart(std::span<const std::uint8_t> archive);
Bytes PutTogether(const ArchiveModel& model);

}  // namespace kozor::fuzz
