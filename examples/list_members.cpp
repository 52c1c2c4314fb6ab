// list_members.cpp - lists an archive by extracting it and skipping every member.
//
//   list_members ARCHIVE
#include <cstdio>

#include "ZorArchive.h"

class Lister : public ZorArchive {
  CString OnMakeFileName(const char*, const char*) override { return ""; }  // skips every member

  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileBegin)
      std::printf("%10u  %s\n", param.memberSize, param.memberName);
    return 0;
  }
};

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  Lister archive;
  if (!archive.Extract(argv[1], "C:\\", nullptr)) {
    std::fprintf(stderr, "error %d\n", archive.GetError());
    return 1;
  }
}
