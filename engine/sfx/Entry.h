// Entry.h - a member of the archive as the program shows it and puts it on disk.
#pragma once

#include <cstdint>
#include <string>

#include "engine/container/MemberHeader.h"

namespace kozor::sfx {

struct Entry {
  // UTF-8, '/' between components, in front of a rooted name and at the end of a directory's.
  std::string name;
  bool isDirectory = false;
  bool isLink = false;
  bool isReadOnly = false;
  bool strays = false;     // the name in the archive holds a drive letter or ".."
  std::uint64_t time = 0;  // last write, 100 ns since 1601 in UTC

  bool IsRooted() const { return name.starts_with('/'); }
};

// DOS times, which are all that level 0 and 1 headers of some writers have, count as UTC: what the
// writer's clock showed is what the file gets.
Entry DescribeEntry(const container::MemberHeader& header);

// "2024-12-31 23:59:59", in UTC.
std::string TimeText(std::uint64_t fileTime);

}  // namespace kozor::sfx
