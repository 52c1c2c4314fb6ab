// CompressDir.cpp - ZorArchive::CompressDir: the archiver walks a directory by itself.
#include "archive/CompressOperation.h"
#include "files/Path.h"

namespace {

class CompressDirOperation final : public ZorCompressOperation {
 public:
  CompressDirOperation(ZorArchive& object, const char* source, const char* archivePath,
                       int appendMode)
      : ZorCompressOperation(object, archivePath), directory(ZorText(source)), append(appendMode) {}

 private:
  bool Work() override {
    if (!AcceptsOperand(directory)) return false;
    if (append == 0) RemoveOldArchive();
    if (!Begin(0)) return false;  // nobody knows the number of files
    BeginSweep();
    ZorCommandLine line = ArchiveLine("a", " -d1");
    return RunCommand(line.Operand(ZorDirectoryOperand(directory)));
  }

  const char* const directory;
  const int append;
};

}  // namespace

int ZorArchive::CompressDir(const char* directory, const char* archive, int append) {
  return CompressDirOperation(*this, directory, archive, append).Run();
}
