// GetFileInfo.cpp - ZorArchive::GetFileInfo: looks up one member.
//
// It reports no progress, so it doesn't need the frame of the other operations.
#include "ZorArchive.h"
#include "archive/ArchiveSearch.h"
#include "archive/Engine.h"
#include "files/Failure.h"
#include "files/Path.h"

namespace {

// A member's time is local.  The results of the conversions are ignored.
void StoreTime(const ZorMemberRecord& member, FILETIME* time) {
  FILETIME local{};
  DosDateTimeToFileTime(member.date, member.time, &local);
  LocalFileTimeToFileTime(&local, time);
}

// The archiver's attribute bits as FILE_ATTRIBUTE_* bits.
unsigned long FileAttribute(int memberAttribute) {
  constexpr unsigned int kKnown = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                  FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY |
                                  FILE_ATTRIBUTE_ARCHIVE;
  const unsigned int known = static_cast<unsigned int>(memberAttribute) & kKnown;
  return known != 0 ? known : static_cast<unsigned int>(FILE_ATTRIBUTE_NORMAL);
}

void LookUp(const char* archive, const char* name, int background, unsigned long* size,
            FILETIME* time, unsigned long* attribute) {
  const ZorEngine engine;
  CFileStatus status;
  if (!CFile::GetStatus(archive, status)) throw ZorFailure{ZorErrorArchiveNotFound};
  if (!engine.IsReady()) throw ZorFailure{ZorErrorEngineUnavailable};
  if (engine.UnlhaGetRunning() != 0) throw ZorFailure{ZorErrorEngineBusy};
  engine.UnlhaSetCursorMode(0);

  ZorArchiveSearch search(engine, archive, background);
  if (!search.IsOpen() || !search.Find(name)) throw ZorFailure{ZorErrorArchiveOpen};
  if (size != nullptr) *size = search.Member().size;
  if (time != nullptr) StoreTime(search.Member(), time);
  if (attribute != nullptr) {
    const int bits = search.Attribute();
    if (bits != -1) *attribute = FileAttribute(bits);
  }
}

}  // namespace

int ZorArchive::GetFileInfo(const char* archive, const char* name, unsigned long* size,
                            FILETIME* time, unsigned long* attribute) {
  error = ZorGuard([&] {
            LookUp(ZorText(archive), ZorText(name), backgroundMode, size, time, attribute);
          }).error;
  return IsError();
}
