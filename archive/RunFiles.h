// RunFiles.h - the files that lie about while the archiver runs: the list of names that it is
// given, and the temporaries that it makes.
#pragma once

#include "ZorFind.h"
#include "platform/classlib/ClassLib.h"

// The response file, through which a long list of names reaches the archiver.  Its name is fixed,
// so two operations must not share a work directory at the same time.
class ZorResponseWriter {
 public:
  // `directory` is a work directory with its trailing backslash.
  explicit ZorResponseWriter(const CString& directory);
  // Removes the file, as far as it can be removed, if it was written in full.
  ~ZorResponseWriter();
  ZorResponseWriter(const ZorResponseWriter&) = delete;
  ZorResponseWriter& operator=(const ZorResponseWriter&) = delete;

  // Writes one quoted name a line; replaces an older file.  Throws ZorFailure (ZorErrorFileOpen)
  // when the file can't be made and CFileException* when writing fails: then what was written
  // stays.
  void Write(const ZorFileList& names);

  const char* Path() const { return path; }

 private:
  CString path;
  bool complete;
};

// The archiver keeps files "lhtmp???.lzh" in its work directory while it writes, and a run that is
// stopped may leave some.  Those that stood there before Begin are never touched; a file of that
// name that somebody else makes meanwhile can't be told from the run's own and goes as well.
class ZorTempSweep {
 public:
  ZorTempSweep();
  // Doesn't sweep.
  virtual ~ZorTempSweep() = default;

  // Notes what stands in `directory` now.  With an empty directory there is nothing to watch.
  void Begin(const char* directory);
  // Replaces the contents of `list` with the full paths of the matching files.
  void Snapshot(ZorFileList& list) const;
  // Best-effort removal of what has come since Begin; without a Begin nothing.  Throws nothing.
  void Sweep();

 private:
  void RemoveNewcomers() const;

  CString directory;
  ZorFileList snapshot;
  int armed;  // 1 from Begin until Sweep
};
