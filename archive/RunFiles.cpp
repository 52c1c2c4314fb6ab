// RunFiles.cpp - writes the response file, compares the archiver's temporaries before and after a
// run, and removes both.
#include "archive/RunFiles.h"

#include "files/Failure.h"
#include "files/NameSet.h"

ZorResponseWriter::ZorResponseWriter(const CString& directory)
    : path(directory + "~$ZORARC.RSP"), complete(false) {}

ZorResponseWriter::~ZorResponseWriter() {
  if (complete) DeleteFileA(path);
}

void ZorResponseWriter::Write(const ZorFileList& names) {
  CStdioFile file;
  if (!file.Open(path,
                 CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive | CFile::typeText)) {
    throw ZorFailure{ZorErrorFileOpen};
  }
  for (const CString& name : names) file.WriteString("\"" + name + "\"\n");
  file.Close();
  complete = true;
}

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
  ZorGuard([&] { RemoveNewcomers(); });  // a failure here doesn't change the result
}

void ZorTempSweep::RemoveNewcomers() const {
  ZorFileList present;
  Snapshot(present);
  ZorNameSet before;
  for (const CString& name : snapshot) before.Add(name);
  for (const CString& name : present) {
    if (!before.Contains(name)) DeleteFileA(name);
  }
}
