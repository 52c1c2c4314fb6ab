// AddOperation.h - what the operations that write an archive have in common.
#pragma once

#include "ZorFind.h"
#include "archive/Operation.h"

class ZorAddOperation : public ZorOperation {
 protected:
  ZorAddOperation(ZorArchive& object, const char* archivePath)
      : ZorOperation(Family::Compress, object, archivePath) {}

  // Refuses a quote in `text` or in the work directory while the old archive is still there.
  void RequireSoundOperand(const char* text) const;
  // Removes an old archive.  If that fails, members are appended to it.
  void RemoveOldArchive();
  // For operations that replace no member unasked.  With `append` 0 removes the old archive; else
  // refuses names that the archive holds, unless the overwrite mode is on.
  void PrepareArchive(int append, const ZorFileList& names);
  // Copies the work directory for the whole run and notes the temporaries that stand there, so that
  // the closing steps remove only those of this run.
  void BeginSweep();
  // A line up to the archive: letter, options, the pieces of the modes, `ownPiece`, the archive.
  ZorLineBuilder ArchiveLine(const char* letter, const char* ownPiece = "") const;

  CString workDirectory;  // since BeginSweep

 private:
  void RefuseStoredNames(const ZorFileList& names);
};

// Where the stored name begins in a name with a root: after the root.  Null for any other name.
const char* ZorNameBehindRoot(const char* name);
