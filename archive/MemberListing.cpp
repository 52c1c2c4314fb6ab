// MemberListing.cpp - selects members of an archive as ZorFind selects files on a disk.
//
// How a search text matches is the archiver's affair; what masks, their order and exclusion mean is
// decided here.  Duplicates and exclusions go by sets of names, so the cost is near linear.
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

// Takes out of `list` whatever `unwanted` says of.
template <typename Unwanted>
void RemoveNames(ZorFileList& list, Unwanted unwanted) {
  for (POSITION next = list.GetHeadPosition(); next != nullptr;) {
    POSITION position = next;
    if (unwanted(list.GetNext(next))) list.RemoveAt(position);
  }
}

void RemoveDuplicates(ZorFileList& list) {
  ZorNameSet seen;
  RemoveNames(list, [&](const CString& name) { return !seen.Add(name); });
}

void RemoveExcluded(ZorFileList& list, const ZorFileList& excluded) {
  if (excluded.IsEmpty()) return;
  ZorNameSet names;
  for (const CString& name : excluded) names.Add(name);
  RemoveNames(list, [&](const CString& name) { return names.Contains(name); });
}

}  // namespace

ZorError ZorListArchiveMembers(const char* archive, const ZorFind& find, ZorFileList& list,
                               int background) {
  const ZorEngine engine;
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
  if (find.GetCount() > 1) RemoveDuplicates(list);
  RemoveExcluded(list, excluded);
  return ZorErrorNone;
}
