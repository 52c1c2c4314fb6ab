// Entry.cpp - see Entry.h.
#include "engine/sfx/Entry.h"

#include <algorithm>
#include <chrono>

#include "engine/container/MemberName.h"
#include "engine/container/Text.h"
#include "engine/sfx/Console.h"
#include "platform/base/Clock.h"

namespace kozor::sfx {
namespace {

using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

constexpr std::int64_t kLastShownSecond = 253'402'300'799;  // 9999-12-31 23:59:59

}  // namespace

Entry DescribeEntry(const container::MemberHeader& header) {
  Entry entry;
  entry.isDirectory = header.IsDirectoryMethod();
  entry.isLink = header.IsLink();
  entry.isReadOnly = header.IsReadOnly();
  container::ShownName shown =
      container::DecodeName(header.name, entry.isDirectory, container::kUtf8);
  entry.strays = shown.strayed;
  entry.name = std::move(shown.text);
  std::replace(entry.name.begin(), entry.name.end(), '\\', '/');
  const DosTime dos{header.dosDate, header.dosTime};
  entry.time = header.utcTime != 0 ? header.utcTime
                                   : FileTimeOfDosAsUtc(dos.IsValid() ? dos : kFirstDosTime);
  return entry;
}

std::string TimeText(std::uint64_t fileTime) {
  const sys_seconds moment{seconds(std::min(UnixOfFileTime(fileTime), kLastShownSecond))};
  const sys_days day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(day);
  const auto second = static_cast<unsigned>((moment - day).count());
  const auto two = [](unsigned number) { return Decimal(number, 2, '0'); };
  return Join({Decimal(static_cast<unsigned>(static_cast<int>(date.year())), 4, '0'), "-",
               two(static_cast<unsigned>(date.month())), "-",
               two(static_cast<unsigned>(date.day())), " ", two(second / 3600), ":",
               two(second / 60 % 60), ":", two(second % 60)});
}

}  // namespace kozor::sfx
