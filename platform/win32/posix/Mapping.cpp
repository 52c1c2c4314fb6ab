// Mapping.cpp - memory-mapped files.
#include <sys/mman.h>

#include <cerrno>
#include <map>
#include <mutex>

#include "platform/base/Clock.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;
using kozor::JoinHalves;

class Mapping : public Closable {
 public:
  Mapping(std::shared_ptr<File> mappedFile, std::uint64_t mappedSize, bool mayWrite)
      : file(std::move(mappedFile)), size(mappedSize), writable(mayWrite) {}

  int Descriptor() const { return file->Descriptor(); }
  std::uint64_t Size() const { return size; }
  bool IsWritable() const { return writable; }

 private:
  std::shared_ptr<File> file;  // kept open by the mapping
  std::uint64_t size;          // bytes
  bool writable;
};

// Lengths of the views of the process, by address: munmap needs them.
struct Views {
  std::mutex lock;
  std::map<const void*, std::size_t> lengths;
};

Views& TheViews() {
  static Views& views = *new Views;
  return views;
}

constexpr std::uint64_t kOffsetUnit = 0x10000;

// Grows the file to `wanted` bytes if it is shorter.
bool MakeRoom(const File& file, std::uint64_t fileSize, std::uint64_t wanted, bool writable) {
  if (wanted <= fileSize) return true;
  if (!writable) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  return GrowReserved(file.Descriptor(), fileSize, wanted) || FailErrno();
}

}  // namespace

HANDLE WINAPI CreateFileMappingA(HANDLE handle, LPSECURITY_ATTRIBUTES security, DWORD protection,
                                 DWORD sizeHigh, DWORD sizeLow, LPCSTR name) {
  const bool writable = protection == PAGE_READWRITE;
  if ((!writable && protection != PAGE_READONLY) || name != nullptr || security != nullptr) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  auto file = FindReadable(handle);
  if (!file || (writable && !FindWritable(handle))) return nullptr;
  Metadata metadata;
  if (!ReadMetadata(file->Descriptor(), metadata)) {
    FailErrno();
    return nullptr;
  }
  const std::uint64_t asked = JoinHalves(sizeHigh, sizeLow);
  const std::uint64_t size = asked != 0 ? asked : metadata.size;
  if (size == 0) {
    SetLastError(ERROR_FILE_INVALID);
    return nullptr;
  }
  if (!MakeRoom(*file, metadata.size, size, writable)) return nullptr;
  SetLastError(ERROR_SUCCESS);
  return AddHandle(std::make_shared<Mapping>(std::move(file), size, writable));
}

LPVOID WINAPI MapViewOfFile(HANDLE handle, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                            SIZE_T bytes) {
  const auto mapping = FindObject<Mapping>(handle);
  if (!mapping) return nullptr;
  const std::uint64_t offset = JoinHalves(offsetHigh, offsetLow);
  const bool writes = access == FILE_MAP_WRITE;
  const auto refuse = [](DWORD error) {
    SetLastError(error);
    return nullptr;
  };
  if (!writes && access != FILE_MAP_READ) return refuse(ERROR_INVALID_PARAMETER);
  if (offset % kOffsetUnit != 0) return refuse(ERROR_MAPPED_ALIGNMENT);
  const bool inside = offset < mapping->Size() && bytes <= mapping->Size() - offset;
  if (!inside || (writes && !mapping->IsWritable())) return refuse(ERROR_ACCESS_DENIED);

  const std::size_t length = bytes != 0 ? bytes : mapping->Size() - offset;
  const int protection = writes ? PROT_READ | PROT_WRITE : PROT_READ;
  void* const view = Calls().mmap(nullptr, length, protection, MAP_SHARED, mapping->Descriptor(),
                                  static_cast<off_t>(offset));
  if (view == MAP_FAILED) return refuse(ErrorFromErrno(errno));
  Views& views = TheViews();
  const std::lock_guard guard(views.lock);
  views.lengths[view] = length;
  return view;
}

BOOL WINAPI UnmapViewOfFile(LPCVOID view) {
  Views& views = TheViews();
  const std::lock_guard guard(views.lock);
  const auto found = views.lengths.find(view);
  if (found == views.lengths.end()) return Fail(ERROR_INVALID_ADDRESS);
  ::munmap(const_cast<void*>(view), found->second);
  views.lengths.erase(found);
  return TRUE;
}
