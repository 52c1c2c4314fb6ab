// MemberListing.h - what a ZorFind means inside an archive.
#pragma once

#include "ZorError.h"
#include "ZorFind.h"

// Appends to `list` the names of the members that `find` selects: mask by mask, and within a mask
// in the archiver's order.  With more than one mask later duplicates are dropped; so is what
// exclusion masks found.  Names are compared without case.  The base directory and the attribute
// filter are ignored.  `background` is the background mode of the calling object.
//
// ZorErrorEngineUnavailable and ZorErrorArchiveNotFound leave `list` alone; after
// ZorErrorArchiveOpen it holds what the masks before the failing one found.
ZorError ZorListArchiveMembers(const char* archive, const ZorFind& find, ZorFileList& list,
                               int background);
