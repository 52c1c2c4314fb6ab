// RecordedArchive.h - a ZorArchive whose hooks write into the log of the recording archiver, and
// the fixture of the tests that run against that archiver.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "Selection.h"
#include "ZorArchive.h"
#include "recording/Recording.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;
using testing::IsEmpty;

// The options that begin the archiver's command lines.
inline const std::string kOptions = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

class RecordedArchive : public ZorArchive {
 public:
  explicit RecordedArchive(Recording& log) : recording(log) {}

  int stopAt = -1;  // counts down with each OnAbort; the one that finds 0 answers 1
  std::function<void(int phase)> inPhase;             // runs in each OnAbort
  std::function<CString(const char* name)> makeName;  // replaces the default

 protected:
  // Logs "OnAbort kind phase files bytes archive file member size date time attribute", null as
  // "-"; without a member only the fields before it.
  int OnAbort(const ONABORTPARAM& param) override {
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
  CString OnMakeFileName(const char* directory, const char* name) override {
    recording.Log("OnMakeFileName " + Shown(directory) + ' ' + Shown(name));
    return makeName ? makeName(name) : ZorArchive::OnMakeFileName(directory, name);
  }

 private:
  static std::string Shown(const char* text) {
    return text == nullptr ? "-" : "'" + std::string(text) + "'";
  }

  Recording& recording;
};

// Keeps the module loaded, so that its log lives from call to call.  In the log "#" is the test's
// folder.
class ArchiveRecorded : public testing::Test {
 protected:
  ArchiveRecorded() {
    folder.WriteFile("a.lzh", "old");
    recording = Recording{};
    recording.hide = folder.Lib();
  }
  ~ArchiveRecorded() override { FreeLibrary(module); }

  std::string Lib(const std::string& name) const { return folder.Lib(name); }
  // The outcome of an operation with this result.
  ZorError ErrorOf(int result) const {
    EXPECT_EQ(result, archive.GetError() == ZorErrorNone ? 1 : 0);
    return archive.GetError();
  }
  // The log from the last call of this function on.
  std::vector<std::string> TakeCalls() { return std::exchange(recording.calls, {}); }
  // The lines that begin with the text, without it.
  std::vector<std::string> TakeCalls(const std::string& beginning) {
    std::vector<std::string> taken;
    for (const std::string& call : TakeCalls()) {
      if (call.starts_with(beginning)) taken.push_back(call.substr(beginning.size()));
    }
    return taken;
  }

  TestFolder folder;
  HMODULE module = LoadLibraryA("UNLHA32.DLL");
  Recording& recording = RecordingOf(module);
  RecordedArchive archive{recording};
  const std::string path = Lib("a.lzh");  // of an archive that exists

 private:
  static Recording& RecordingOf(HMODULE module) {
    if (module == nullptr) throw std::runtime_error("the recording archiver can't be loaded");
    using AnyFunction = void (*)();
    const auto any = reinterpret_cast<AnyFunction>(GetProcAddress(module, "RecordingOfArchiver"));
    return *reinterpret_cast<decltype(&RecordingOfArchiver)>(any)();
  }
};

}  // namespace kozor::test
