// ResponseFile.cpp - writes the list of names for the archiver, and takes it away again.
#include "archive/ResponseFile.h"

#include <new>

#include "archive/Errors.h"
#include "archive/RemoveFile.h"

ZorResponseFile::ZorResponseFile(const CString& directory)
    : path(directory + "~$ZORARC.RSP"), complete(false) {}

ZorResponseFile::~ZorResponseFile() {
  if (complete) ZorRemoveFileIfPossible(path);
}

ZorError ZorResponseFile::Write(const ZorFileList& names) {
  CStdioFile file;
  if (!file.Open(path,
                 CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive | CFile::typeText)) {
    return ZorErrorFileOpen;
  }
  try {
    for (const CString& name : names) file.WriteString("\"" + name + "\"\n");
    file.Close();
  } catch (CException* exception) {
    const ZorError error = ZorErrorFromException(*exception);
    exception->Delete();
    return error;
  } catch (const std::bad_alloc&) {
    return ZorErrorFileFailure;
  }
  complete = true;
  return ZorErrorNone;
}
