// ArchiveMutator.cpp - changes archives member by member and field by field.
//
// Input: mode of the search (1 byte), search text (to a zero), archive; see ArchiveFuzz.cpp.
#include <algorithm>

#include "fuzz/ArchiveModel.h"

namespace kozor::fuzz {

using test::RawExtension;
using test::RawMember;

namespace {

constexpr std::size_t kMostMembers = 40;

// The position of the archive in an input.
std::size_t PreambleBytes(std::span<const std::uint8_t> input) {
  if (input.empty()) return 0;
  const auto end = std::find(input.begin() + 1, input.end(), 0);
  return static_cast<std::size_t>(end - input.begin()) + (end != input.end() ? 1 : 0);
}

std::string Little(std::uint64_t value, std::size_t width) {
  std::string bytes;
  for (; width != 0; --width, value >>= 8) bytes += static_cast<char>(value);
  return bytes;
}

std::string Numbers(Dice& dice, std::size_t width, std::size_t count) {
  std::string payload;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t value = dice.Number(static_cast<std::uint32_t>(dice.Below(256)));
    if (dice.OneIn(4)) value |= std::uint64_t{dice.Number(0)} << 32;
    payload += Little(value, width);
  }
  return payload;
}

RawExtension NewExtension(Dice& dice) {
  constexpr std::uint16_t kModes[] = {0xA1FF, 0x81A4, 0x41ED, 0x8124, 0};
  constexpr unsigned kPages[] = {932, 65001, 437, 1252, 51932, 936, 0, 77777};
  std::string wide;
  for (const char c : dice.HostileName()) wide += {c, c == '\xFF' ? '\xFF' : '\0'};
  const RawExtension known[] = {
      {0x01, dice.HostileName()},
      {0x02, dice.HostileName() + (dice.OneIn(2) ? "\xFF" : "")},
      {0x40, Numbers(dice, 2, 1)},
      {0x41, Numbers(dice, 8, 3)},
      {0x42, Numbers(dice, 8, 2)},
      {0x44, wide},
      {0x45, wide},
      {0x46, Little(dice.OneOf(kPages), 4)},
      {0x50, Little(dice.OneOf(kModes), 2)},
      {0x54, Numbers(dice, 4, 1)},
      {0x7F, Numbers(dice, 4, 4)},
      {static_cast<std::uint8_t>(dice.Below(256)), Numbers(dice, 1, dice.Below(24))}};
  return dice.OneOf(known);
}

// Removes, doubles or exchanges an element of a list.
template <typename Element>
void ChangeOrder(std::vector<Element>& list, Dice& dice) {
  const auto at = list.begin() + static_cast<std::ptrdiff_t>(dice.Below(list.size()));
  dice.DoOneOf([&] { list.erase(at); }, [&] { list.insert(at, Element(*at)); },
               [&] { std::swap(*at, list.back()); });
}

void ChangeExtensions(std::vector<RawExtension>& extensions, Dice& dice) {
  if (extensions.empty() || dice.OneIn(3)) {
    const auto at = static_cast<std::ptrdiff_t>(dice.Below(extensions.size() + 1));
    extensions.insert(extensions.begin() + at, NewExtension(dice));
    return;
  }
  RawExtension& chosen = extensions[dice.Below(extensions.size())];
  if (dice.OneIn(2)) return ChangeOrder(extensions, dice);
  dice.DoOneOf([&] { chosen.id = NewExtension(dice).id; }, [&] { dice.Disturb(chosen.payload); });
}

RawMember NewMember(Dice& dice) {
  const auto level = static_cast<int>(dice.Below(4));
  return {.level = level,
          .name = dice.HostileName(),
          .contents = std::string(dice.Below(64), static_cast<char>(dice.Below(256))),
          .hasHeaderCrc = level >= 2};
}

void ChangeMember(RawMember& member, const ArchiveModel& model, Dice& dice) {
  constexpr const char* kMethods[] = {"-lh0-", "-lh1-", "-lh2-", "-lh3-", "-lh4-", "-lh5-", "-lh6-",
                                      "-lh7-", "-lhx-", "-lzs-", "-lz4-", "-lz5-", "-pm0-", "-pm1-",
                                      "-pm2-", "-lhd-", "-lh8-", "-lhs-", "-pms-", "-xyz-"};
  constexpr std::string_view kSystems("\0MUmK9Aa Hw", 11);
  const auto changeCrc = [&] {
    member.crc.reset();
    if (dice.OneIn(2)) member.crc = static_cast<std::uint16_t>(dice.Below(0x10000));
  };
  const auto changeName = [&] {
    member.name = dice.OneIn(4) ? dice.OneOf(model.members).name : dice.HostileName();
  };
  const auto changeExtra = [&] {
    if (dice.OneIn(2)) return dice.Disturb(member.extra);
    member.extra = "UK9"[dice.Below(3)] + Numbers(dice, 1, 11 + dice.Below(11));
  };
  const auto changeContents = [&] {
    if (dice.OneIn(2)) return dice.Disturb(member.contents);
    member.contents = dice.OneOf(model.members).contents;
  };
  const auto contentBytes = static_cast<std::uint32_t>(member.contents.size());
  dice.DoOneOf([&] { member.level = static_cast<int>(dice.Below(dice.OneIn(8) ? 6 : 4)); },
               [&] { member.method = dice.OneOf(kMethods); },
               [&] { member.packedError = dice.OneIn(2) ? 0 : dice.Number(0); },
               [&] { member.originalBytes = dice.Number(contentBytes); },
               [&] { member.time = dice.Number(member.time); },
               [&] { member.attribute = static_cast<std::uint8_t>(dice.Below(256)); },
               [&] { member.osId = dice.OneOf(kSystems); },
               [&] { member.hasHeaderCrc = !member.hasHeaderCrc; },
               [&] { member.sumError = dice.OneIn(3) ? 1 : 0; },
               [&] { ChangeExtensions(member.extensions, dice); },  //
               changeCrc, changeName, changeExtra, changeContents);
}

void ChangeFrame(ArchiveModel& model, Dice& dice) {
  static const Bytes kTails[] = {{}, {0}, {0, 0}, Bytes(200, 0x1A), {0, 'j', 'u', 'n', 'k'}};
  static const Bytes kPrefixes[] = {{},
                                    {'M', 'Z', 0x80, 0, 1, 0},
                                    Bytes(128),
                                    {0, 0, '-', 'l', 'h', 'd', '-'},
                                    {0x7F, 'E', 'L', 'F'}};
  const auto addSecondArchive = [&] { model.tail = test::Join({model.tail, PutTogether(model)}); };
  dice.DoOneOf([&] { model.tail = dice.OneOf(kTails); },
               [&] { model.prefix = dice.OneOf(kPrefixes); },
               [&] { dice.Disturb(dice.OneIn(2) ? model.tail : model.prefix); }, addSecondArchive);
}

}  // namespace

