// RecordedArchive.cpp - see RecordedArchive.h.
#include "RecordedArchive.h"

#include <sstream>
#include <stdexcept>
#include <utility>

namespace kozor::test {

namespace {

std::string Shown(const char* text) {
  return text == nullptr ? "-" : "'" + std::string(text) + "'";
}

Recording& RecordingOf(HMODULE module) {
  if (module == nullptr) throw std::runtime_error("the recording archiver can't be loaded");
  using Function = Recording* (*)();
  using AnyFunction = void (*)();
  const auto any = reinterpret_cast<AnyFunction>(GetProcAddress(module, "RecordingOfArchiver"));
  return *reinterpret_cast<Function>(any)();
}

}  // namespace

int RecordedArchive::OnAbort(const ONABORTPARAM& param) {
  std::ostringstream line;
  line << "OnAbort " << param.kind << ' ' << param.phase << ' ' << param.filesDone << '/'
       << param.filesTotal << ' ' << param.bytesDone << '/' << param.bytesTotal << ' '
       << Shown(param.archive) << ' ' << Shown(param.fileName);
  if (param.memberName != nullptr) {
    line << ' ' << Shown(param.memberName) << ' ' << param.memberSize << std::hex << ' '
         << param.memberDate << ' ' << param.memberTime << ' '
         << static_cast<int>(param.memberAttribute);
  }
  recording.Log(line.str());
  if (inPhase) inPhase(param.phase);
  return stopAt-- == 0 ? 1 : 0;
}

CString RecordedArchive::OnMakeFileName(const char* directory, const char* name) {
  recording.Log("OnMakeFileName " + Shown(directory) + ' ' + Shown(name));
  return makeName ? makeName(name) : ZorArchive::OnMakeFileName(directory, name);
}

ArchiveRecorded::ArchiveRecorded()
    : module(LoadLibraryA("UNLHA32.DLL")),
      recording(RecordingOf(module)),
      archive(recording),
      path(Lib("a.lzh")) {
  folder.WriteFile("a.lzh", "old");
  recording = Recording{};
  recording.hide = folder.Lib();
}

ArchiveRecorded::~ArchiveRecorded() {
  FreeLibrary(module);
}

ZorError ArchiveRecorded::ErrorOf(int result) const {
  EXPECT_EQ(result, archive.GetError() == ZorErrorNone ? 1 : 0);
  return archive.GetError();
}

std::vector<std::string> ArchiveRecorded::TakeCalls() {
  return std::exchange(recording.calls, {});
}

std::vector<std::string> ArchiveRecorded::TakeCalls(const std::string& beginning) {
  std::vector<std::string> taken;
  for (const std::string& call : TakeCalls()) {
    if (call.starts_with(beginning)) taken.push_back(call.substr(beginning.size()));
  }
  return taken;
}

}  // namespace kozor::test
