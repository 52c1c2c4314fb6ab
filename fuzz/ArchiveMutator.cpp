// ArchiveMutator.cpp - changes archives member by member and field by field.
//
// Input: mode of the search (1 byte), search text (to a zero), archive; see ArchiveFuzz.cpp.
#include <algorithm>

#include "engine/codec/Codec.h"
#include "fuzz/ArchiveModel.h"

namespace kozor::fuzz {
namespace {

constexpr std::size_t kMostMembers = 40;

// The position of the archive in an input.
std::size_t PreambleBytes(std::span<const std::uint8_t> input) {
  if (input.empty()) return 0;
  const auto end = std::find(input.begin() + 1, input.end(), 0);
  return static_cast<std::size_t>(end - input.begin()) + (end != input.end() ? 1 : 0);
}

std::string HostileName(Dice& dice) {
  static const std::string kNames[] = {"a.txt",
                                       "A.TXT",
                                       "a",
                                       "..",
                                       ".",
                                       "..\\..\\x",
                                       "..\xFFx",
                                       "C:\\x",
                                       "C:x",
                                       "\\x",
                                       "\\\\s\\h\\x",
                                       "/etc/x",
                                       "CON",
                                       "nul.txt",
                                       "a:b",
                                       "a?b",
                                       "a*b",
                                       "a|b",
                                       "x|..\xFF..\xFFy",
                                       "\"q\"",
                                       std::string("a\0b", 3),
                                       "\x1B[2J",
                                       "trail. ",
                                       "\x95\x5C\x8E\xA6.txt",
                                       "\xE8\xA1\xA8.txt",
                                       "\xC9\xBD.txt",
                                       "\xFF\xFF",
                                       "d\xFF",
                                       "d\\e\\f",
                                       "kozor fuzz.new",
                                       "KOZOR FUZZ.NEW",
                                       ""};
  if (!dice.OneIn(8)) return dice.OneOf(kNames);
  constexpr std::size_t kLengths[] = {221, 230, 255, 256, 511, 512, 533, 534, 1000};
  return std::string(dice.OneOf(kLengths), static_cast<char>('a' + dice.Below(26)));
}

std::string Numbers(Dice& dice, std::size_t width, std::size_t count) {
  std::string payload;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t value = dice.Number(static_cast<std::uint32_t>(dice.Below(256)));
    if (dice.OneIn(4)) value |= std::uint64_t{dice.Number(0)} << 32;
    for (std::size_t k = 0; k < width; ++k) payload += static_cast<char>(value >> (8 * k));
  }
  return payload;
}

Extension NewExtension(Dice& dice) {
  constexpr std::uint16_t kModes[] = {0xA1FF, 0x81A4, 0x41ED, 0x8124, 0};
  constexpr unsigned kPages[] = {932, 65001, 437, 1252, 51932, 936, 0, 77777};
  const auto number = [](std::uint64_t value, std::size_t width) {
    std::string payload;
    for (std::size_t k = 0; k < width; ++k) payload += static_cast<char>(value >> (8 * k));
    return payload;
  };
  const auto wide = [&] {
    std::string payload;
    for (const char letter : HostileName(dice))
      payload += {letter, letter == '\xFF' ? '\xFF' : '\0'};
    return payload;
  };
  switch (dice.Below(12)) {
    case 0:
      return {0x01, HostileName(dice)};
    case 1:
      return {0x02, HostileName(dice) + (dice.OneIn(2) ? "\xFF" : "")};
    case 2:
      return {0x40, Numbers(dice, 2, 1)};
    case 3:
      return {0x41, Numbers(dice, 8, 3)};
    case 4:
      return {0x42, Numbers(dice, 8, 2)};
    case 5:
      return {0x44, wide()};
    case 6:
      return {0x45, wide()};
    case 7:
      return {0x46, number(dice.OneOf(kPages), 4)};
    case 8:
      return {0x50, number(dice.OneOf(kModes), 2)};
    case 9:
      return {0x54, Numbers(dice, 4, 1)};
    case 10:
      return {0x7F, Numbers(dice, 4, 4)};
    default:
      return {static_cast<std::uint8_t>(dice.Below(256)), Numbers(dice, 1, dice.Below(24))};
  }
}

void ChangeExtensions(std::vector<Extension>& extensions, Dice& dice) {
  if (extensions.empty() || dice.OneIn(3)) {
    const auto at = static_cast<std::ptrdiff_t>(dice.Below(extensions.size() + 1));
    extensions.insert(extensions.begin() + at, NewExtension(dice));
    return;
  }
  const std::size_t chosen = dice.Below(extensions.size());
  switch (dice.Below(5)) {
    case 0:
      extensions.erase(extensions.begin() + static_cast<std::ptrdiff_t>(chosen));
      break;
    case 1:
      extensions.push_back(Extension(extensions[chosen]));
      break;
    case 2:
      std::swap(extensions[chosen], extensions.back());
      break;
    case 3:
      extensions[chosen].id = NewExtension(dice).id;
      break;
    default:
      dice.Disturb(extensions[chosen].payload);
  }
}

ModelMember NewMember(Dice& dice) {
  ModelMember member;
  member.level = static_cast<unsigned>(dice.Below(4));
  member.name = HostileName(dice);
  member.data.resize(dice.Below(64), static_cast<std::uint8_t>(dice.Below(256)));
  member.originalBytes = static_cast<std::uint32_t>(member.data.size());
  member.crc = codec::Crc16(member.data);
  member.hasHeaderCrc = member.level >= 2;
  return member;
}

void ChangeMember(ModelMember& member, const ArchiveModel& model, Dice& dice) {
  constexpr const char* kMethods[] = {"-lh0-", "-lh1-", "-lh2-", "-lh3-", "-lh4-", "-lh5-", "-lh6-",
                                      "-lh7-", "-lhx-", "-lzs-", "-lz4-", "-lz5-", "-pm0-", "-pm1-",
                                      "-pm2-", "-lhd-", "-lh8-", "-lhs-", "-pms-", "-xyz-"};
  constexpr std::uint8_t kSystems[] = {0, 'M', 'U', 'm', 'K', '9', 'A', 'a', ' ', 'H', 'w'};
  switch (dice.Below(14)) {
    case 0:
      member.level = static_cast<unsigned>(dice.Below(dice.OneIn(8) ? 6 : 4));
      break;
    case 1:
      member.method = dice.OneOf(kMethods);
      break;
    case 2:
      member.packedLie = dice.OneIn(2) ? 0 : dice.Number(0);
      break;
    case 3:
      member.originalBytes = dice.Number(static_cast<std::uint32_t>(member.data.size()));
      break;
    case 4:
      member.time = dice.Number(member.time);
      break;
    case 5:
      member.attribute = static_cast<std::uint8_t>(dice.Below(256));
      break;
    case 6:
      member.crc = dice.OneIn(2) ? codec::Crc16(member.data)
                                 : static_cast<std::uint16_t>(dice.Below(0x10000));
      break;
    case 7:
      member.osId = dice.OneOf(kSystems);
      break;
    case 8:
      member.name = dice.OneIn(4) ? dice.OneOf(model.members).name : HostileName(dice);
      break;
    case 9:
      if (dice.OneIn(2)) {
        dice.Disturb(member.extra);
      } else {
        member.extra = "UK9"[dice.Below(3)] + Numbers(dice, 1, 11 + dice.Below(11));
      }
      break;
    case 10:
      member.hasHeaderCrc = !member.hasHeaderCrc;
      break;
    case 11:
      if (dice.OneIn(2)) {
        member.data = dice.OneOf(model.members).data;
      } else {
        dice.Disturb(member.data);
      }
      break;
    case 12:
      member.sumLie = dice.OneIn(3) ? 1 : 0;
      break;
    default:
      ChangeExtensions(member.extensions, dice);
  }
}

void ChangeFrame(ArchiveModel& model, Dice& dice) {
  static const Bytes kTails[] = {{}, {0}, {0, 0}, Bytes(200, 0x1A), {0, 'j', 'u', 'n', 'k'}};
  static const Bytes kPrefixes[] = {{},
                                    {'M', 'Z', 0x80, 0, 1, 0},
                                    Bytes(128),
                                    {0, 0, '-', 'l', 'h', 'd', '-'},
                                    {0x7F, 'E', 'L', 'F'}};
  switch (dice.Below(4)) {
    case 0:
      model.tail = dice.OneOf(kTails);
      break;
    case 1:
      model.prefix = dice.OneOf(kPrefixes);
      break;
    case 2:
      dice.Disturb(dice.OneIn(2) ? model.tail : model.prefix);
      break;
    default: {  // a second archive after the first one
      const Bytes again = PutTogether(model);
      model.tail.insert(model.tail.end(), again.begin(), again.end());
    }
  }
}

void ChangeOrder(std::vector<ModelMember>& members, Dice& dice) {
  const std::size_t chosen = dice.Below(members.size());
  const auto at = members.begin() + static_cast<std::ptrdiff_t>(chosen);
  switch (dice.Below(4)) {
    case 0:
      members.erase(at);
      break;
    case 1:
      members.insert(at, ModelMember(*at));
      break;
    case 2:
      std::swap(*at, members.back());
      break;
    default:
      members.insert(at, NewMember(dice));
  }
}

}  // namespace

