// IndexCache.h - caches the indexes of the archives used last, so that an unchanged archive isn't
// read again.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/File.h"

namespace kozor::container {

// An index is valid while the file's identity, size and time of last write and the code pages are
// unchanged.  Thread-safe.
class IndexCache {
 public:
  // The index of an archive that is open as `file`.  Throws what ArchiveIndex throws.
  std::shared_ptr<const ArchiveIndex> Get(const std::string& path, File& file);

  // The same without opening the file, if the index is known.
  std::shared_ptr<const ArchiveIndex> Get(const std::string& path);

  // Opens an archive for reading as well; throws ResultCode::ArchiveNotFound and
  // ResultCode::ArchiveNotOpened.
  std::shared_ptr<const ArchiveIndex> Open(const std::string& path, File& file);

  // Extends the index after members have been appended to an archive whose index was valid before.
  // `file` is still open, so nobody else has written.
  void MembersAppended(const std::string& path, File& file) noexcept;

 private:
  struct Entry {
    std::string path;
    FileStamp stamp;
    std::shared_ptr<ArchiveIndex> index;
    bool isSettled;  // a later write would have changed the stamp
  };

  Entry* Lookup(const std::string& path);
  // The index for this state of a file, or null.
  std::shared_ptr<const ArchiveIndex> LookupGood(const std::string& path, const FileStamp& stamp);
  static void ReadOn(Entry& entry, File& file);

  std::mutex mutex;
  std::list<Entry> entries;  // most recently used first
};

}  // namespace kozor::container
