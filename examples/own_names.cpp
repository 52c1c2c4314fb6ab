// own_names.cpp - extracts all members into one directory, dropping the directories from their
// names; of several members of one name it keeps the first.
//
//   own_names ARCHIVE DIRECTORY
#include <cstdio>
#include <set>
#include <string>

#include "ZorArchive.h"
#include "platform/win32/PosixAdmin.h"

class Flat : public ZorArchive {
  CString OnMakeFileName(const char* directory, const char* name) override {
    // In UTF-8 a backslash is never part of another character.
    const std::string whole = name;
    const std::string file = whole.substr(whole.rfind('\\') + 1);
    if (!taken.insert(file).second) return "";  // the first one stays
    return (directory + file).c_str();
  }

  std::set<std::string> taken;
};

int main(int argc, char** argv) {
  if (argc != 3) return 2;
#ifndef _WIN32
  KzSetActiveCodePage(65001);
#endif
  Flat archive;
  if (!archive.Extract(argv[1], argv[2], nullptr)) {
    std::fprintf(stderr, "error %d\n", archive.GetError());
    return 1;
  }
}
