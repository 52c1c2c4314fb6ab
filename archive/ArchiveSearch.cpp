// ArchiveSearch.cpp - opens an archive, searches it and closes it.
//
// The archiver matches a search text; masks, their order and exclusion are evaluated here.
#include "archive/ArchiveSearch.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "files/NameSet.h"
#include "files/Path.h"

namespace {

constexpr int kFound = 0;

// The text to search for: the mask without its root, with "*.*" for a missing file mask.
CString SearchText(const char* mask) {
  const char* directory = nullptr;
  const char* fileName = nullptr;
  ZorSplitPath(mask, nullptr, &directory, &fileName);
  if (fileName == nullptr) return CString(directory) + "*.*";
  return CString(directory != nullptr ? directory : fileName);
}

}  // namespace

ZorArchiveSearch::ZorArchiveSearch(const ZorEngine& boundEngine, const char* archive,
                                   int background, std::uint32_t scope)
    : engine(boundEngine), handle(nullptr), record{} {
  const std::uint32_t front = background == 0 ? kZorOpenNotBackground : 0;
  handle = engine.UnlhaOpenArchive(nullptr, archive, kZorOpenMode | front | scope);
}

ZorArchiveSearch::~ZorArchiveSearch() {
  if (IsOpen()) engine.UnlhaCloseArchive(handle);
}

bool ZorArchiveSearch::First(const char* text) {
  return engine.UnlhaFindFirst(handle, text, &record) == kFound;
}

bool ZorArchiveSearch::Next() {
  return engine.UnlhaFindNext(handle, &record) == kFound;
}

bool ZorArchiveSearch::Find(const char* name) {
  const std::string text = '"' + std::string(name) + '"';
  return First(text.c_str());
}

CString ZorArchiveSearch::Name() const {
  // Stop at the end of the field: the archiver may have left out the terminator.
  const char* end = std::find(std::begin(record.name), std::end(record.name), '\0');
  std::string name(record.name, end);
  std::replace(name.begin(), name.end(), '/', '\\');
  return CString(name.c_str());
}

ZorError ZorListArchiveMembers(const char* archive, const ZorFind& find, ZorFileList& list,
                               int background) {
  const ZorEngine engine;  // fixed by the interface: a listing loads the archiver again
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
