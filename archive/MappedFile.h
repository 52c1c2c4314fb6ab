// MappedFile.h - a target file of an extraction, mapped into memory while the archiver fills it.
#pragma once

#include <cstdint>

#include "platform/classlib/ClassLib.h"

// While mapped, the file is kSlack bytes longer than its final size, so that an empty file can be
// mapped too.  Finish, or else the destructor, cuts it to its final size, whatever was written.
class ZorMappedFile {
 public:
  static constexpr std::uint32_t kSlack = 1024;

  ZorMappedFile(const char* path, std::uint32_t size);
  virtual ~ZorMappedFile();
  ZorMappedFile(const ZorMappedFile&) = delete;
  ZorMappedFile& operator=(const ZorMappedFile&) = delete;

  // Creates the file, replacing an existing one, and returns Capacity() writable bytes.  Returns
  // null on failure: SystemError has the cause, and a file already created stays, untrimmed.
  unsigned char* Map();
  // Cuts the slack off, sets the last-write time if one is given (best effort), and closes the
  // file. False if cutting or closing fails: SystemError has the cause.
  bool Finish(const FILETIME* lastWrite = nullptr);
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
