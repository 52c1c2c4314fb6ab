// ZorArchive.h - LZH archives: make, extend, extract, look up, delete from; from disk and memory.
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
// The work on the archive itself is done by the archiver module UNLHA32.DLL, which every operation
// loads for itself and frees again.  Without it each operation fails with
// ZorErrorEngineUnavailable.
//
// Every operation sets the object's error to 0, returns 1 on success and 0 on failure, and leaves
// the cause in GetError until the next one.  None throws on a failure of the archiver or of a file.
// Nothing is rolled back beyond what the archiver itself guarantees.
//
// One object may be active in a process at a time, on one thread: the archiver's callbacks know the
// object that was default-constructed last, and none once any ZorArchive has been destroyed.
//
// Paths are byte strings in the active ANSI code page, and a null one reads as the empty text
// unless an operation gives it another meaning.  A name with a double quote is refused
// (ZorErrorFileOpen): the quote would change what the command line for the archiver says.
#pragma once

#include <cstdint>

#include "ZorError.h"
#include "ZorFind.h"
#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

class ZOR_API ZorArchive {
 public:
  // Where an operation stands, in ONABORTPARAM::phase.
  enum Phase {
    PhaseIdle = -1,        // nothing reported yet; never reaches OnAbort
    PhaseBegin = 0,        // about to start; filesTotal is final
    PhaseFileBegin = 1,    // a file is about to be worked on
    PhaseFileRunning = 2,  // bytesDone of bytesTotal are done
    PhaseFileEnd = 3,      // a file is done, filesDone has grown
    PhaseEnd = 4,          // the operation is over, whichever way; the result of OnAbort is ignored
  };

  // What OnAbort is told.  The record and its texts belong to the library and hold good during the
  // call only.  Fields from memberName on are filled by Extract and ExtractMem alone.
  struct ONABORTPARAM {
    std::int32_t kind;   // 0 compressing, 1 extracting or deleting
    std::int32_t phase;  // a Phase
    std::int32_t filesDone;
    std::int32_t filesTotal;  // 0 in CompressDir, where the number isn't known
    std::uint32_t bytesDone;  // of the current file
    std::uint32_t bytesTotal;
    // As the caller gave it; null when there is no such archive, or no target directory.
    const char* archive;
    const char* fileName;      // file or target path, empty for a member that is skipped
    const char* memberName;    // the archive's own name of the member
    std::uint32_t memberSize;  // unpacked, in bytes
    std::uint16_t memberDate;  // DOS date and time, local
    std::uint16_t memberTime;
    std::uint8_t memberAttribute;  // low byte of the member's attributes
  };

  ZorArchive();
  // Copies carry everything, the last error included, but the callbacks don't know them.
  ZorArchive(const ZorArchive& other);
  ZorArchive& operator=(const ZorArchive& other);
  virtual ~ZorArchive();

  // Non-zero when the archiver can be loaded and is complete.
  int IsEnabled();
  // Non-zero when the file is an archive, as the archiver sees it.  A file that is none, or that
  // doesn't exist, gives 0 with no error.
  int IsArchive(const char* path);

  // Puts the files that `find` selects into `archive`; directories themselves aren't stored.  With
  // `append` 0 an existing archive is removed first, else the files are added to it.  With
  // `selfExtracting` non-zero a self-extracting program is made of the finished archive.
  // Errors of its own: 40 when two files would meet under one name, or when a name is in the
  // archive already and the overwrite mode is 0; 32 when nothing is selected.
  int Compress(const ZorFind& find, const char* archive, int append, int selfExtracting);

  // Makes one member `name` of the `size` bytes at `data`.  `append` as in Compress.  4 GiB or more
  // are no member (ZorErrorFileFailure).
  int CompressMem(const char* archive, const char* name, const unsigned char* data,
                  unsigned long size, int append);

  // Puts the tree below `directory` into `archive`, names relative to it.  `append` as in Compress;
  // names that the archive holds already are replaced.
  int CompressDir(const char* directory, const char* archive, int append);

  // Extracts the members that `find` selects below `directory`, or below the base directory of
  // `find` when `directory` is null.  Existing files are replaced.  OnMakeFileName decides on each
  // target. After a failure the members before the bad one are complete, and the bad one's file may
  // hold a part of it, without its time and attributes.
  int Extract(const ZorFind& find, const char* archive, const char* directory);
  // The same for one mask, or for everything when `mask` is null.
  int Extract(const char* archive, const char* directory, const char* mask);

  // Unpacks member `name` into `buffer` of `size` bytes.  Nothing is written beyond it; a buffer
  // that is too small is an error of the archiver's (30), and holds what fitted.
  int ExtractMem(const char* archive, const char* name, unsigned char* buffer, unsigned long size);

  // Size, last-write time (UTC) and attributes (FILE_ATTRIBUTE_*) of member `name`.  Each output
  // may be null, and none is written on failure.  Makes no call of OnAbort.
  int GetFileInfo(const char* archive, const char* name, unsigned long* size, _FILETIME* time,
                  unsigned long* attribute);

  // Deletes the members that `find` selects.  A single mask goes to the archiver as it is; several
  // follow the rules of ZorFind.
  int Delete(const ZorFind& find, const char* archive);

  ZorError GetError() const;

  // Modes are tested for 0 only.  Setters store the value and return the old one.
  // Overwrite mode, default 0: adding refuses names that the archive holds already.
  int SetOverwriteMode(int mode);
  int GetOverwriteMode() const;
  // Attribute mode, default 1: Extract gives files the attributes of their members.
  int SetExtractFileAttibuteMode(int mode);
  int GetExtractFileAttibuteMode() const;
  // Background mode, default 1: 0 asks the archiver to keep to itself.
  int SetBackgroundMode(int mode);
  int GetBackgroundMode() const;

  // Where the archiver keeps its temporaries and Compress its list of names; with an empty
  // directory (the default) temporaries stand beside the archive, and Compress runs the archiver
  // once for each file.  Null is an empty text.
  void SetWorkDirectory(const char* directory);
  const char* GetWorkDirectory() const;

 protected:
  // The hooks may throw.  A CException ends the operation as an error: ZorErrorDiskFull for a
  // CFileException of that cause, else ZorErrorFileFailure.  Anything else comes out of the
  // operation, once that has closed as after a cancel.

  // Called at every step of an operation.  Non-zero stops it, with ZorErrorCanceled.
  virtual int OnAbort(const ONABORTPARAM& param);

  // Where Extract puts a member: `directory` ends in a backslash, `name` has no root.  An empty
  // result skips the member.  The default joins the two; a name that begins with a backslash lands
  // below the root of `directory`.
  virtual CString OnMakeFileName(const char* directory, const char* name);

 private:
  friend class ZorOperation;

  // The archiver's callbacks: a window, a message, the archiver's state and its progress record.
  // They return 1 to go on and 0 to stop.
  static int CALLBACK OnAbortProc1(HWND window, unsigned int message, unsigned int state,
                                   void* record);
  static int CALLBACK OnAbortProc2(HWND window, unsigned int message, unsigned int state,
                                   void* record);

  // 1 when there is no error, else 0: what every operation returns.
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
