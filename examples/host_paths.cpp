// host_paths.cpp - accepts host paths in UTF-8 and reports errors as text.
//
//   host_paths DIRECTORY ARCHIVE       (Linux: /home/me/data, data.lzh)
#include <cstdio>
#include <string>

#include "ZorArchive.h"
#include "platform/win32/PosixAdmin.h"

namespace {

// On Windows host paths are library paths.
std::string LibraryPath(const char* path) {
#ifdef _WIN32
  return path;
#else
  std::string result;
  return KzHostToLibraryPath(path, result) ? result : "";
#endif
}

const char* Text(ZorError error) {
  switch (error) {
    case ZorErrorEngineUnavailable:
      return "the archiver UNLHA32.DLL isn't there";
    case ZorErrorDiskFull:
      return "the disk is full";
    case ZorErrorFileOpen:
      return "a file can't be opened";
    case ZorErrorCanceled:
      return "nothing is selected";
    case ZorErrorSameName:
      return "two files have one name";
    default:
      return "see ZorError.h";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
#ifndef _WIN32
  KzSetActiveCodePage(65001);
#endif
  ZorFind find;
  find.SetCurrentDirectoryA(LibraryPath(argv[1]).c_str());
  find.AddTail("*.*");
  ZorArchive archive;
  if (!archive.Compress(find, LibraryPath(argv[2]).c_str(), 0, 0)) {
    std::fprintf(stderr, "%s: %s (error %d)\n", argv[2], Text(archive.GetError()),
                 archive.GetError());
    return 1;
  }
}
