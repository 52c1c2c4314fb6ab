// ResponseFile.h - the file through which a long list of names reaches the archiver.
#pragma once

#include "ZorError.h"
#include "ZorFind.h"
#include "platform/classlib/ClassLib.h"

// Its name is fixed, so two operations must not share a work directory at the same time.
class ZorResponseFile {
 public:
  // `directory` is a work directory with its trailing backslash.
  explicit ZorResponseFile(const CString& directory);
  // Removes the file if it was written in full; one that can't be removed stays.
  ~ZorResponseFile();
  ZorResponseFile(const ZorResponseFile&) = delete;
  ZorResponseFile& operator=(const ZorResponseFile&) = delete;

  // Writes one quoted name a line; replaces an older file.  ZorErrorFileOpen when the file can't be
  // made; ZorErrorDiskFull or ZorErrorFileFailure when writing fails, and then what was written
  // stays.
  ZorError Write(const ZorFileList& names);

  const char* Path() const { return path; }

 private:
  CString path;
  bool complete;
};
