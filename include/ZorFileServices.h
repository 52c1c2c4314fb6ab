// ZorFileServices.h - services for files, directories and disks.
//
// Free functions return non-zero on success and 0 on failure and report no reason; the platform's
// last error may tell more.  Paths are byte strings in the active ANSI code page; a null path reads
// as the empty one.
#pragma once

#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

// The file name in `path`, as a pointer into it; null when there is none, as after a trailing
// backslash, for "C:" and for the empty text.  Looks at the text only.
ZOR_API const char* ZorGetFileName(const char* path);

// Makes all missing directories of `path`, which must have a root and a rooted directory, from the
// top level down: "C:\a\x\..\b" makes C:\a\x as well, and "C:\..\x" fails, as nothing is above a
// root.  With `hasFileName` non-zero the last part is a file's name and isn't made. `firstCreated`,
// if not null, receives the topmost directory that the call really made, without a trailing
// backslash; it is empty when everything existed.  Returns 0 when the path is of another form
// (`firstCreated` is then left alone), when a level is a file or can't be made; directories made
// before that stay.  A directory that somebody else makes meanwhile counts as one that existed.
ZOR_API int ZorCreateDirectory(const char* path, int hasFileName, CString* firstCreated);

// Deletes the directory `path` with everything in it, or, with `contentsOnly` non-zero, what is in
// it.  Attributes are respected: a read-only file stops the call, and what went before it is gone.
// A relative path and a root, however it is spelt ("C:\", "C:\a\.."), are refused: nothing is
// deleted, and the result is 1.
//
// Nothing is deleted through a link: the link itself goes.  With `contentsOnly` a `path` that is a
// link to a directory is followed, and that directory is emptied.
ZOR_API int ZorRemoveDirectory(const char* path, int contentsOnly);

// Bytes free (`freeSpace` non-zero) or in all (zero) on the volume on which `path` lies; 0 on
// failure and for a path without a root.  The result is the low 32 bits and `*highPart` the high
// ones; with a null `highPart` a number beyond 32 bits is given as 0xFFFFFFFF.
ZOR_API unsigned long ZorGetDiskSpace(const char* path, int freeSpace, unsigned long* highPart);

// The kind of drive on which `path` lies, a DRIVE_* value; DRIVE_UNKNOWN for a path without a root.
ZOR_API unsigned int ZorGetDriveType(const char* path);

// Last-write times as seconds since 1970-01-01 00:00:00 UTC, in 0 to 0x7FFFFFFF whatever the width
// of `long`; times outside that range fail.  The arithmetic is UTC throughout: neither the time
// zone nor daylight saving plays a part.  Setting opens the file for writing, so it fails on a
// read-only file and on a directory.  Reading accepts directories, and of a name with wild-cards
// takes the first match; on failure `time` isn't written.
ZOR_API int ZorSetFileTimeStamp(const char* name, long time);
ZOR_API int ZorGetFileTimeStamp(const char* name, long& time);

// FILE_ATTRIBUTE_* bits, in which a plain file is 0 and not FILE_ATTRIBUTE_NORMAL.  On failure
// `attribute` isn't written.
ZOR_API int ZorSetFileAttribute(const char* name, unsigned int attribute);
ZOR_API int ZorGetFileAttribute(const char* name, unsigned int& attribute);

// Ties the life of a directory to the life of an object.  Opening makes the directory with all
// missing levels; closing removes what opening made, with everything that has been put there since.
// What stood there before is left alone.  The caller names the directory; it needs a root
// ("C:\temp\x").
//
// A copy takes over what the original has opened: whichever closes first removes it, and the other
// finds nothing left.  Assignment doesn't close the target first.
class ZOR_API ZorTempDirectory {
 public:
  // A null `path` is an empty one.  `open` non-zero opens at once; IsOpen then tells the outcome.
  explicit ZorTempDirectory(const char* path = nullptr, int open = 0);
  ZorTempDirectory(const ZorTempDirectory& other);
  ZorTempDirectory& operator=(const ZorTempDirectory& other);
  // Closes.
  virtual ~ZorTempDirectory();

  // Takes a new path, and returns 1; refuses with 0 while opened.
  int SetPath(const char* path);
  // Makes the directory; returns 1 if it exists now.  When making it fails halfway the object
  // counts as opened, so that Close removes the levels that were made.
  int Open();
  // 1 if opened and the directory is really there, else 0.
  int IsOpen() const;
  // Removes what Open made.  A removal that fails isn't reported.
  void Close();

  // The path, never null; owned by the object.
  operator const char*() const;  // NOLINT(google-explicit-constructor)

 private:
  CString path;
  CString created;
  int opened;
};
