// CompressDir.cpp - ZorArchive::CompressDir: the archiver walks a directory by itself.
#include "archive/AddOperation.h"
#include "files/Path.h"

namespace {

class CompressDirOperation final : public ZorAddOperation {
 public:
  CompressDirOperation(ZorArchive& object, const char* source, const char* archivePath,
                       int appendMode)
      : ZorAddOperation(object, archivePath), directory(ZorText(source)), append(appendMode) {}

 private:
  void Work() override {
    RequireSoundOperand(directory);
    if (append == 0) RemoveOldArchive();
    Begin(0);  // the number of files is unknown
    BeginSweep();
    ZorLineBuilder line = ArchiveLine("a", " -d1");
    RunCommand(line.Operand(ZorDirectoryText(directory)));
  }

  const char* const directory;
  const int append;
};

}  // namespace

int ZorArchive::CompressDir(const char* directory, const char* archive, int append) {
  return CompressDirOperation(*this, directory, archive, append).Run();
}
