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
// Files are stored byte for byte and cut wherever a medium is full.  No archiver takes part.  The
// format is described in docs/volume-format.md; it holds no checksums.
//
// Backup and Restore return 1 on success and 0 on failure, with the cause in GetError until the
// next run.  Nothing is ever removed: what a stopped run wrote stays.  Objects share nothing, so
// each thread may use one of its own.
#pragma once

#include <cstdint>

#include "ZorError.h"
#include "ZorFind.h"
#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

class ZOR_API ZorMultiVolume {
 public:
  // Where a run stands, in ONABORTPARAM::phase.
  enum Phase {
    PhaseIdle = -1,
    PhaseBegin = 0,        // Backup: filesTotal is known.  Restore: nothing is known yet
    PhaseFileBegin = 1,    // a file is about to be copied
    PhaseFileRunning = 2,  // a slice of at most 65,536 bytes has been copied
    PhaseFileEnd = 3,      // the file is finished and closed
    PhaseVolume = 4,       // volume number `volume` + 1 is wanted: change the medium now
    PhaseEnd = 5,          // the run is over; the result of OnAbort is ignored
  };

  // Why a volume is asked for, in ONABORTPARAM::volumeResult.
  enum VolumeResult {
    VolumeFirstAsk = 0,
    VolumeNoSpace = 1,      // Backup: no disk, or too little room
    VolumeNoDirectory = 2,  // Backup: the directories of the path can't be made
    VolumeNoCreate = 3,     // Backup: the file can't be created
    VolumeNoOpen = 4,       // Restore: the file can't be opened, or is too short for a volume
    VolumeBadIdentity = 5,  // Restore: no volume, or refused by OnCheckVolume
    VolumeWrongNumber = 6,  // Restore: a good volume, but not the wanted one
  };

  // What OnAbort is told.  The record and its texts are valid during the call only.
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

  // Stores the files that `find` selects.  `target` is the path of every volume; with null each
  // volume's path comes from OnMakeVolumeName.  A volume that can't be taken is asked for again
  // without limit, so an application overrides OnAbort.  Folders that can't be read are passed
  // over: ZorFind::Find tells of them.
  //
  // Errors: 32 nothing selected or stopped; 3 a source can't be stored (4 GiB or more, a name
  // beyond 523 bytes, shorter than when it was opened) or a file failed; 5 a medium took less than
  // it promised; 13 a source can't be opened.
  int Backup(const ZorFind& find, const char* target);

  // Restores a set into `destination`.  `source` is the path of every volume, or null to ask
  // OnMakeVolumeName.  Existing files are overwritten.  A file that was under way when the run
  // stopped keeps what it had received, without its time and attributes.
  // Errors: 32 stopped; 18 a directory can't be made; 13 a target can't be created; 5 disk full; 3
  // a file failed or a volume is damaged.
  int Restore(const char* source, const char* destination);

  ZorError GetError() const;

  // Three byte strings that identify a set to the application.  ("Apprication" is how the interface
  // spells it.)  Each volume carries them, and OnCheckVolume gets them back.  `data` is copied; a
  // length of 0 empties the field, and a negative one isn't allowed.  In format 100 a length may be
  // at most 65,535.  When memory runs out the field is left empty and the exception passes to the
  // caller.
  void SetAppricationID(const unsigned char* data, int length);
  void SetVolume(const unsigned char* data, int length);
  void SetMemo(const unsigned char* data, int length);

  // 100 writes format version 1.00, any other value (the default is 101) version 1.01.  Restore
  // reads both, whatever is set here.
  void SetBackupVersion(int version);

 protected:
  // The hooks may throw.  Between the first and the last call of OnAbort a CException, or
  // std::bad_alloc, ends the run as an error, as in ZorArchive, and anything else is thrown on
  // after the last call.  What the first and the last call throw passes to the caller at once.

  // Called at every step; non-zero stops the run.  The default returns 0.
  virtual int OnAbort(const ONABORTPARAM& param);

  // Called for each volume opened: kind 0 the application ID, 1 the volume label, 2 the memo.
  // `data` is null when all three are empty.  0 refuses the volume.  The default accepts
  // everything.
  virtual int OnCheckVolume(int kind, const unsigned char* data, int length);

  // Where Restore puts a file: `destination` ends in a backslash or is empty.  An empty result
  // leaves the file out.  The default joins the two, but takes a complete `name` ("C:\data\a") as
  // it is, and doesn't look at "..": override it for sets of unknown origin.
  virtual CString OnMakeFileName(const char* destination, const char* name);

  // The path of a volume, numbered from 1, when the run was given none.  The default is empty,
  // which no run can use.
  virtual CString OnMakeVolumeName(int volumeNumber);

  // How many bytes a volume at `path` may take; 0 for none.  The default is what the medium has
  // free, plus the room of a file that is replaced, less that of directories that are to be made.
  virtual unsigned long OnQueryDiskSpace(const char* path);

  // Non-zero when `path` is a volume that OnCheckVolume accepts.
  int CheckVolume(const char* path);

 private:
  friend class ZorVolumeRun;

  // 1 when there is *no* error, else 0: what a run returns.  The name is the interface's.
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
