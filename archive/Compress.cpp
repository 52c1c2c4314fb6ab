// Compress.cpp - ZorArchive::Compress: adds selected files to an archive.
#include "archive/AddOperation.h"
#include "files/NameSet.h"
#include "files/Path.h"

namespace {

class CompressOperation final : public ZorAddOperation {
 public:
  CompressOperation(ZorArchive& object, const ZorFind& selection, const char* archivePath,
                    int appendMode, int convert)
      : ZorAddOperation(object, archivePath),
        find(selection),
        append(appendMode),
        selfExtracting(convert) {}

 private:
  void Work() override {
    SelectFiles();
    if (FilesMeet()) throw ZorFailure{ZorErrorSameName};
    RequireSoundOperand(find.GetCurrentDirectoryA());
    PrepareArchive(append, files);
    if (files.IsEmpty()) throw ZorStopped{};
    Begin(files.GetCount());
    BeginSweep();
    baseDirectory = ZorDirectoryText(find.GetCurrentDirectoryA());
    AddFiles();
    if (selfExtracting != 0) Convert();
  }

  // Names below the base directory are relative to it.
  void SelectFiles() {
    ZorFind filesOnly(find);
    filesOnly.SetAttribute(find.GetAttribute() &
                           ~static_cast<unsigned int>(FILE_ATTRIBUTE_DIRECTORY));
    filesOnly.Find(files, 0);
  }

  // Whether two files on different roots would be stored under the same name.
  bool FilesMeet() const {
    ZorNameSet storedNames;
    for (const CString& name : files) {
      const char* behindRoot = ZorNameBehindRoot(name);
      if (behindRoot != nullptr && !storedNames.Add(behindRoot)) return true;
    }
    return false;
  }

  // A response file is written only to a work directory, never beside the archive.
  void AddFiles() {
    const CString work = ZorDirectoryText(workDirectory);
    if (MayUseResponseFile() && !work.IsEmpty()) {
      AddByResponseFile(work);
    } else {
      AddOneByOne();
    }
  }

  void AddByResponseFile(const CString& work) {
    ZorResponseWriter names(work);
    names.Write(files);
    ZorLineBuilder line = ArchiveLine("a");
    if (!baseDirectory.IsEmpty()) line.Operand(baseDirectory);
    RunCommand(line.ResponseOperand(names.Path()));
  }

  // Files added before a failure stay in the archive.
  void AddOneByOne() {
    for (const CString& name : files) {
      ZorLineBuilder line = ArchiveLine("a");
      if (!baseDirectory.IsEmpty() && ZorIsFullPath(name) == 0) line.Operand(baseDirectory);
      RunCommand(line.Operand(name));
    }
  }

  // On failure the archive stays; it is complete by now.
  void Convert() {
    ZorLineBuilder line = ZorLineBuilder::Conversion();
    RunSilently(line.Operand(archive).Operand(ArchiveFolder()));
  }

  // The archive's path up to its last backslash, or all of it when it has none.
  CString ArchiveFolder() const {
    const char* directory;
    const char* name;
    ZorSplitPath(archive, nullptr, &directory, &name);
    const bool hasBackslash = directory != nullptr && name != nullptr;
    return hasBackslash ? CString(archive, static_cast<int>(name - archive)) : CString(archive);
  }

  const ZorFind& find;
  const int append;
  const int selfExtracting;
  ZorFileList files;
  CString baseDirectory;  // with its trailing backslash, or empty
};

}  // namespace

int ZorArchive::Compress(const ZorFind& find, const char* archive, int append, int selfExtracting) {
  return CompressOperation(*this, find, archive, append, selfExtracting).Run();
}
