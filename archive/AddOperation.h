// AddOperation.h - what the operations that write an archive have in common.
#pragma once

#include "ZorFind.h"
#include "archive/Operation.h"

class ZorAddOperation : public ZorOperation {
 protected:
  ZorAddOperation(ZorArchive& object, const char* archivePath)
      : ZorOperation(Family::Compress, object, archivePath) {}

  // Throws if `text` or the work directory holds a quote.  Call it before the old archive is
  // removed.
  void RequireSoundOperand(const char* text) const;
  // Removes an old archive.  If that fails, members are appended to it.
  void RemoveOldArchive();
  // For operations that respect the overwrite mode.  With `append` 0 removes the old archive;
  // otherwise, and if the mode is 0, throws if the archive already holds one of `names`.
  void PrepareArchive(int append, const ZorFileList& names);
  // Copies the work directory for the whole run and notes the temporaries already there, so that
  // the closing steps remove only those of this run.
  void BeginSweep();
  // A command line up to the archive: letter, options, the pieces of the modes, `ownPiece`,
  // archive.
  ZorLineBuilder ArchiveLine(const char* letter, const char* ownPiece = "") const;

  CString workDirectory;  // set by BeginSweep

 private:
  void RefuseStoredNames(const ZorFileList& names);
};

// The stored name of a name with a root: the part after the root.  Null for any other name.
const char* ZorNameBehindRoot(const char* name);
