// TempDirectory.cpp - ties the life of a directory to the life of an object.
#include "ZorFileServices.h"
#include "files/Path.h"

ZorTempDirectory::ZorTempDirectory(const char* directory, int open) : path(directory), opened(0) {
  if (open) Open();
}

ZorTempDirectory::ZorTempDirectory(const ZorTempDirectory& other) = default;

ZorTempDirectory& ZorTempDirectory::operator=(const ZorTempDirectory& other) = default;

ZorTempDirectory::~ZorTempDirectory() {
  Close();
}

int ZorTempDirectory::SetPath(const char* directory) {
  if (opened) return 0;
  path = directory;
  return 1;
}

int ZorTempDirectory::Open() {
  const char* root;
  const char* directory;
  ZorSplitPath(path, &root, &directory, nullptr);
  if (root == nullptr || directory == nullptr) return 0;
  if (directory[0] != '\\' || directory[1] == '\0') return 0;
  if (!opened) {
    ZorCreateDirectory(path, 0, &created);
    opened = 1;
  }
  return IsOpen();
}

int ZorTempDirectory::IsOpen() const {
  CFileStatus status;
  return opened && CFile::GetStatus(path, status) && (status.m_attribute & CFile::directory) != 0;
}

void ZorTempDirectory::Close() {
  if (!opened) return;
  if (!created.IsEmpty()) ZorRemoveDirectory(created, 0);
  opened = 0;
}

ZorTempDirectory::operator const char*() const {
  return path;
}
