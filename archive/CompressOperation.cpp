// CompressOperation.cpp - the old archive, names that are in it, temporaries, the line's head.
#include "archive/CompressOperation.h"

#include "ZorFileServices.h"
#include "archive/MemberListing.h"
#include "archive/RemoveFile.h"
#include "files/NameSet.h"
#include "files/Path.h"

const char* ZorNameBehindRoot(const char* name) {
  const char* root = nullptr;
  const char* directory = nullptr;
  ZorSplitPath(name, &root, &directory, nullptr);
  const bool rooted = root != nullptr && directory != nullptr && *directory == '\\';
  return rooted ? directory : nullptr;
}

bool ZorCompressOperation::AcceptsOperand(const char* text) {
  const bool isSound = ZorIsSoundOperand(text) && ZorIsSoundOperand(WorkDirectory());
  return isSound || Fail(ZorErrorFileOpen);
}

void ZorCompressOperation::RemoveOldArchive() {
  CFileStatus status;
  if (CFile::GetStatus(archive, status)) ZorRemoveFileIfPossible(archive);
}

bool ZorCompressOperation::PrepareArchive(int append, const ZorFileList& names) {
  if (append == 0) {
    RemoveOldArchive();
    return true;
  }
  return owner.GetOverwriteMode() != 0 || RefuseStoredNames(names);
}

bool ZorCompressOperation::RefuseStoredNames(const ZorFileList& names) {
  ZorFind everything;
  everything.AddTail("*.*");
  ZorFileList members;
  const ZorError error =
      ZorListArchiveMembers(archive, everything, members, owner.GetBackgroundMode());
  if (error == ZorErrorArchiveNotFound) return true;  // nothing is stored yet
  if (error != ZorErrorNone) return Fail(error);

  ZorNameSet stored;
  for (const CString& member : members) stored.Add(member);
  for (const CString& name : names) {
    const char* behindRoot = ZorNameBehindRoot(name);
    if (stored.Contains(behindRoot != nullptr ? CString(behindRoot) : name))
      return Fail(ZorErrorSameName);
  }
  return true;
}

void ZorCompressOperation::BeginSweep() {
  workDirectory = WorkDirectory();
  CString directory = workDirectory;
  if (directory.IsEmpty()) {
    const char* fileName = ZorGetFileName(archive);
    if (fileName != nullptr) directory = CString(archive, static_cast<int>(fileName - archive));
  }
  sweep.Begin(directory);
}

ZorCommandLine ZorCompressOperation::ArchiveLine(const char* letter, const char* ownPiece) const {
  ZorCommandLine line(letter);
  line.Piece(BackgroundPiece(" -jsb")).WorkDirectory(workDirectory).Piece(ownPiece);
  line.Operand(archive);
  return line;
}
