// TempSweep.cpp - compares the archiver's temporaries before and after a run.
#include "archive/TempSweep.h"

#include <new>

#include "archive/RemoveFile.h"
#include "files/NameSet.h"

ZorTempSweep::ZorTempSweep() : armed(0) {}

void ZorTempSweep::Begin(const char* watched) {
  directory = watched;
  Snapshot(snapshot);
  armed = 1;
}

void ZorTempSweep::Snapshot(ZorFileList& list) const {
  list.RemoveAll();
  if (directory.IsEmpty()) return;
  ZorFind find;
  find.SetCurrentDirectoryA(directory);
  find.SetAttribute(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                    FILE_ATTRIBUTE_ARCHIVE);
  find.SetSubDirectory(0);
  find.AddTail("lhtmp\?\?\?.lzh");
  find.Find(list, 1);
}

void ZorTempSweep::Sweep() {
  if (armed == 0) return;
  armed = 0;
  try {
    RemoveNewcomers();
  } catch (const std::bad_alloc&) {  // they stay, and the run's result is what it was
  }
}

void ZorTempSweep::RemoveNewcomers() const {
  ZorFileList present;
  Snapshot(present);
  ZorNameSet before;
  for (const CString& name : snapshot) before.Add(name);
  for (const CString& name : present) {
    if (!before.Contains(name)) ZorRemoveFileIfPossible(name);
  }
}
