// MultiVolume.cpp - the volume object: its three identity strings and the default hooks.
#include "ZorMultiVolume.h"

#include <cstring>
#include <utility>

#include "files/Path.h"

namespace {

// Invariant, even if the allocation throws: the buffer is null exactly if the length is 0.
void ReplaceBytes(unsigned char*& buffer, int& bufferLength, const unsigned char* data,
                  int length) {
  delete[] std::exchange(buffer, nullptr);
  bufferLength = 0;
  if (length < 1) return;
  buffer = new unsigned char[static_cast<std::size_t>(length)];
  std::memcpy(buffer, data, static_cast<std::size_t>(length));
  bufferLength = length;
}

}  // namespace

ZorMultiVolume::ZorMultiVolume()
    : error(ZorErrorNone),
      applicationId(nullptr),
      applicationIdLength(0),
      volumeLabel(nullptr),
      volumeLabelLength(0),
      memo(nullptr),
      memoLength(0),
      backupVersion(101) {}

// Delegates to the default constructor, so that the destructor runs if copying a string throws.
ZorMultiVolume::ZorMultiVolume(const ZorMultiVolume& other) : ZorMultiVolume() {
  *this = other;
}

ZorMultiVolume& ZorMultiVolume::operator=(const ZorMultiVolume& other) {
  if (this == &other) return *this;
  error = other.error;
  SetAppricationID(other.applicationId, other.applicationIdLength);
  SetVolume(other.volumeLabel, other.volumeLabelLength);
  SetMemo(other.memo, other.memoLength);
  backupVersion = other.backupVersion;
  return *this;
}

ZorMultiVolume::~ZorMultiVolume() {
  delete[] applicationId;
  delete[] volumeLabel;
  delete[] memo;
}

ZorError ZorMultiVolume::GetError() const {
  return error;
}

void ZorMultiVolume::SetAppricationID(const unsigned char* data, int length) {
  ReplaceBytes(applicationId, applicationIdLength, data, length);
}

void ZorMultiVolume::SetVolume(const unsigned char* data, int length) {
  ReplaceBytes(volumeLabel, volumeLabelLength, data, length);
}

void ZorMultiVolume::SetMemo(const unsigned char* data, int length) {
  ReplaceBytes(memo, memoLength, data, length);
}

void ZorMultiVolume::SetBackupVersion(int version) {
  backupVersion = version;
}

int ZorMultiVolume::OnAbort(const ONABORTPARAM&) {
  return 0;
}

int ZorMultiVolume::OnCheckVolume(int, const unsigned char*, int) {
  return 1;
}

CString ZorMultiVolume::OnMakeFileName(const char* destination, const char* name) {
  return ZorIsFullPath(name) != 0 ? CString(name) : CString(destination) + name;
}

CString ZorMultiVolume::OnMakeVolumeName(int) {
  return {};
}

// 1 for *no* error: see the header.
int ZorMultiVolume::IsError() const {
  return error == ZorErrorNone ? 1 : 0;
}
