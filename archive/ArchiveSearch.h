// ArchiveSearch.h - one search through an archive, by the archiver's find calls.
#pragma once

#include <cstdint>

#include "archive/Engine.h"
#include "platform/classlib/ClassLib.h"

// An archive that is open for searching as long as the object lives.  Uses `engine`, which must be
// ready and outlive it.
class ZorArchiveSearch {
 public:
  // `background` is the background mode of the object.  `scope` says where masks are looked for,
  // kZorOpenThisDirectory or kZorOpenSubDirectories; a search for one name needs none.
  ZorArchiveSearch(const ZorEngine& boundEngine, const char* archive, int background,
                   std::uint32_t scope = 0);
  ~ZorArchiveSearch();
  ZorArchiveSearch(const ZorArchiveSearch&) = delete;
  ZorArchiveSearch& operator=(const ZorArchiveSearch&) = delete;

  bool IsOpen() const { return handle != nullptr; }

  // Find the first and the next member; false when there is none.  Only while open.
  bool First(const char* text);
  bool Next();
  // The member of exactly this name.
  bool Find(const char* name);

  // The member found last.
  const ZorMemberRecord& Member() const { return record; }
  // Its name, '\' between directories.
  CString Name() const;
  // Its attributes, or -1 when the archiver can't tell them.
  int Attribute() const { return engine.UnlhaGetAttribute(handle); }

 private:
  const ZorEngine& engine;
  void* handle;
  ZorMemberRecord record;
};
