// IndexCache.h - indexes of the archives used last, so that opening an unchanged archive again
// costs no second reading.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "engine/container/ArchiveIndex.h"
#include "engine/container/File.h"

namespace kozor::container {

// An index counts as good while the file has the same identity, size and time of last write, and
// the code pages are the same.  May be used from several threads.
class IndexCache {
 public:
  // The index of an archive that is open as `file`.  Throws as ArchiveIndex does.
  std::shared_ptr<const ArchiveIndex> Get(const std::string& path, File& file);

  // The same without opening the file, if the index is known.
  std::shared_ptr<const ArchiveIndex> Get(const std::string& path);

  // Opens an archive for reading as well; throws ResultCode::ArchiveNotFound and
  // ResultCode::ArchiveNotOpened.
  std::shared_ptr<const ArchiveIndex> Open(const std::string& path, File& file);

  // Reads on after members have been appended to an archive whose index was good before.  `file` is
  // still open, so nobody else has written.
  void MembersAppended(const std::string& path, File& file) noexcept;

 private:
  struct Entry {
    std::string path;
    FileStamp stamp;
    std::shared_ptr<ArchiveIndex> index;
    bool isSettled;  // a later write would have changed the stamp
  };

  Entry* Lookup(const std::string& path);
  // The index of a file in this state, or none.
  std::shared_ptr<const ArchiveIndex> LookupGood(const std::string& path, const FileStamp& stamp);
  static void ReadOn(Entry& entry, File& file);

  std::mutex mutex;
  std::list<Entry> entries;  // the one used last comes first
};

}  // namespace kozor::container
