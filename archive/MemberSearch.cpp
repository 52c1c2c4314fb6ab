// MemberSearch.cpp - opens an archive, searches it and closes it.
#include "archive/MemberSearch.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace {

constexpr int kFound = 0;

}  // namespace

ZorMemberSearch::ZorMemberSearch(const ZorEngine& boundEngine, const char* archive, int background,
                                 std::uint32_t scope)
    : engine(boundEngine), handle(nullptr), record{} {
  const std::uint32_t front = background == 0 ? kZorOpenNotBackground : 0;
  handle = engine.UnlhaOpenArchive(nullptr, archive, kZorOpenMode | front | scope);
}

ZorMemberSearch::~ZorMemberSearch() {
  if (IsOpen()) engine.UnlhaCloseArchive(handle);
}

bool ZorMemberSearch::First(const char* text) {
  return engine.UnlhaFindFirst(handle, text, &record) == kFound;
}

bool ZorMemberSearch::Next() {
  return engine.UnlhaFindNext(handle, &record) == kFound;
}

bool ZorMemberSearch::Find(const char* name) {
  const std::string text = '"' + std::string(name) + '"';
  return First(text.c_str());
}

CString ZorMemberSearch::Name() const {
  // The text ends within the record, whatever the archiver put there.
  const char* end = std::find(std::begin(record.name), std::end(record.name), '\0');
  std::string name(record.name, end);
  std::replace(name.begin(), name.end(), '/', '\\');
  return CString(name.c_str());
}
