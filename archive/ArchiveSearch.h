// ArchiveSearch.h - searches an archive through the archiver's find calls: a single search, and the
// evaluation of a ZorFind.
#pragma once

#include <cstdint>

#include "ZorError.h"
#include "ZorFind.h"
#include "archive/Engine.h"
#include "platform/classlib/ClassLib.h"

// An archive that is open for searching as long as the object lives.  Uses `engine`, which must be
// ready and outlive it.
class ZorArchiveSearch {
 public:
  // `background` is the background mode of the object.  `scope` is kZorOpenThisDirectory or
  // kZorOpenSubDirectories for a search by mask; a search for one name needs none.
  ZorArchiveSearch(const ZorEngine& boundEngine, const char* archive, int background,
                   std::uint32_t scope = 0);
  ~ZorArchiveSearch();
  ZorArchiveSearch(const ZorArchiveSearch&) = delete;
  ZorArchiveSearch& operator=(const ZorArchiveSearch&) = delete;

  bool IsOpen() const { return handle != nullptr; }

  // Find the first and the next member; false if there is none.  The archive must be open.
  bool First(const char* text);
  bool Next();
  // Finds the member of exactly this name.
  bool Find(const char* name);

  // The member found last.
  const ZorMemberRecord& Member() const { return record; }
  // Its name, with '\' between directories.
  CString Name() const;
  // Its attributes, or -1 if the archiver doesn't know them.
  int Attribute() const { return engine.UnlhaGetAttribute(handle); }

 private:
  const ZorEngine& engine;
  void* handle;
  ZorMemberRecord record;
};

// Appends to `list` the names of the members that `find` selects: mask by mask, and within a mask
// in the archiver's order.  With more than one mask, later duplicates are dropped.  Names that
// exclusion masks found are removed.  Names are compared without case.  The base directory and the
// attribute filter are ignored.  `background` is the background mode of the calling object.
//
// ZorErrorEngineUnavailable and ZorErrorArchiveNotFound leave `list` alone; after
// ZorErrorArchiveOpen it holds what the masks before the failing one found.
ZorError ZorListArchiveMembers(const char* archive, const ZorFind& find, ZorFileList& list,
                               int background);
