// RunFiles.h - the files that exist only while the archiver runs: the response file and the
// archiver's temporaries.
#pragma once

#include "ZorFind.h"
#include "platform/classlib/ClassLib.h"

// The response file passes a long list of names to the archiver.  Its name is fixed, so two
// operations must not use the same work directory at the same time.
class ZorResponseWriter {
 public:
  // `directory` is a work directory with its trailing backslash.
  explicit ZorResponseWriter(const CString& directory);
  // Best-effort removal of the file if it was written in full.
  ~ZorResponseWriter();
  ZorResponseWriter(const ZorResponseWriter&) = delete;
  ZorResponseWriter& operator=(const ZorResponseWriter&) = delete;

  // Writes one quoted name per line; replaces an existing file.  Throws ZorFailure
  // (ZorErrorFileOpen) if the file can't be created and CFileException* if writing fails; an
  // incomplete file stays.
  void Write(const ZorFileList& names);

  const char* Path() const { return path; }

 private:
  CString path;
  bool complete;
};

// While it writes, the archiver keeps files "lhtmp???.lzh" in its work directory, and a stopped run
// may leave some.  Files that existed before Begin are never touched.  A file of such a name that
// another process makes meanwhile can't be told from the run's own and is removed as well.
class ZorTempSweep {
 public:
  ZorTempSweep();
  // Doesn't sweep.
  virtual ~ZorTempSweep() = default;

  // Notes the files in `directory`.  An empty text means there is nothing to watch.
  void Begin(const char* directory);
  // Replaces the contents of `list` with the full paths of the matching files.
  void Snapshot(ZorFileList& list) const;
  // Best-effort removal of the files made since Begin.  Without a Begin it does nothing.  Never
  // throws.
  void Sweep();

 private:
  void RemoveNewcomers() const;

  CString directory;
  ZorFileList snapshot;
  int armed;  // 1 from Begin until Sweep
};