Bytes Mutate(std::span<const std::uint8_t> input, Dice& dice) {
  const std::size_t begin = PreambleBytes(input);
  Bytes mutated(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(begin));
  if (mutated.empty() || dice.OneIn(16)) dice.Disturb(mutated);
  if (mutated.empty() || mutated.back() != 0 || mutated.size() < 2) mutated.push_back(0);
  ArchiveModel model = TakeApart(input.subspan(begin));
  for (std::size_t i = dice.Below(4) + 1; i != 0; --i) {
    if (model.members.empty()) {
      model.members.push_back(NewMember(dice));
    } else if (dice.OneIn(6)) {
      ChangeOrder(model.members, dice);
    } else if (dice.OneIn(10)) {
      ChangeFrame(model, dice);
    } else {
      ChangeMember(model.members[dice.Below(model.members.size())], model, dice);
    }
  }
  if (model.members.size() > kMostMembers) model.members.resize(kMostMembers);
  Bytes archive = PutTogether(model);
  if (dice.OneIn(12)) dice.Disturb(archive);
  mutated.insert(mutated.end(), archive.begin(), archive.end());
  return mutated;
}

// Members of both, in their order.
Bytes CrossOver(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other,
                Dice& dice) {
  const std::size_t begin = PreambleBytes(one);
  ArchiveModel model = TakeApart(one.subspan(begin));
  const ArchiveModel added = TakeApart(other.subspan(PreambleBytes(other)));
  for (const ModelMember& member : added.members) {
    if (!dice.OneIn(2) || model.members.size() >= kMostMembers) continue;
    const auto at = static_cast<std::ptrdiff_t>(dice.Below(model.members.size() + 1));
    model.members.insert(model.members.begin() + at, member);
  }
  if (dice.OneIn(4)) model.tail = added.tail;
  Bytes spliced(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(begin));
  const Bytes archive = PutTogether(model);
  spliced.insert(spliced.end(), archive.begin(), archive.end());
  return spliced;
}

}  // namespace kozor::fuzz
