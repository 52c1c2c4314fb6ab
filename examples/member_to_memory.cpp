// member_to_memory.cpp - unpacks one member into memory and writes it to standard output.
//
//   member_to_memory ARCHIVE MEMBER
#include <cstdio>
#include <vector>

#include "ZorArchive.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  ZorArchive archive;
  unsigned long size = 0;
  if (!archive.GetFileInfo(argv[1], argv[2], &size, nullptr, nullptr)) {
    std::fprintf(stderr, "no member of this name: error %d\n", archive.GetError());
    return 1;
  }
  std::vector<unsigned char> bytes(size + 1);  // so that data() isn't null for an empty member
  if (!archive.ExtractMem(argv[1], argv[2], bytes.data(), size)) {
    std::fprintf(stderr, "not unpacked: error %d\n", archive.GetError());
    return 1;
  }
  std::fwrite(bytes.data(), 1, size, stdout);
}
