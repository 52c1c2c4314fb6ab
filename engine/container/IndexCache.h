// IndexCache.h - caches the indexes of the archives used last, so that an unchanged archive isn't
// read again, and their open files while they are in use.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/File.h"

namespace kozor::container {

// An archive open for reading.  One file serves all its readers; since it has a single position,
// only one of them may read members.
struct ReadArchive {
  std::shared_ptr<File> file;
  std::shared_ptr<const ArchiveIndex> index;
};

// An index is valid while the file's identity, size and time of last write and the code pages are
// unchanged.  Thread-safe.
class IndexCache {
 public:
  // The index of an archive that is open as `file`.  Throws what ArchiveIndex throws.
  std::shared_ptr<const ArchiveIndex> Get(const std::string& path, File& file);

  // Opens an archive for reading.  If it is open already and unchanged, that costs a single query
  // of its metadata.  Also throws ResultCode::ArchiveNotFound and ResultCode::ArchiveNotOpened.
  ReadArchive Open(const std::string& path);

  // The same within an operation that keeps the archive open and has opened it just before: then it
  // isn't looked up again.
  ReadArchive OpenAgain(const std::string& path);

  // Keeps the archive opened last open until another is opened.  Off by default.
  void KeepOpen(bool on);
  // Closes all archives, those of open handles too, which then search by their indexes alone.  Call
  // it before changing an archive: Windows replaces no open file.
  void LetGo();

  // Extends the index after members have been appended to an archive whose index was valid before.
  // `file` is still open, so nobody else has written.
  void MembersAppended(const std::string& path, File& file) noexcept;

 private:
  struct Entry {
    std::string path;
    FileStamp stamp;
    std::shared_ptr<ArchiveIndex> index;
    bool isSettled;  // a later write would have changed the stamp
    std::weak_ptr<File> file;
  };

  Entry* Lookup(const std::string& path);
  // The entry for this state of a file, or null.
  Entry* LookupGood(const std::string& path, const FileStamp& stamp);
  Entry& Read(const std::string& path, File& file);
  static void ReadOn(Entry& entry, File& file);

  std::mutex mutex;
  std::list<Entry> entries;  // most recently used first
  bool keepsOpen = false;
  std::shared_ptr<File> kept;
};

}  // namespace kozor::container
