// MappedFile.h - a target file of an extraction, mapped into memory while the archiver fills it.
#pragma once

#include <cstdint>

#include "platform/classlib/ClassLib.h"

// While mapped the file is kSlack bytes longer than its final size, so that a file of size 0 can be
// mapped, too.  Finish, or else the end of the object, gives it its size, whatever was written into
// it.
class ZorMappedFile {
 public:
  static constexpr std::uint32_t kSlack = 1024;

  ZorMappedFile(const char* path, std::uint32_t size);
  virtual ~ZorMappedFile();
  ZorMappedFile(const ZorMappedFile&) = delete;
  ZorMappedFile& operator=(const ZorMappedFile&) = delete;

  // Makes the file, in the place of one that exists, and returns Capacity() writable bytes.  Null
  // on failure: SystemError has the cause, and the file stays as far as it was made, untrimmed.
  unsigned char* Map();
  // Cuts the slack off and closes the file.  False if either fails: SystemError has the cause.
  bool Finish();
  std::uint32_t Capacity() const { return size + kSlack; }
  std::uint32_t SystemError() const { return systemError; }

 private:
  bool Open();
  bool Trim();
  bool Close();

  CString path;
  std::uint32_t size;
  HANDLE file;
  HANDLE mapping;
  void* view;
  std::uint32_t systemError;
};
