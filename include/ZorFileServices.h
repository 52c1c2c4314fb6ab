// ZorFileServices.h - services for files, directories and disks.
//
// Free functions return non-zero on success and 0 on failure.  They report no cause; the platform's
// last error may hold one.  Paths are byte strings in the active ANSI code page; a null path reads
// as the empty one.
#pragma once

#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

// The file name in `path`, as a pointer into it; null if there is none, as in "C:\a\", "C:" and the
// empty text.  Only the text is examined.
ZOR_API const char* ZorGetFileName(const char* path);

// Makes all missing directories of `path` from the top level down.  `path` must begin with a root
// and a backslash.  "C:\a\x\..\b" makes C:\a\x as well; "C:\..\x" fails, as nothing is above a
// root.  With `hasFileName` non-zero the last part is a file name and isn't made. `firstCreated`,
// if not null, receives the topmost directory that the call made, without a trailing backslash, or
// becomes empty if everything existed.  Returns 0 if the path has another form (`firstCreated` is
// then left alone), or if a level is a file or can't be made; directories already made stay.  A
// directory that another process makes meanwhile counts as existing.
ZOR_API int ZorCreateDirectory(const char* path, int hasFileName, CString* firstCreated);

// Deletes the directory `path` with everything in it, or only its contents if `contentsOnly` is
// non-zero.  Attributes are respected: the call stops at a read-only file, after deleting what came
// before it.  A relative path and a root, however it is spelt ("C:\", "C:\a\.."), are refused:
// nothing is deleted, and the result is 1.
//
// Links are deleted, not followed.  The exception is `path` itself: with `contentsOnly`, a link to
// a directory is followed and that directory is emptied.
ZOR_API int ZorRemoveDirectory(const char* path, int contentsOnly);

// The free bytes (`freeSpace` non-zero) or all bytes (zero) of the volume that holds `path`; 0 on
// failure and for a path without a root.  The result is the low 32 bits, `*highPart` receives the
// high ones.  With a null `highPart`, 0xFFFFFFFF stands for a number beyond 32 bits.
ZOR_API unsigned long ZorGetDiskSpace(const char* path, int freeSpace, unsigned long* highPart);

// The type of the drive that holds `path`, a DRIVE_* value; DRIVE_UNKNOWN for a path without a
// root.
ZOR_API unsigned int ZorGetDriveType(const char* path);

// Last-write times as seconds since 1970-01-01 00:00:00 UTC, from 0 to 0x7FFFFFFF whatever the
// width of `long`; times outside that range fail.  The arithmetic is UTC throughout, independent of
// the time zone and daylight saving.  Setting opens the file for writing, so it fails on a
// read-only file and on a directory.  Reading accepts directories, and takes the first match of a
// name with wild-cards; on failure `time` isn't written.
ZOR_API int ZorSetFileTimeStamp(const char* name, long time);
ZOR_API int ZorGetFileTimeStamp(const char* name, long& time);

// FILE_ATTRIBUTE_* bits; a plain file has 0, not FILE_ATTRIBUTE_NORMAL.  On failure `attribute`
// isn't written.
ZOR_API int ZorSetFileAttribute(const char* name, unsigned int attribute);
ZOR_API int ZorGetFileAttribute(const char* name, unsigned int& attribute);

// Ties the life of a directory to the life of an object.  Opening makes the directory with all
// missing levels.  Closing removes the levels that opening made, with everything put there since;
// directories that existed before stay.  The caller chooses the path; it needs a root
// ("C:\temp\x").
//
// A copy shares what the original has opened: whichever closes first removes it, and the other
// finds nothing left.  Assignment doesn't close the target first.
class ZOR_API ZorTempDirectory {
 public:
  // A null `path` reads as the empty one.  `open` non-zero opens at once; IsOpen gives the outcome.
  explicit ZorTempDirectory(const char* path = nullptr, int open = 0);
  ZorTempDirectory(const ZorTempDirectory& other);
  ZorTempDirectory& operator=(const ZorTempDirectory& other);
  // Closes.
  virtual ~ZorTempDirectory();

  // Sets a new path and returns 1; does nothing and returns 0 while opened.
  int SetPath(const char* path);
  // Makes the directory; returns 1 if it then exists.  If making it fails halfway, the object
  // counts as opened, so that Close removes the levels that were made.
  int Open();
  // 1 if opened and the directory exists, else 0.
  int IsOpen() const;
  // Best-effort removal of what Open made: a failure isn't reported.
  void Close();

  // The path, never null; owned by the object.
  operator const char*() const;  // NOLINT(google-explicit-constructor)

 private:
  CString path;
  CString created;
  int opened;
};
