// Records.cpp - see Records.h.
#include "engine/api/Records.h"

#include <algorithm>
#include <limits>
#include <string>

#include "engine/container/Text.h"

namespace kozor::api {
namespace {

constexpr std::uint32_t kMaxSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMaxProgressName = 512;

// The longest beginning of whole characters that has at most `limit` bytes.
std::size_t WholeCharacters(const std::string& text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  if (GetACP() == container::kUtf8) {
    while (limit > 0 && (text[limit] & 0xC0) == 0x80) --limit;
    return limit;
  }
  std::size_t length = 0;
  for (;;) {
    const char* next = CharNextA(text.c_str() + length);
    const auto end = static_cast<std::size_t>(next - text.c_str());
    if (end > limit) return length;
    length = end;
  }
}

// Cuts a name that is too long behind a whole character; the rest of the field is zero.
void PutName(const std::string& name, char* field, std::size_t limit, std::size_t fieldBytes) {
  const std::size_t length = WholeCharacters(name, limit);
  std::copy_n(name.data(), length, field);
  std::fill(field + length, field + fieldBytes, '\0');
}

UINT StateNumber(commands::ProgressEvent::State state) {
  switch (state) {
    case commands::ProgressEvent::State::FileBegins:
      return 0;
    case commands::ProgressEvent::State::UnderWay:
      return 1;
    case commands::ProgressEvent::State::FileEnds:
      break;
  }
  return 6;
}

}  // namespace

void FillMemberRecord(const container::Member& member, UnlhaMemberRecord& record) {
  record = {};
  record.size = static_cast<std::uint32_t>(std::min<std::uint64_t>(member.originalBytes, kMaxSize));
  record.date = member.localTime.date;
  record.time = member.localTime.time;
  PutName(member.name, record.name, sizeof(record.name) - 1, sizeof(record.name));
}

bool TellCallback(UnlhaCallback callback, const commands::ProgressEvent& event) {
  // Only a rewrite counts 4 GiB and more; it is told in larger units then.
  int shift = 0;
  while (event.size >> shift > kMaxSize) ++shift;
  UnlhaProgressRecord record{};
  record.size = static_cast<std::uint32_t>(event.size >> shift);
  record.done = static_cast<std::uint32_t>(std::min(event.done >> shift, event.size >> shift));
  PutName(std::string(event.name), record.name, kMaxProgressName, sizeof(record.name));
  return callback(nullptr, 0, StateNumber(event.state), &record) != 0;
}

}  // namespace kozor::api
