// FileListStream.cpp - stores a list of files in a CArchive stream, or prints one, for
// tests/exchange.
//
//   kozor_file_list save DIRECTORY STREAM
//   kozor_file_list show STREAM
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "ZorFind.h"
#include "tests/support/Host.h"

namespace {

CString LibraryPath(const char* path) {
  return kozor::test::LibraryPathOf(std::filesystem::absolute(path)).c_str();
}

// Numbers of each width, and beside them the list.
constexpr DWORD kMark = 0x89ABCDEF;

void Save(const char* directory, const char* stream) {
  ZorFind find;
  find.SetCurrentDirectoryA(LibraryPath(directory));
  find.AddTail("*.*");
  ZorFileList list;
  find.Find(list, 0);
  CFile file(LibraryPath(stream), CFile::modeCreate | CFile::modeWrite);
  CArchive archive(&file, CArchive::store);
  archive << kMark << WORD{0x4567} << BYTE{0x23};
  list.Serialize(archive);
  archive.Close();
}

void Show(const char* stream) {
  CFile file(LibraryPath(stream), CFile::modeRead);
  CArchive archive(&file, CArchive::load);
  DWORD mark = 0;
  WORD word = 0;
  BYTE byte = 0;
  ZorFileList list;
  archive >> mark >> word >> byte;
  list.Serialize(archive);
  std::printf("%x %x %x, %d names\n", static_cast<unsigned>(mark), word, byte, list.GetCount());
  for (const CString& name : list) std::puts(name);
}

}  // namespace

int main(int argc, char** argv) try {
  const std::string_view verb = argc > 2 ? argv[1] : "";
  if (verb == "save" && argc == 4) {
    Save(argv[2], argv[3]);
  } else if (verb == "show" && argc == 3) {
    Show(argv[2]);
  } else {
    return 2;
  }
} catch (CException* error) {
  std::fprintf(stderr, "the stream can't be stored or loaded\n");
  error->Delete();
  return 1;
}
