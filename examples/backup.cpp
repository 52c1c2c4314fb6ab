// backup.cpp - stores a directory on volumes of a given size, one file per volume, and restores the
// set.
//
//   backup DIRECTORY PREFIX BYTES DESTINATION      (volumes: PREFIX1.vol, PREFIX2.vol ...)
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "ZorMultiVolume.h"

class Set : public ZorMultiVolume {
 public:
  Set(std::string namePrefix, unsigned long volumeBytes)
      : prefix(std::move(namePrefix)), bytes(volumeBytes) {}

 private:
  CString OnMakeVolumeName(int number) override {
    return (prefix + std::to_string(number) + ".vol").c_str();
  }

  unsigned long OnQueryDiskSpace(const char*) override { return bytes; }

  // Volumes are plain files here and always available.  A program with real media would ask for
  // medium param.volume + 1.
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase != PhaseVolume || param.volumeResult == VolumeFirstAsk) return 0;
    std::fprintf(stderr, "volume %d can't be used: %d\n", param.volume + 1, param.volumeResult);
    return 1;
  }

  std::string prefix;
  unsigned long bytes;
};

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  ZorFind find;
  find.SetCurrentDirectoryA(argv[1]);
  find.AddTail("*.*");
  Set set(argv[2], std::strtoul(argv[3], nullptr, 10));
  if (!set.Backup(find, nullptr) || !set.Restore(nullptr, argv[4])) {
    std::fprintf(stderr, "error %d\n", set.GetError());
    return 1;
  }
}
