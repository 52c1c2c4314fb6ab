// FillRecords.h - the part that WIN32_FIND_DATAA and its kin have in common.
#pragma once

#include "platform/win32/posix/FileFacts.h"

namespace kozor::posix {

// Directories have no size.
template <typename Record>
void FillFacts(Record& record, const FileFacts& facts, DWORD attributes) {
  const std::uint64_t size = facts.IsDirectory() || facts.dangling ? 0 : facts.size;
  record.dwFileAttributes = attributes;
  record.ftCreationTime = ToFileTime(facts.created);
  record.ftLastAccessTime = ToFileTime(facts.accessed);
  record.ftLastWriteTime = ToFileTime(facts.written);
  record.nFileSizeHigh = static_cast<DWORD>(size >> 32);
  record.nFileSizeLow = static_cast<DWORD>(size);
}

}  // namespace kozor::posix
