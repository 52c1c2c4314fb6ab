// MemberListing.cpp - selects members of an archive as ZorFind selects files on a disk.
//
// The archiver decides how a search text matches; what masks, their order and exclusion mean is
// decided here.  Duplicates and exclusions are found through sets of names, in near linear time.
#include "archive/MemberListing.h"

#include "archive/ArchiveSearch.h"
#include "archive/Engine.h"
#include "files/NameSet.h"
#include "files/Path.h"

namespace {

// The text to search for: the mask without its root, "*.*" in the place of a missing file mask.
CString SearchText(const char* mask) {
  const char* directory = nullptr;
  const char* fileName = nullptr;
  ZorSplitPath(mask, nullptr, &directory, &fileName);
  if (fileName == nullptr) return CString(directory) + "*.*";
  return CString(directory != nullptr ? directory : fileName);
}

}  // namespace

ZorError ZorListArchiveMembers(const char* archive, const ZorFind& find, ZorFileList& list,
                               int background) {
  const ZorEngine engine;  // loaded a second time: the interface wants a listing to stand alone
  if (!engine.IsReady()) return ZorErrorEngineUnavailable;
  CFileStatus status;
  if (!CFile::GetStatus(archive, status)) return ZorErrorArchiveNotFound;

  const std::uint32_t scope =
      find.GetSubDirectory() != 0 ? kZorOpenSubDirectories : kZorOpenThisDirectory;
  ZorFileList excluded;
  for (const CString& mask : find) {
    const char* text = mask;
    const bool excludes = *text == '>';
    if (excludes) ++text;
    ZorArchiveSearch search(engine, archive, background, scope);
    if (!search.IsOpen()) return ZorErrorArchiveOpen;
    ZorFileList& found = excludes ? excluded : list;
    for (bool more = search.First(SearchText(text)); more; more = search.Next()) {
      found.AddTail(search.Name());
    }
  }
  if (find.GetCount() > 1) ZorRemoveDuplicates(list, CString());
  ZorRemoveExcluded(list, excluded, CString());
  return ZorErrorNone;
}
