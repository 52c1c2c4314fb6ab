// Archive.cpp - see Archive.h.
#include "Archive.h"

#include <algorithm>

#include "Failure.h"
#include "Host.h"

namespace kozor::program {

void Archive::Require(int succeeded, const std::string& name) const {
  if (succeeded) return;
  StopIfAsked();
  std::string text = Visible(name) + ": ";
  if (!currentName.empty()) text += VisibleLibraryName(currentName) + ": ";
  throw Failure(text + std::string(ErrorText(GetError())));
}

int Archive::OnAbort(const ONABORTPARAM& param) {
  const char* name = param.memberName != nullptr ? param.memberName : param.fileName;
  if (param.phase == PhaseEnd) {
    HideProgress();
    return 0;
  }
  if (param.phase != PhaseBegin && name != nullptr) currentName = name;
  if (param.phase == PhaseFileBegin || param.phase == PhaseFileRunning) {
    progress.Running(param.bytesDone, currentName);
  } else if (param.phase == PhaseFileEnd) {
    progress.Running(param.bytesTotal, currentName);
    progress.FileEnds(param.bytesTotal);
    Mention(currentName);
  }
  return StopSignal();
}

// Holds a handle of the archiver, which keeps the module loaded and the file open, so that they
// aren't looked up, opened and locked for each member.  Best effort: reading works without it.
class MemberReader::KeptOpen {
 public:
  explicit KeptOpen(const std::string& archive) : module(LoadLibraryA("UNLHA32.DLL")) {
    const auto open = Entry<void * WINAPI(HWND, const char*, std::uint32_t)>("UnlhaOpenArchive");
    if (open != nullptr) handle = open(nullptr, archive.c_str(), 0);
  }
  ~KeptOpen() {
    const auto close = Entry<int WINAPI(void*)>("UnlhaCloseArchive");
    if (close != nullptr && handle != nullptr) close(handle);
    if (module != nullptr) FreeLibrary(module);
  }
  KeptOpen(const KeptOpen&) = delete;
  KeptOpen& operator=(const KeptOpen&) = delete;

 private:
  template <typename Function>
  Function* Entry(const char* entryName) const {
    if (module == nullptr) return nullptr;
    return reinterpret_cast<Function*>(
        reinterpret_cast<void (*)()>(GetProcAddress(module, entryName)));
  }

  HMODULE module;
  void* handle = nullptr;
};

MemberReader::MemberReader(std::string path, std::string shownName, std::uint64_t totalBytes)
    : archive(std::move(path)),
      name(std::move(shownName)),
      progress(totalBytes),
      keptOpen(std::make_unique<KeptOpen>(archive)) {
  if (IsEnabled() == 0) throw Failure(std::string(ErrorText(ZorErrorEngineUnavailable)));
}

MemberReader::~MemberReader() {
  HideProgress();
}

void MemberReader::Unpack(const Member& member, std::span<unsigned char> target) {
  unsigned char nothing = 0;
  unsigned char* const buffer = target.empty() ? &nothing : target.data();
  const int done = ExtractMem(archive.c_str(), member.name.c_str(), buffer,
                              static_cast<unsigned long>(target.size()));
  StopIfAsked();
  if (!done) {
    const std::string cause(ErrorText(GetError()));
    if (EndsTheRun(GetError())) throw Failure(Visible(name) + ": " + cause);
    throw FileFailure(cause);
  }
  progress.FileEnds(member.size);
}

int MemberReader::OnAbort(const ONABORTPARAM& param) {
  const bool under = param.phase == PhaseFileBegin || param.phase == PhaseFileRunning;
  if (under && param.memberName != nullptr) progress.Running(param.bytesDone, param.memberName);
  return StopSignal();
}

std::string MemberName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

void RequireArchive(const std::string& archive, const std::string& name) {
  ZorArchive object;
  const ZorError missing = object.IsEnabled() ? ZorErrorEngine8019 : ZorErrorEngineUnavailable;
  if (!object.IsArchive(archive.c_str())) {
    throw Failure(Visible(name) + ": " + std::string(ErrorText(missing)));
  }
}

}  // namespace kozor::program
