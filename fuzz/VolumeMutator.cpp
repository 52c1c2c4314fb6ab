// VolumeMutator.cpp - changes sets of two backup volumes field by field, in both versions.
//
// Input: where the first volume ends (2 bytes), both volumes; see VolumeFuzz.cpp.
#include <algorithm>
#include <numeric>

#include "fuzz/Mutation.h"
#include "platform/base/ByteOrder.h"

namespace kozor::fuzz {
namespace {

// A piece of a set: a number, a text of fixed size, or a text whose size another field states.
struct Field {
  Bytes bytes;
  std::size_t sizeField = 0;  // counted back from this one; 0 for none
  std::uint32_t sizeUnit = 1;

  std::uint32_t Value() const {
    return static_cast<std::uint32_t>(
        std::accumulate(bytes.rbegin(), bytes.rend(), std::uint64_t{0},
                        [](std::uint64_t sum, std::uint8_t byte) { return sum << 8 | byte; }));
  }
  void SetValue(std::uint32_t value) { StoreLittle(bytes.data(), value, bytes.size()); }
};
using Fields = std::vector<Field>;

constexpr std::size_t kAreaSizes = 2;  // the first of three; then number and count of files
constexpr std::size_t kVolumeNumber = 5;
constexpr std::size_t kFileCount = 6;
constexpr std::size_t kRecordFields = 6;

struct Set {
  Fields first;
  Fields second;
  Fields stream;  // records of both volumes, and what follows them
  std::size_t cut = 0;
};

Bytes Take(std::span<const std::uint8_t>& left, std::size_t count) {
  const auto taken = left.first(std::min(count, left.size()));
  left = left.subspan(taken.size());
  return {taken.begin(), taken.end()};
}

bool IsOld(const Fields& volume) {
  constexpr std::size_t kDigit = 32;  // the last of "Version 1.00"
  return volume[0].bytes.size() > kDigit && volume[0].bytes[kDigit] == '0';
}

Fields TakeVolume(std::span<const std::uint8_t>& left) {
  Fields volume = {{Take(left, 64)}, {Take(left, 32)}};
  const std::size_t width = IsOld(volume) ? 2 : 4;
  for (std::size_t i = 0; i < 4; ++i) volume.push_back({Take(left, width)});
  volume.push_back({Take(left, 4)});
  for (std::size_t area = 0; area < 3; ++area) {
    volume.push_back({Take(left, volume[kAreaSizes + area].Value()), 5});
  }
  return volume;
}

void TakeRecord(std::span<const std::uint8_t>& left, Fields& stream) {
  for (const std::size_t width : {2U, 4U, 4U, 2U}) stream.push_back({Take(left, width)});
  const std::uint32_t dataBytes = stream.end()[-2].Value();
  const std::uint32_t nameWord = stream.back().Value();
  const std::size_t width = nameWord % 2 + 1;
  stream.push_back({Take(left, (nameWord / 2 + 1) * width), 1, 2});
  stream.push_back({Take(left, dataBytes), 3});
}

Set TakeApart(std::span<const std::uint8_t> input) {
  Set set;
  const std::size_t cut = Field{Take(input, 2)}.Value();
  auto one = input.first(std::min(cut, input.size()));
  auto two = input.subspan(one.size());
  set.first = TakeVolume(one);
  set.second = TakeVolume(two);
  set.cut = one.size();
  Bytes stream(one.begin(), one.end());
  stream.insert(stream.end(), two.begin(), two.end());
  std::span<const std::uint8_t> left = stream;
  while (left.size() > 12 && set.stream.size() < 40 * kRecordFields) TakeRecord(left, set.stream);
  set.stream.push_back({Take(left, left.size())});
  return set;
}

Bytes Joined(const Fields& fields) {
  Bytes bytes;
  for (const Field& field : fields) {
    bytes.insert(bytes.end(), field.bytes.begin(), field.bytes.end());
  }
  return bytes;
}

Bytes PutTogether(const Set& set) {
  const Bytes stream = Joined(set.stream);
  const auto cut = stream.begin() + static_cast<std::ptrdiff_t>(std::min(set.cut, stream.size()));
  Bytes bytes = Joined(set.first);
  bytes.insert(bytes.end(), stream.begin(), cut);
  const std::size_t first = bytes.size();
  bytes.insert(bytes.begin(),
               {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(first >> 8)});
  const Bytes second = Joined(set.second);
  bytes.insert(bytes.end(), second.begin(), second.end());
  bytes.insert(bytes.end(), cut, stream.end());
  return bytes;
}

// Sometimes the stated size isn't corrected.
void ChangeText(Field& field, Dice& dice) {
  const std::size_t before = field.bytes.size();
  if (dice.OneIn(3)) {
    const std::string name = dice.HostileName() + '\0';
    field.bytes.assign(name.begin(), name.end());
  } else {
    dice.Disturb(field.bytes);
  }
  if (field.sizeField == 0) return field.bytes.resize(before);
  if (dice.OneIn(6)) return;
  Field& size = (&field)[-static_cast<std::ptrdiff_t>(field.sizeField)];
  size.SetValue(size.Value() +
                static_cast<std::uint32_t>(field.bytes.size() - before) * field.sizeUnit);
}

void ChangeField(Fields& fields, Dice& dice) {
  Field& field = fields[dice.Below(fields.size())];
  const bool isNumber = field.sizeField == 0 && field.bytes.size() <= 4;
  if (!isNumber) return ChangeText(field, dice);
  field.SetValue(dice.OneIn(3) ? field.Value() ^ 1 : dice.Number(field.Value()));
}

void ChangeVersion(Fields& volume) {
  const std::size_t width = IsOld(volume) ? 4 : 2;
  for (std::size_t i = kAreaSizes; i <= kVolumeNumber; ++i) volume[i].bytes.resize(width);
  if (volume[0].bytes.size() > 32) volume[0].bytes[32] = width == 2 ? '0' : '1';
}

// Adds, doubles or removes a record, and usually states how many there are.
void ChangeRecords(Set& set, Dice& dice) {
  const std::size_t records = set.stream.size() / kRecordFields;
  const auto at =
      set.stream.begin() +
      static_cast<std::ptrdiff_t>(kRecordFields * dice.Below(std::max<std::size_t>(records, 1)));
  Fields record;
  if (records == 0 || dice.OneIn(2)) {
    Bytes made = {0x20, 0, 0, 0x3B, 0x3D, 0x4B, 200, 0, 0, 0, 2, 0, 'a', 0};
    made.resize(made.size() + 200, static_cast<std::uint8_t>(dice.Below(256)));
    std::span<const std::uint8_t> left = made;
    TakeRecord(left, record);
  } else {
    record.assign(at, at + kRecordFields);
  }
  if (records != 0 && dice.OneIn(2)) {
    set.stream.erase(at, at + kRecordFields);
  } else {
    set.stream.insert(at, record.begin(), record.end());
  }
  if (!dice.OneIn(6)) {
    set.first[kFileCount].SetValue(static_cast<std::uint32_t>(set.stream.size() / kRecordFields));
  }
}

}  // namespace

Bytes Mutate(std::span<const std::uint8_t> input, Dice& dice) {
  Set set = TakeApart(input);
  const auto changeCut = [&] {
    set.cut = dice.OneIn(2) ? dice.Below(2000) : dice.Number(static_cast<std::uint32_t>(set.cut));
  };
  const auto changeStream = [&] { ChangeField(set.stream, dice); };
  for (std::size_t i = dice.Below(4) + 1; i != 0; --i) {
    Fields& volume = dice.OneIn(2) ? set.first : set.second;
    dice.DoOneOf([&] { ChangeRecords(set, dice); }, [&] { ChangeField(volume, dice); },
                 [&] { dice.OneIn(4) ? ChangeVersion(volume) : ChangeField(volume, dice); },
                 changeCut, changeStream, changeStream, changeStream, changeStream);
  }
  Bytes mutated = PutTogether(set);
  if (dice.OneIn(12)) dice.Disturb(mutated);
  return mutated;
}

Bytes CrossOver(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other,
                Dice& dice) {
  Set set = TakeApart(one);
  const Set added = TakeApart(other);
  set.stream.pop_back();
  set.stream.insert(set.stream.end(), added.stream.begin(), added.stream.end());
  set.first[kFileCount].SetValue(static_cast<std::uint32_t>(set.stream.size() / kRecordFields));
  if (dice.OneIn(2)) set.second = added.second;
  return PutTogether(set);
}

}  // namespace kozor::fuzz
