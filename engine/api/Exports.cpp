// Exports.cpp - the thirteen entry points: they convert, call, and translate failures.
#include <atomic>
#include <exception>
#include <new>
#include <span>
#include <string>

#include "engine/api/ArchiveHandles.h"
#include "engine/api/Records.h"
#include "engine/api/Unlha32.h"
#include "engine/commands/Archiver.h"
#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"

namespace {

using kozor::api::ArchiveHandles;
using kozor::container::Failure;
using kozor::container::ResultCode;

constexpr int kNoMember = -1;
constexpr int kInvalidHandle = static_cast<int>(ResultCode::InvalidHandle);
constexpr std::uint32_t kSearchBelow = 0x200;  // mode bit of UnlhaOpenArchive

// The module's state while it is loaded.
struct ProcessState {
  kozor::commands::Archiver archiver;
  ArchiveHandles handles;
  std::atomic<bool> isRunning{false};
  std::atomic<UnlhaCallback> callback{nullptr};
  std::atomic<int> cursorMode{0};
};
ProcessState state;

// One command at a time in a process.
class Run {
 public:
  Run() {
    if (state.isRunning.exchange(true)) throw Failure(ResultCode::AlreadyRunning);
  }
  ~Run() { state.isRunning = false; }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
};

// Calls `work` and returns the code of its exception, or Ok.
template <typename Work>
int CodeOf(Work work) noexcept {
  try {
    work();
    return static_cast<int>(ResultCode::Ok);
  } catch (const Failure& failure) {
    return static_cast<int>(failure.code);
  } catch (const std::exception&) {  // std::bad_alloc, or a size that no container can have
    return static_cast<int>(ResultCode::NotEnoughMemory);
  } catch (...) {  // only a callback throws anything else
    return static_cast<int>(ResultCode::Cancelled);
  }
}

// The current callback as a listener; empty if there is none.
kozor::commands::ProgressListener Listener() {
  const UnlhaCallback callback = state.callback;
  if (callback == nullptr) return {};
  return [callback](const kozor::commands::ProgressEvent& event) {
    return kozor::api::TellCallback(callback, event);
  };
}

int ResultOf(ArchiveHandles::Found found) {
  switch (found) {
    case ArchiveHandles::Found::Member:
      return 0;
    case ArchiveHandles::Found::None:
      return kNoMember;
    case ArchiveHandles::Found::InvalidHandle:
      break;
  }
  return kInvalidHandle;
}

}  // namespace

int WINAPI UnlhaGetRunning() {
  return state.isRunning ? 1 : 0;
}

int WINAPI Unlha(HWND, const char* command, char*, std::uint32_t) {
  return CodeOf([&] {
    const Run run;
    state.archiver.Run(command != nullptr ? command : "", Listener());
  });
}

int WINAPI UnlhaCheckArchive(const char* path, int) {
  const int code = CodeOf([&] {
    kozor::container::File file;
    if (path == nullptr || !file.Open(path, kozor::container::File::Mode::Read)) {
      throw Failure(ResultCode::ArchiveNotOpened);
    }
    kozor::container::BufferedFile source(file);
    if (!kozor::container::IsArchive(source)) throw Failure(ResultCode::HeaderDamaged);
  });
  return code == 0 ? 1 : 0;
}

int WINAPI UnlhaSetOwnerWindowEx(HWND, UnlhaCallback callback) {
  if (callback == nullptr || state.isRunning) return 0;
  state.callback = callback;
  state.archiver.BeginOperation();
  return 1;
}

int WINAPI UnlhaKillOwnerWindowEx(HWND) {
  state.callback = nullptr;
  state.archiver.EndOperation();
  return 1;
}

int WINAPI UnlhaSetCursorMode(int mode) {
  return state.cursorMode.exchange(mode);
}

HARC WINAPI UnlhaOpenArchive(HWND, const char* path, std::uint32_t mode) {
  HARC handle = nullptr;
  CodeOf([&] {
    const auto depth = (mode & kSearchBelow) != 0 ? ArchiveHandles::Depth::AndBelow
                                                  : ArchiveHandles::Depth::ThisDirectory;
    if (path != nullptr) handle = state.handles.Add(state.archiver.Open(path), depth);
  });
  return handle;
}

int WINAPI UnlhaCloseArchive(HARC archive) {
  return state.handles.Remove(archive) ? 0 : kInvalidHandle;
}

int WINAPI UnlhaFindFirst(HARC archive, const char* text, UnlhaMemberRecord* record) {
  if (text == nullptr || record == nullptr) return kNoMember;
  auto found = ArchiveHandles::Found::None;
  const int code = CodeOf([&] { found = state.handles.FindFirst(archive, text, *record); });
  return code != 0 ? code : ResultOf(found);
}

int WINAPI UnlhaFindNext(HARC archive, UnlhaMemberRecord* record) {
  if (record == nullptr) return kNoMember;
  auto found = ArchiveHandles::Found::None;
  const int code = CodeOf([&] { found = state.handles.FindNext(archive, *record); });
  return code != 0 ? code : ResultOf(found);
}

int WINAPI UnlhaGetAttribute(HARC archive) {
  const auto attribute = state.handles.Attribute(archive);
  return attribute ? *attribute : -1;
}

int WINAPI UnlhaExtractMem(HWND, const char* command, std::uint8_t* buffer, std::uint32_t size,
                           std::int32_t* time, std::uint16_t* attribute, std::uint32_t* written) {
  kozor::commands::ExtractedMember member;
  const int code = CodeOf([&] {
    const Run run;
    state.archiver.ExtractToMemory(command != nullptr ? command : "",
                                   {buffer, buffer != nullptr ? size : 0}, Listener(), member);
  });
  if (time != nullptr) *time = member.unixTime;
  if (attribute != nullptr) *attribute = member.attribute;
  if (written != nullptr) *written = member.written;
  return code;
}

int WINAPI UnlhaCompressMem(HWND, const char* command, const std::uint8_t* data, std::uint32_t size,
                            const std::int32_t* time, const std::uint16_t* attribute,
                            std::uint32_t* written) {
  kozor::commands::MemoryMember member;
  if (time != nullptr) member.unixTime = *time;
  if (attribute != nullptr) member.attribute = *attribute;
  std::uint32_t packedBytes = 0;
  const int code = CodeOf([&] {
    const Run run;
    if (data == nullptr && size != 0) throw Failure(ResultCode::CannotRead);
    if (size != 0) member.data = {data, size};
    packedBytes =
        state.archiver.CompressFromMemory(command != nullptr ? command : "", member, Listener());
  });
  if (written != nullptr) *written = packedBytes;
  return code;
}
