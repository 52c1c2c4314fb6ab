// MappedFile.cpp - creates, maps, trims and closes a target file.
#include "archive/MappedFile.h"

#include <limits>
#include <utility>

ZorMappedFile::ZorMappedFile(const char* target, std::uint32_t finalSize)
    : path(target),
      size(finalSize),
      file(INVALID_HANDLE_VALUE),
      mapping(nullptr),
      view(nullptr),
      systemError(0) {}

unsigned char* ZorMappedFile::Map() {
  systemError = 0;
  if (!Open()) {
    systemError = GetLastError();
    Close();
  }
  return static_cast<unsigned char*>(view);
}

bool ZorMappedFile::Open() {
  // Size and slack together must fit in 32 bits; otherwise the file isn't touched.
  if (size > std::numeric_limits<std::uint32_t>::max() - kSlack) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
  }
  file = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  mapping = CreateFileMappingA(file, nullptr, PAGE_READWRITE, 0, Capacity(), nullptr);
  if (mapping == nullptr) return false;
  view = MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0);
  return view != nullptr;
}

ZorMappedFile::~ZorMappedFile() {
  Finish();
}

// A file can't be trimmed while it is mapped.
bool ZorMappedFile::Finish(const FILETIME* lastWrite) {
  if (view != nullptr) UnmapViewOfFile(view);
  view = nullptr;
  if (mapping != nullptr) CloseHandle(mapping);
  mapping = nullptr;
  const bool trimmed = file == INVALID_HANDLE_VALUE || Trim();
  if (!trimmed) systemError = GetLastError();
  if (lastWrite != nullptr) SetFileTime(file, nullptr, nullptr, lastWrite);
  const bool closed = Close();
  if (trimmed && !closed) systemError = GetLastError();
  return trimmed && closed;
}

bool ZorMappedFile::Trim() {
  LONG high = 0;
  return SetFilePointer(file, static_cast<LONG>(size), &high, FILE_BEGIN) == size &&
         SetEndOfFile(file);
}

bool ZorMappedFile::Close() {
  if (mapping != nullptr) CloseHandle(std::exchange(mapping, nullptr));
  return file == INVALID_HANDLE_VALUE || CloseHandle(std::exchange(file, INVALID_HANDLE_VALUE));
}
