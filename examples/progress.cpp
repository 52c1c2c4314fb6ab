// progress.cpp - makes an archive, shows the progress, and stops at Ctrl-C.  A stopped run leaves
// the archive unchanged.
//
//   progress DIRECTORY ARCHIVE WORK-DIRECTORY
#include <csignal>
#include <cstdio>

#include "ZorArchive.h"

namespace {

volatile std::sig_atomic_t stop = 0;

class Shown : public ZorArchive {
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileEnd) {
      std::printf("\r%d of %d files", param.filesDone, param.filesTotal);
      std::fflush(stdout);
    }
    return stop;
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::signal(SIGINT, [](int) { stop = 1; });
  ZorFind find;
  find.SetCurrentDirectoryA(argv[1]);
  find.AddTail("*.*");
  Shown archive;
  archive.SetWorkDirectory(argv[3]);  // without it the archiver runs once per file
  const int done = archive.Compress(find, argv[2], 1, 0);
  std::puts("");
  if (archive.GetError() == ZorErrorCanceled) std::puts("stopped");
  return done ? 0 : 1;
}
