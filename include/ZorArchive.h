// ZorArchive.h - LZH archives on disk: create, add, extract, look up and delete members, also to
// and from memory.
//
//   ZorFind find;
//   find.SetCurrentDirectoryA("C:\\data");
//   find.AddTail("*.*");
//   ZorArchive archive;
//   if (!archive.Compress(find, "C:\\backup\\data.lzh", 0, 0)) return archive.GetError();
//   if (!archive.Extract("C:\\backup\\data.lzh", "C:\\restored", nullptr)) {
//     return archive.GetError();
//   }
//
// The archive itself is read and written by the archiver module UNLHA32.DLL.  Every operation loads
// it and frees it again, and fails with ZorErrorEngineUnavailable if it can't.
//
// Every operation sets the object's error to 0, returns 1 on success and 0 on failure, and leaves
// the cause in GetError until the next one.  A failure of the archiver or of a file never throws.
// An existing archive is never left half changed; nothing else is rolled back.
//
// Only one object may be active in a process at a time, on one thread.  The archiver's callbacks
// reach the object that was default-constructed last, and none after any ZorArchive has been
// destroyed.  An object they don't reach still works, but while the archiver runs its OnAbort isn't
// called and can't stop the operation.
//
// Paths are byte strings in the active ANSI code page, and a null one reads as the empty text
// unless an operation gives it another meaning.  A name with a double quote is refused
// (ZorErrorFileOpen): it would change the meaning of the archiver's command line.
#pragma once

#include <cstdint>

#include "ZorError.h"
#include "ZorFind.h"
#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

class ZOR_API ZorArchive {
 public:
  // The stage of an operation, in ONABORTPARAM::phase.
  enum Phase {
    PhaseIdle = -1,        // before the first report; never passed to OnAbort
    PhaseBegin = 0,        // about to start; filesTotal is final
    PhaseFileBegin = 1,    // a file is about to be worked on
    PhaseFileRunning = 2,  // bytesDone of bytesTotal are done
    PhaseFileEnd = 3,      // a file is done, filesDone has grown
    PhaseEnd = 4,          // the operation is over, successful or not; the result is ignored
  };

  // The argument of OnAbort.  The record and its texts belong to the library and are valid during
  // the call only.  Only Extract and ExtractMem fill the fields from memberName on.
  struct ONABORTPARAM {
    std::int32_t kind;   // 0 compressing, 1 extracting or deleting
    std::int32_t phase;  // a Phase
    std::int32_t filesDone;
    std::int32_t filesTotal;  // 0 in CompressDir, where the number is unknown
    std::uint32_t bytesDone;  // of the current file
    std::uint32_t bytesTotal;
    // As the caller passed it; null if the archive doesn't exist or the target directory is
    // missing.
    const char* archive;
    const char* fileName;      // file or target path, empty for a member that is skipped
    const char* memberName;    // the archive's own name of the member
    std::uint32_t memberSize;  // unpacked, in bytes
    std::uint16_t memberDate;  // DOS date and time, local
    std::uint16_t memberTime;
    std::uint8_t memberAttribute;  // low byte of the member's attributes
  };

  ZorArchive();
  // A copy has the settings and the last error of the original, but the callbacks don't reach it.
  ZorArchive(const ZorArchive& other);
  ZorArchive& operator=(const ZorArchive& other);
  virtual ~ZorArchive();

  // Non-zero if the archiver can be loaded and has every entry point.
  int IsEnabled();
  // Non-zero if the archiver recognises the file as an archive.  Any other file, or one that
  // doesn't exist, gives 0 and no error.
  int IsArchive(const char* path);

  // Stores the files that `find` selects in `archive`; neither directories themselves nor the
  // archive itself are stored.  With `append` 0 an existing archive is removed first; otherwise, or
  // if it can't be removed, the files are added to it.  With `selfExtracting` non-zero a
  // self-extracting program is also made from the finished archive.  Folders that can't be read are
  // skipped; ZorFind::Find says how to learn of them.
  // Errors of its own: 40 if two files would get the same name, or if the overwrite mode is 0 and
  // the archive already holds one of the names; 32 if nothing is selected.
  int Compress(const ZorFind& find, const char* archive, int append, int selfExtracting);

  // Stores the `size` bytes at `data` as the member `name`.  `append` works as in Compress.  4 GiB
  // or more can't be stored (ZorErrorFileFailure).
  int CompressMem(const char* archive, const char* name, const unsigned char* data,
                  unsigned long size, int append);

