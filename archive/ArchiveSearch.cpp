// ArchiveSearch.cpp - opens an archive, searches it and closes it.
#include "archive/ArchiveSearch.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace {

constexpr int kFound = 0;

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
  // The text ends within the record, whatever the archiver put there.
  const char* end = std::find(std::begin(record.name), std::end(record.name), '\0');
  std::string name(record.name, end);
  std::replace(name.begin(), name.end(), '/', '\\');
  return CString(name.c_str());
}
