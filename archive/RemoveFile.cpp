// RemoveFile.cpp - see RemoveFile.h.
#include "archive/RemoveFile.h"

#include "platform/classlib/ClassLib.h"

void ZorRemoveFileIfPossible(const char* path) {
  try {
    CFile::Remove(path);
  } catch (CException* exception) {
    exception->Delete();
  }
}