  // Stores the tree below `directory` in `archive`, with names relative to it.  `append` works as
  // in Compress.  Members of the same name are replaced, whatever the overwrite mode.
  int CompressDir(const char* directory, const char* archive, int append);

  // Extracts the members that `find` selects into `directory`, or into the base directory of `find`
  // when `directory` is null.  OnMakeFileName decides where each one goes; its comment says what
  // the default does with names that begin with a backslash.
  //
  // An existing file is overwritten in place, whatever the overwrite mode, and so is every hard
  // link to it.  So a failure or a stop destroys the old contents of the file then being written:
  // it is left with the bytes that were unpacked, followed by zeros, and without the member's time
  // and attributes.  Files finished earlier are complete.
  int Extract(const ZorFind& find, const char* archive, const char* directory);
  // The same for one mask, or for everything when `mask` is null.
  int Extract(const char* archive, const char* directory, const char* mask);

  // Unpacks the member `name` into `buffer` of `size` bytes.  Nothing is written beyond it.  If it
  // is too small, the operation fails with ZorErrorOutOfMemory (30) and the buffer holds the bytes
  // that fit.
  int ExtractMem(const char* archive, const char* name, unsigned char* buffer, unsigned long size);

  // Looks up the size, last-write time (UTC) and attributes (FILE_ATTRIBUTE_*) of the member
  // `name`.  Each output may be null; none is written on failure.  OnAbort isn't called.
  int GetFileInfo(const char* archive, const char* name, unsigned long* size, _FILETIME* time,
                  unsigned long* attribute);

  // Deletes the members that `find` selects.  A single mask goes to the archiver unchanged, even
  // with a leading ">"; several follow the rules of ZorFind.
  int Delete(const ZorFind& find, const char* archive);

  ZorError GetError() const;

  // Modes are 0 or not 0.  Setters store the value and return the old one.  "Attibute" is misspelt
  // in the interface: keep it.
  //
  // Overwrite mode, default 0: adding fails for names that the archive already holds.
  int SetOverwriteMode(int mode);
  int GetOverwriteMode() const;
  // Attribute mode, default 1: Extract gives each file the attributes of its member.
  int SetExtractFileAttibuteMode(int mode);
  int GetExtractFileAttibuteMode() const;
  // Background mode, default 1: with 0 the archiver is asked to show no user interface.
  int SetBackgroundMode(int mode);
  int GetBackgroundMode() const;

  // The directory for the archiver's temporaries and for the list of names that Compress writes.
  // If it is empty (the default), temporaries are made beside the archive and Compress runs the
  // archiver once per file, which is slower.
  void SetWorkDirectory(const char* directory);
  const char* GetWorkDirectory() const;

 protected:
  // The hooks may throw.  A CException or std::bad_alloc ends the operation with an error:
  // ZorErrorDiskFull for a CFileException with that cause, else ZorErrorFileFailure.  Any other
  // exception is rethrown after the operation has cleaned up as it does after a cancel.

  // Called at every step of an operation.  Non-zero stops it, with ZorErrorCanceled.
  virtual int OnAbort(const ONABORTPARAM& param);

  // Returns the path at which Extract writes a member; an empty one skips it.  `directory` ends in
  // a backslash, `name` has no drive or share.  The default joins the two.
  //
  // Beware of the default with archives of unknown origin: a name that begins with a backslash goes
  // below the root of `directory`, so "\etc\x" extracted into C:\out becomes C:\etc\x.  Nor does it
  // check for ".."; the archiver that comes with the library drops such components.  Override it to
  // keep everything inside `directory`.
  virtual CString OnMakeFileName(const char* directory, const char* name);

 private:
  friend class ZorOperation;

  // The archiver's callbacks: a window, a message, the archiver's state and its progress record.
  // They return 1 to go on and 0 to stop.
  static int CALLBACK OnAbortProc1(HWND window, unsigned int message, unsigned int state,
                                   void* record);
  static int CALLBACK OnAbortProc2(HWND window, unsigned int message, unsigned int state,
                                   void* record);

  // 1 if there is *no* error, else 0: the result of every operation.  The interface fixes the name.
  int IsError() const;

  ZorError error;
  CString workDirectory;
  int useResponseFile;
  int extractFileAttributeMode;
  int overwriteMode;
  int backgroundMode;
  ONABORTPARAM* progress;

  static ZorArchive* ths;
};
