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
// The archive itself is read and written by the archiver module UNLHA32.DLL.  Every operation loads
// it and frees it again; without it each operation fails with ZorErrorEngineUnavailable.
//
// Every operation sets the object's error to 0, returns 1 on success and 0 on failure, and leaves
// the cause in GetError until the next one.  None throws on a failure of the archiver or of a file.
// An archive that exists is never left half changed; beyond that nothing is rolled back.
//
// Only one object may be active in a process at a time, on one thread: the archiver's callbacks
// know the object that was default-constructed last, and none once any ZorArchive has been
// destroyed.  An object that they don't know works, but hears nothing and can't stop while the
// archiver is at work.
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

  // What OnAbort is told.  The record and its texts belong to the library and are valid during the
  // call only.  Only Extract and ExtractMem fill the fields from memberName on.
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
  // Non-zero when the archiver takes the file for an archive.  Any other file, and one that doesn't
  // exist, gives 0 with no error.
  int IsArchive(const char* path);

  // Stores the files that `find` selects in `archive`; directories themselves aren't stored, nor is
  // the archive when it is among the files.  With `append` 0 an existing archive is removed first;
  // else, and if it can't be removed, the files are added to it.  With `selfExtracting` non-zero a
  // self-extracting program is made of the finished archive, which stays.
  // Folders that can't be read are passed over: ZorFind::Find tells of them.
  // Errors of its own: 40 when two files would get the same name, or when the archive holds a name
  // already and the overwrite mode is 0; 32 when nothing is selected.
  int Compress(const ZorFind& find, const char* archive, int append, int selfExtracting);

  // Stores the `size` bytes at `data` as the member `name`.  `append` as in Compress.  4 GiB or
  // more can't be stored (ZorErrorFileFailure).
  int CompressMem(const char* archive, const char* name, const unsigned char* data,
                  unsigned long size, int append);

  // Stores the tree below `directory` in `archive`, with names relative to it.  `append` as in
  // Compress; members that the archive holds already are replaced, whatever the overwrite mode.
  int CompressDir(const char* directory, const char* archive, int append);

  // Extracts the members that `find` selects into `directory`, or into the base directory of `find`
  // when `directory` is null.  OnMakeFileName decides where each one goes: read there what the
  // default does with names that begin at the root.
  //
  // An existing file is overwritten from its first byte on, whatever the overwrite mode, and so is
  // every other name that it has (a hard link).  So a failure, or a stop, costs the file that stood
  // in the bad member's place: it then holds what could be unpacked, with zeros after that, without
  // the member's time and attributes.  The members before it are complete.
  int Extract(const ZorFind& find, const char* archive, const char* directory);
  // The same for one mask, or for everything when `mask` is null.
  int Extract(const char* archive, const char* directory, const char* mask);

  // Unpacks the member `name` into `buffer` of `size` bytes.  Nothing is written beyond it.  A
  // buffer that is too small is an error of the archiver (30) and holds the bytes that fit.
  int ExtractMem(const char* archive, const char* name, unsigned char* buffer, unsigned long size);

  // Looks up the size, last-write time (UTC) and attributes (FILE_ATTRIBUTE_*) of the member
  // `name`. Each output may be null, and none is written on failure.  Doesn't call OnAbort.
  int GetFileInfo(const char* archive, const char* name, unsigned long* size, _FILETIME* time,
                  unsigned long* attribute);

  // Deletes the members that `find` selects.  A single mask goes to the archiver as it is, a
  // leading
  // ">" included; several follow the rules of ZorFind.
  int Delete(const ZorFind& find, const char* archive);

  ZorError GetError() const;

  // Modes are tested for 0 only.  Setters store the value and return the old one.  ("Attibute" is
  // how the interface spells it.) Overwrite mode, default 0: adding refuses names that the archive
  // holds already.
  int SetOverwriteMode(int mode);
  int GetOverwriteMode() const;
  // Attribute mode, default 1: Extract gives files the attributes of their members.
  int SetExtractFileAttibuteMode(int mode);
  int GetExtractFileAttibuteMode() const;
  // Background mode, default 1: 0 asks the archiver to show nothing of itself.
  int SetBackgroundMode(int mode);
  int GetBackgroundMode() const;

  // Where the archiver keeps its temporaries and Compress its list of names.  With an empty
  // directory (the default) temporaries stand beside the archive, and Compress runs the archiver
  // once for each file, which is slower.
  void SetWorkDirectory(const char* directory);
  const char* GetWorkDirectory() const;

 protected:
  // The hooks may throw.  A CException, or std::bad_alloc, ends the operation as an error:
  // ZorErrorDiskFull for a CFileException of that cause, else ZorErrorFileFailure.  Anything else
  // is thrown on once the operation has closed as after a cancel.

  // Called at every step of an operation.  Non-zero stops it, with ZorErrorCanceled.
  virtual int OnAbort(const ONABORTPARAM& param);

  // Where Extract puts a member: `directory` ends in a backslash, `name` has no drive or share.  An
  // empty result skips the member.  The default joins the two.
  //
  // Beware of the default with archives of unknown origin: a name that begins with a backslash goes
  // below the root of `directory`, so "\etc\x" extracted into C:\out lands in C:\etc\x.  It doesn't
  // look at "..", either; the archiver that comes with the library drops such components.  Override
  // it to keep everything inside of a directory.
  virtual CString OnMakeFileName(const char* directory, const char* name);

 private:
  friend class ZorOperation;

  // The archiver's callbacks: a window, a message, the archiver's state and its progress record.
  // They return 1 to go on and 0 to stop.
  static int CALLBACK OnAbortProc1(HWND window, unsigned int message, unsigned int state,
                                   void* record);
  static int CALLBACK OnAbortProc2(HWND window, unsigned int message, unsigned int state,
                                   void* record);

  // 1 when there is *no* error, else 0: what every operation returns.  The name is the interface's.
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