Bytes Mutate(std::span<const std::uint8_t> input, Dice& dice) {
  const std::size_t begin = PreambleBytes(input);
  Bytes mutated(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(begin));
  if (mutated.empty() || dice.OneIn(16)) dice.Disturb(mutated);
  if (mutated.empty() || mutated.back() != 0 || mutated.size() < 2) mutated.push_back(0);
  ArchiveModel model = TakeApart(input.subspan(begin));
  for (std::size_t i = dice.Below(4) + 1; i != 0; --i) {
    if (model.members.empty() || dice.OneIn(24)) {
      model.members.push_back(NewMember(dice));
    } else if (dice.OneIn(8)) {
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
  return test::Join({mutated, archive});
}

// Members of both, in their order.
Bytes CrossOver(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other,
                Dice& dice) {
  const std::size_t begin = PreambleBytes(one);
  ArchiveModel model = TakeApart(one.subspan(begin));
  const ArchiveModel added = TakeApart(other.subspan(PreambleBytes(other)));
  for (const RawMember& member : added.members) {
    if (!dice.OneIn(2) || model.members.size() >= kMostMembers) continue;
    const auto at = static_cast<std::ptrdiff_t>(dice.Below(model.members.size() + 1));
    model.members.insert(model.members.begin() + at, member);
  }
  if (dice.OneIn(4)) model.tail = added.tail;
  const auto preamble = one.first(begin);
  return test::Join({Bytes(preamble.begin(), preamble.end()), PutTogether(model)});
}

}  // namespace kozor::fuzz
