// quickstart.cpp - the shortest useful program: compress a folder, extract it again.
//
//   quickstart FOLDER ARCHIVE DESTINATION     (library paths: C:\data, C:\data.lzh, C:\restored)
#include <cstdio>

#include "ZorArchive.h"
#include "ZorFileServices.h"

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  ZorFind find;
  find.SetCurrentDirectoryA(argv[1]);
  find.AddTail("*.*");
  // With a work directory all files go to the archiver in one run; without one, each in its own.
  const ZorTempDirectory work(CString(argv[2]) + ".work", 1);
  ZorArchive archive;
  archive.SetWorkDirectory(work);
  if (!archive.Compress(find, argv[2], 0, 0) || !archive.Extract(argv[2], argv[3], nullptr)) {
    std::fprintf(stderr, "error %d, see ZorError.h\n", archive.GetError());
    return 1;
  }
}
