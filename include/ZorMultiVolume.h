// ZorMultiVolume.h - backing a selection up over several volumes, and restoring it.
//
//   class Disks : public ZorMultiVolume {
//     int OnAbort(const ONABORTPARAM& param) override {
//       if (param.phase != PhaseVolume) return 0;
//       return !AskForDisk(param.volume + 1, param.volumeResult);
//     }
//   };
//   Disks disks;
//   disks.Backup(find, "A:\\backup.vol");
//   disks.Restore("A:\\backup.vol", "C:\\restored");
//
// Files are stored uncompressed and split wherever a medium is full.  The archiver isn't involved.
// The format is described in docs/volume-format.md; it holds no checksums.
//
// Backup and Restore return 1 on success and 0 on failure, with the cause in GetError until the
// next run.  Nothing is ever removed: what a stopped run has written stays.  Objects share no
// state, so each thread may use its own.
#pragma once

#include <cstdint>

#include "ZorError.h"
#include "ZorFind.h"
#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

class ZOR_API ZorMultiVolume {
 public:
  // The stage of a run, in ONABORTPARAM::phase.
  enum Phase {
    PhaseIdle = -1,
    PhaseBegin = 0,        // Backup: filesTotal is known.  Restore: nothing is known yet
    PhaseFileBegin = 1,    // a file is about to be copied
    PhaseFileRunning = 2,  // a slice of at most 65,536 bytes has been copied
    PhaseFileEnd = 3,      // the file is finished and closed
    PhaseVolume = 4,       // volume number `volume` + 1 is needed: change the medium now
    PhaseEnd = 5,          // the run is over; the result of OnAbort is ignored
  };

  // Why a volume is asked for, in ONABORTPARAM::volumeResult.
  enum VolumeResult {
    VolumeFirstAsk = 0,
    VolumeNoSpace = 1,      // Backup: no disk, or too little room
    VolumeNoDirectory = 2,  // Backup: the directories of the path can't be made
    VolumeNoCreate = 3,     // Backup: the file can't be created
    VolumeNoOpen = 4,       // Restore: the file can't be opened, or is too short for a volume
    VolumeBadIdentity = 5,  // Restore: not a volume, or refused by OnCheckVolume
    VolumeWrongNumber = 6,  // Restore: a valid volume, but not the one needed
  };

  // The argument of OnAbort.  The record and its texts are valid during the call only.
  struct ONABORTPARAM {
    std::int32_t kind;          // 0 Backup, 1 Restore
    std::int32_t phase;         // a Phase
    std::int32_t volumeResult;  // a VolumeResult, in PhaseVolume
    std::int32_t filesDone;
    std::int32_t filesTotal;  // 0 until known
    std::uint32_t bytesDone;  // of the current file
    std::uint32_t bytesTotal;
    std::int32_t volume;     // number of the volume in use, 0 before the first
    const char* volumePath;  // never null, possibly empty
    // Backup: source path.  Restore: target path, empty for a file that is left out.  Null before
    // the first file and in PhaseEnd.
    const char* fileName;
  };

  ZorMultiVolume();
  ZorMultiVolume(const ZorMultiVolume& other);
  ZorMultiVolume& operator=(const ZorMultiVolume& other);
  virtual ~ZorMultiVolume();

  // Stores the files that `find` selects.  `target` is the path of every volume; if it is null,
  // OnMakeVolumeName gives the path of each.  A volume that can't be used is asked for again,
  // without limit, so an application should override OnAbort.  Folders that can't be read are
  // skipped; ZorFind::Find says how to learn of them.
  //
  // Errors: 32 nothing selected, or stopped; 3 a source can't be stored (4 GiB or more, a name
  // longer than 523 bytes, shorter than when it was opened) or an I/O error; 5 a medium took less
  // than it reported as free; 13 a source can't be opened.
  int Backup(const ZorFind& find, const char* target);

  // Restores a set into `destination`.  `source` is the path of every volume, or null to ask
  // OnMakeVolumeName.  Existing files are overwritten.  If the run stops within a file, the file
  // keeps the bytes received so far, without its time and attributes.  Errors: 32 stopped; 18 a
  // directory can't be made; 13 a target can't be created; 5 disk full; 3 an I/O error or a damaged
  // volume.
  int Restore(const char* source, const char* destination);

  ZorError GetError() const;

  // Three byte strings that identify a set to the application.  "Apprication" is misspelt in the
  // interface: keep it.  Each volume carries them, and OnCheckVolume receives them.  `data` is
  // copied.  A length of 0 empties the field, a negative one isn't allowed; format version 1.00
  // holds at most 65,535 bytes each.  If memory runs out, the field is left empty and the exception
  // reaches the caller.
  void SetAppricationID(const unsigned char* data, int length);
  void SetVolume(const unsigned char* data, int length);
  void SetMemo(const unsigned char* data, int length);

  // 100 writes format version 1.00, any other value (the default is 101) version 1.01.  Restore
  // reads both regardless.
  void SetBackupVersion(int version);

 protected:
  // The hooks may throw.  Between the first and the last call of OnAbort, a CException or
  // std::bad_alloc ends the run with an error, as in ZorArchive; any other exception is rethrown
  // after the last call.  An exception from the first or the last call reaches the caller at once.

  // Called at every step; non-zero stops the run.  The default returns 0.
  virtual int OnAbort(const ONABORTPARAM& param);

  // Called for each volume opened, with `kind` 0 for the application ID, 1 for the volume label and
  // 2 for the memo.  `data` is null if all three are empty.  Returning 0 refuses the volume.  The
  // default accepts every volume.
  virtual int OnCheckVolume(int kind, const unsigned char* data, int length);

  // Returns the path at which Restore writes a file; an empty one skips it.  `destination` ends in
  // a backslash or is empty.  The default joins the two, but uses a complete `name` ("C:\data\a")
  // unchanged and doesn't check for "..": override it for sets of unknown origin.
  virtual CString OnMakeFileName(const char* destination, const char* name);

  // Returns the path of a volume, numbered from 1, if the run was given none.  The default is
  // empty, which no run can use.
  virtual CString OnMakeVolumeName(int volumeNumber);

  // Returns how many bytes a volume at `path` may take, 0 for none.  The default is the free space
  // of the medium, plus the space of a file that would be replaced, minus the space of directories
  // that would be made.
  virtual unsigned long OnQueryDiskSpace(const char* path);

  // Non-zero if `path` is a volume that OnCheckVolume accepts.
  int CheckVolume(const char* path);

 private:
  friend class ZorVolumeRun;

  // 1 if there is *no* error, else 0: the result of a run.  The interface fixes the name.
  int IsError() const;
  int CheckVolume(CFile& file);

  ZorError error;
  unsigned char* applicationId;
  int applicationIdLength;
  unsigned char* volumeLabel;
  int volumeLabelLength;
  unsigned char* memo;
  int memoLength;
  int backupVersion;
};
