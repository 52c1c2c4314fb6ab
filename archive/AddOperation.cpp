// AddOperation.cpp - the old archive and the names in it, temporaries, the head of a command line.
#include "archive/AddOperation.h"

#include "ZorFileServices.h"
#include "archive/ArchiveSearch.h"
#include "files/NameSet.h"
#include "files/Path.h"

const char* ZorNameBehindRoot(const char* name) {
  const char* root = nullptr;
  const char* directory = nullptr;
  ZorSplitPath(name, &root, &directory, nullptr);
  const bool rooted = root != nullptr && directory != nullptr && *directory == '\\';
  return rooted ? directory : nullptr;
}

void ZorAddOperation::RequireSoundOperand(const char* text) const {
  if (!ZorIsSoundOperand(text) || !ZorIsSoundOperand(WorkDirectory())) {
    throw ZorFailure{ZorErrorFileOpen};
  }
}

void ZorAddOperation::RemoveOldArchive() {
  DeleteFileA(archive);
}

void ZorAddOperation::PrepareArchive(int append, const ZorFileList& names) {
  if (append == 0) {
    RemoveOldArchive();
  } else if (owner.GetOverwriteMode() == 0) {
    RefuseStoredNames(names);
  }
}

void ZorAddOperation::RefuseStoredNames(const ZorFileList& names) {
  ZorFind everything;
  everything.AddTail("*.*");
  ZorFileList members;
  const ZorError error =
      ZorListArchiveMembers(archive, everything, members, owner.GetBackgroundMode());
  if (error == ZorErrorArchiveNotFound) return;  // nothing is stored yet
  ZorRequire(error);

  ZorNameSet stored;
  for (const CString& member : members) stored.Add(member);
  for (const CString& name : names) {
    const char* behindRoot = ZorNameBehindRoot(name);
    if (stored.Contains(behindRoot != nullptr ? CString(behindRoot) : name)) {
      throw ZorFailure{ZorErrorSameName};
    }
  }
}

void ZorAddOperation::BeginSweep() {
  workDirectory = WorkDirectory();
  CString directory = workDirectory;
  if (directory.IsEmpty()) {
    const char* fileName = ZorGetFileName(archive);
    if (fileName != nullptr) directory = CString(archive, static_cast<int>(fileName - archive));
  }
  sweep.Begin(directory);
}

ZorLineBuilder ZorAddOperation::ArchiveLine(const char* letter, const char* ownPiece) const {
  ZorLineBuilder line(letter);
  line.Piece(BackgroundPiece(" -jsb")).WorkDirectory(workDirectory).Piece(ownPiece);
  line.Operand(archive);
  return line;
}
