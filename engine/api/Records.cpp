// Records.cpp - see Records.h.
#include "engine/api/Records.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "engine/container/MemberName.h"

namespace kozor::api {
namespace {

constexpr std::uint32_t kMaxSize = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMaxProgressName = 512;

// Truncates a long name after a whole character and fills the rest of the field with zeros.
void PutName(std::string_view name, char* field, std::size_t limit, std::size_t fieldBytes) {
  const std::string_view shown = container::CutName(name, limit, GetACP());
  std::copy(shown.begin(), shown.end(), field);
  std::fill(field + shown.size(), field + fieldBytes, '\0');
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
  // Callers reserve that many bytes.  A damaged member delivers none.
  const std::uint64_t size = member.fault ? 0 : member.originalBytes;
  record.size = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kMaxSize));
  const DosTime time = member.lastWrite.Local();
  record.date = time.date;
  record.time = time.time;
  PutName(member.name, record.name, sizeof(record.name) - 1, sizeof(record.name));
}

bool TellCallback(UnlhaCallback callback, const commands::ProgressEvent& event) {
  // Only rewriting an archive can exceed 32 bits; it is then reported in larger units.
  int shift = 0;
  while (event.size >> shift > kMaxSize) ++shift;
  UnlhaProgressRecord record{};
  record.size = static_cast<std::uint32_t>(event.size >> shift);
  record.done = static_cast<std::uint32_t>(std::min(event.done >> shift, event.size >> shift));
  PutName(event.name, record.name, kMaxProgressName, sizeof(record.name));
  return callback(nullptr, 0, StateNumber(event.state), &record) != 0;
}

}  // namespace kozor::api
