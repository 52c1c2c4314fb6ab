// VolumeMutator.cpp - changes sets of two backup volumes field by field, in both versions.
//
// Input: where the first volume ends (2 bytes), both volumes; see VolumeFuzz.cpp.
#include <algorithm>
#include <array>
#include <string>

#include "fuzz/Mutation.h"
#include "platform/base/ByteOrder.h"

namespace kozor::fuzz {
namespace {

struct Record {
  std::uint8_t attribute = 0x20;
  std::uint32_t time = 0x4B3D3B00;
  std::uint32_t dataLie = 0;  // claimed minus true number of bytes
  std::uint32_t nameWordLie = 0;
  bool isWide = false;
  std::string name = "a.txt";
  Bytes data = {};
};

struct Volume {
  bool isOld = false;  // version 1.00
  std::string identification = "Morlig Filer Library Version 1.01";
  std::string digits = "0123456789";
  std::array<std::string, 3> areas = {};
  std::array<std::uint32_t, 3> areaLies = {};
  std::uint32_t number = 1;
  std::uint32_t files = 1;
};

struct Set {
  Volume first;
  Volume second;
  std::vector<Record> records = {};
  Bytes rest = {};      // of the stream, if it isn't a record
  std::size_t cut = 0;  // of the stream: what the first volume takes
};

// Takes numbers and texts from the front; zeros after the end.
class Cursor {
 public:
  explicit Cursor(std::span<const std::uint8_t> bytes) : left(bytes) {}
  std::uint32_t Take(std::size_t width) {
    std::uint32_t value = 0;
    const Bytes bytes = Run(width);
    for (std::size_t i = 0; i < bytes.size(); ++i) value |= std::uint32_t{bytes[i]} << (8 * i);
    return value;
  }
  Bytes Run(std::size_t count) {
    const auto taken = left.first(std::min(count, left.size()));
    left = left.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }
  std::string Text(std::size_t count) {
    const Bytes bytes = Run(count);
    return {bytes.begin(), bytes.end()};
  }
  std::size_t Left() const { return left.size(); }

