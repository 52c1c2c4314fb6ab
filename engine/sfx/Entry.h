// Entry.h - a member of the archive as the program shows and extracts it.
#pragma once

#include <cstdint>
#include <string>

#include "engine/container/MemberHeader.h"

namespace kozor::sfx {

struct Entry {
  // UTF-8, with '/' between components, before a rooted name and after a directory's.
  std::string name;
  bool isDirectory = false;
  bool isLink = false;
  bool isReadOnly = false;
  bool strays = false;     // its name in the archive has a drive letter or ".."
  std::uint64_t time = 0;  // last write, 100 ns since 1601 in UTC

  bool IsRooted() const { return name.starts_with('/'); }
};

// DOS times, the only ones in level 0 and 1 headers of some writers, count as UTC, so the file gets
// the time that the writer's clock showed.
Entry DescribeEntry(const container::MemberHeader& header);

// "2024-12-31 23:59:59", in UTC.
std::string TimeText(std::uint64_t fileTime);

}  // namespace kozor::sfx