 private:
  std::span<const std::uint8_t> left;
};

void Append(Bytes& bytes, std::uint32_t value, std::size_t width) {
  bytes.resize(bytes.size() + width);
  StoreLittle(bytes.data() + bytes.size() - width, value, width);
}

void AppendText(Bytes& bytes, std::string_view text, std::size_t width) {
  bytes.insert(bytes.end(), text.begin(),
               text.begin() + static_cast<std::ptrdiff_t>(std::min(text.size(), width)));
  bytes.resize(bytes.size() + width - std::min(text.size(), width));
}

Volume TakeVolume(Cursor& cursor) {
  Volume volume;
  volume.identification = cursor.Text(64);
  volume.isOld = volume.identification.starts_with("Morlig Filer Library Version 1.00");
  volume.identification.resize(volume.identification.find_last_not_of('\0') + 1);
  volume.digits = cursor.Text(32);
  volume.digits.resize(volume.digits.find_last_not_of('\0') + 1);
  const std::size_t width = volume.isOld ? 2 : 4;
  std::array<std::uint32_t, 3> lengths{};
  for (std::uint32_t& length : lengths) length = cursor.Take(width);
  volume.number = cursor.Take(width);
  volume.files = cursor.Take(4);
  for (std::size_t i = 0; i < 3; ++i) {
    volume.areas[i] = cursor.Text(lengths[i]);
    volume.areaLies[i] = lengths[i] - static_cast<std::uint32_t>(volume.areas[i].size());
  }
  return volume;
}

Set TakeApart(std::span<const std::uint8_t> input) {
  Set set;
  Cursor all(input);
  const std::size_t cut = all.Take(2);
  const Bytes volumes[] = {all.Run(cut), all.Run(all.Left())};
  Cursor one(volumes[0]);
  Cursor two(volumes[1]);
  set.first = TakeVolume(one);
  set.second = TakeVolume(two);
  set.cut = one.Left();
  Bytes stream = one.Run(one.Left());
  const Bytes more = two.Run(two.Left());
  stream.insert(stream.end(), more.begin(), more.end());
  Cursor left(stream);
  while (left.Left() > 12 && set.records.size() < 40) {
    Record record;
    record.attribute = static_cast<std::uint8_t>(left.Take(2));
    record.time = left.Take(4);
    const std::uint32_t claimed = left.Take(4);
    const std::uint32_t word = left.Take(2);
    record.isWide = word % 2 != 0;
    record.name = left.Text((word / 2 + 1) * (record.isWide ? 2 : 1));
    const std::size_t end = record.isWide ? 2 : 1;
    record.name.resize(record.name.size() - std::min(end, record.name.size()));
    record.data = left.Run(claimed);
    record.dataLie = claimed - static_cast<std::uint32_t>(record.data.size());
    set.records.push_back(std::move(record));
  }
  set.rest = left.Run(left.Left());
  return set;
}

void AppendVolume(Bytes& bytes, const Volume& volume) {
  const std::size_t width = volume.isOld ? 2 : 4;
  AppendText(bytes, volume.identification, 64);
  AppendText(bytes, volume.digits, 32);
  for (std::size_t i = 0; i < 3; ++i) {
    Append(bytes, static_cast<std::uint32_t>(volume.areas[i].size()) + volume.areaLies[i], width);
  }
  Append(bytes, volume.number, width);
  Append(bytes, volume.files, 4);
  for (const std::string& area : volume.areas) AppendText(bytes, area, area.size());
}

Bytes PutTogether(const Set& set) {
  Bytes stream;
  for (const Record& record : set.records) {
    const std::size_t width = record.isWide ? 2 : 1;
    const auto length = static_cast<std::uint32_t>(record.name.size() / width);
    Append(stream, record.attribute, 2);
    Append(stream, record.time, 4);
    Append(stream, static_cast<std::uint32_t>(record.data.size()) + record.dataLie, 4);
    Append(stream, length * 2 + (record.isWide ? 1 : 0) + record.nameWordLie, 2);
    AppendText(stream, record.name, length * width);
    Append(stream, 0, width);
    stream.insert(stream.end(), record.data.begin(), record.data.end());
  }
  stream.insert(stream.end(), set.rest.begin(), set.rest.end());
  const auto cut = stream.begin() + static_cast<std::ptrdiff_t>(std::min(set.cut, stream.size()));
  Bytes first;
  AppendVolume(first, set.first);
  first.insert(first.end(), stream.begin(), cut);
  Bytes bytes(first.size() + 2);
  StoreLittle(bytes.data(), first.size(), 2);
  std::ranges::copy(first, bytes.begin() + 2);
  AppendVolume(bytes, set.second);
  bytes.insert(bytes.end(), cut, stream.end());
  return bytes;
}

void ChangeVolume(Volume& volume, Dice& dice) {
  const std::size_t area = dice.Below(3);
  switch (dice.Below(7)) {
    case 0:
      volume.isOld = !volume.isOld;
      volume.identification.assign("Morlig Filer Library Version 1.0")
          .append(volume.isOld ? "0" : "1");
      break;
    case 1:
      dice.Disturb(dice.OneIn(2) ? volume.identification : volume.digits);
      break;
    case 2:
      volume.areaLies[area] = dice.OneIn(2) ? 0 : dice.Number(0);
      break;
    case 3:
      dice.Disturb(volume.areas[area]);
      break;
    case 4:
      volume.number = dice.OneIn(2) ? static_cast<std::uint32_t>(dice.Below(3)) : dice.Number(1);
      break;
    default:
      volume.files = dice.Number(volume.files);
  }
}

void ChangeRecord(Record& record, Dice& dice) {
  static const std::string kNames[] = {"a.txt",
                                       "..\\..\\x",
                                       "C:\\x",
                                       "\\x",
                                       "/x",
                                       "",
                                       "sub\\b.c",
                                       "CON",
                                       "a:b",
                                       "a?b",
                                       ".",
                                       "..",
                                       "\x95\x5C",
                                       std::string("a\0b", 3),
                                       std::string(523, 'n'),
                                       std::string(524, 'n'),
                                       std::string("a\0\0\xD8", 4)};
  switch (dice.Below(8)) {
    case 0:
      record.attribute = static_cast<std::uint8_t>(dice.Below(256));
      break;
    case 1:
      record.time = dice.Number(record.time);
      break;
    case 2:
      record.dataLie = dice.OneIn(2) ? 0 : dice.Number(0);
      break;
    case 3:
      record.nameWordLie = dice.OneIn(2) ? 0 : dice.Number(0);
      break;
    case 4:
      record.isWide = !record.isWide;
      break;
    case 5:
      dice.Disturb(record.name);
      break;
    case 6:
      record.name = dice.OneOf(kNames);
      break;
    default:
      dice.Disturb(record.data);
  }
}

void ChangeSet(Set& set, Dice& dice) {
  if (set.records.empty() || dice.OneIn(8)) {
    set.records.push_back(
        {.data = Bytes(dice.Below(300), static_cast<std::uint8_t>(dice.Below(256)))});
    set.first.files = static_cast<std::uint32_t>(set.records.size());
    return;
  }
  const std::size_t chosen = dice.Below(set.records.size());
  switch (dice.Below(8)) {
    case 0:
      set.records.erase(set.records.begin() + static_cast<std::ptrdiff_t>(chosen));
      break;
    case 1:
      set.cut = dice.OneIn(2) ? dice.Below(2000) : dice.Number(static_cast<std::uint32_t>(set.cut));
      break;
    case 2:
      dice.Disturb(set.rest);
      break;
    case 3:
    case 4:
      ChangeVolume(dice.OneIn(2) ? set.first : set.second, dice);
      break;
    default:
      ChangeRecord(set.records[chosen], dice);
  }
}

}  // namespace

Bytes Mutate(std::span<const std::uint8_t> input, Dice& dice) {
  Set set = TakeApart(input);
  for (std::size_t i = dice.Below(4) + 1; i != 0; --i) ChangeSet(set, dice);
  Bytes mutated = PutTogether(set);
  if (dice.OneIn(12)) dice.Disturb(mutated);
  return mutated;
}

Bytes CrossOver(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other,
                Dice& dice) {
  Set set = TakeApart(one);
  const Set added = TakeApart(other);
  set.records.insert(set.records.end(), added.records.begin(), added.records.end());
  set.first.files += static_cast<std::uint32_t>(added.records.size());
  if (dice.OneIn(2)) set.second = added.second;
  return PutTogether(set);
}

}  // namespace kozor::fuzz
