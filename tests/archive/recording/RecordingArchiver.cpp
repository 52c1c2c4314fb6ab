// RecordingArchiver.cpp - an archiver that works on nothing: it logs its calls and plays a script.
//
// It knows the records by the offsets of the interface and includes nothing of the library.
#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>

#include "recording/Recording.h"

namespace {

using kozor::test::Recording;
using kozor::test::ScriptedMember;
using kozor::test::ScriptedReport;

using Callback = int (*)(void* window, unsigned int message, unsigned int state, void* record);

struct State {
  Recording recording;
  Callback callback = nullptr;
  std::string text;  // of the search that runs
  std::size_t next = 0;
  const ScriptedMember* found = nullptr;
};

State& GetState() {
  static State state;
  return state;
}

template <typename Number>
void Put(void* record, std::size_t offset, Number number) {
  std::memcpy(static_cast<char*>(record) + offset, &number, sizeof number);
}

bool Matches(const std::string& text, std::string name) {
  if (text == "*.*") return true;
  std::replace(name.begin(), name.end(), '/', '\\');
  if (text.starts_with('*')) return name.ends_with(text.substr(1));
  return text == name || text == '"' + name + '"';
}

int FindOn(void* record) {
  State& state = GetState();
  for (; state.next < state.recording.members.size(); ++state.next) {
    const ScriptedMember& member = state.recording.members[state.next];
    if (!Matches(state.text, member.name)) continue;
    Put(record, 0, static_cast<std::uint32_t>(member.contents.size()));
    Put(record, 22, member.date);
    Put(record, 24, member.time);
    std::memcpy(static_cast<char*>(record) + 26, member.name.c_str(), member.name.size() + 1);
    state.found = &member;
    ++state.next;
    return 0;
  }
  return -1;
}

int Answer(const ScriptedReport& report) {
  std::array<char, 1024> record{};
  Put(record.data(), 0, report.fileSize);
  Put(record.data(), 4, report.bytesDone);
  std::strcpy(record.data() + 524, report.fileName.c_str());
  return GetState().callback(nullptr, 0, report.state, record.data());
}

// The long part of a call.
int Work() {
  State& state = GetState();
  if (state.recording.during) state.recording.during();
  for (const ScriptedReport& report : state.recording.reports) {
    state.recording.answers.push_back(Answer(report));
    if (state.recording.answers.back() == 0 && state.recording.heedsAnswers) return 0x8020;
  }
  if (state.recording.results.empty()) return 0;
  const int result = state.recording.results.front();
  state.recording.results.erase(state.recording.results.begin());
  return result;
}

}  // namespace

extern "C" {

Recording* RecordingOfArchiver() {
  return &GetState().recording;
}

int UnlhaGetRunning() {
  GetState().recording.Log("GetRunning");
  return GetState().recording.busy ? 1 : 0;
}

int Unlha(void* window, const char* line, char* output, std::uint32_t outputSize) {
  const bool plain = window == nullptr && output == nullptr && outputSize == 0;
  GetState().recording.Log((plain ? "Unlha: " : "Unlha with output: ") + std::string(line));
  return Work();
}

int UnlhaCheckArchive(const char* path, int mode) {
  GetState().recording.Log("CheckArchive " + std::string(path) + " " + std::to_string(mode));
  return GetState().recording.checkResult;
}

int UnlhaSetOwnerWindowEx(void* window, Callback callback) {
  State& state = GetState();
  state.recording.Log(window == nullptr ? "SetOwnerWindowEx" : "SetOwnerWindowEx of a window");
  if (state.recording.refusesCallback) return 0;
  state.callback = callback;
  return 1;
}

int UnlhaKillOwnerWindowEx(void* /*window*/) {
  GetState().recording.Log("KillOwnerWindowEx");
  if (GetState().recording.whenReleased) GetState().recording.whenReleased();
  GetState().callback = nullptr;
  return 1;
}

int UnlhaSetCursorMode(int mode) {
  GetState().recording.Log("SetCursorMode " + std::to_string(mode));
  return 1;
}

void* UnlhaOpenArchive(void* /*window*/, const char* path, std::uint32_t mode) {
  std::ostringstream line;
  line << "OpenArchive " << path << " 0x" << std::hex << mode;
  GetState().recording.Log(line.str());
  return GetState().recording.archivesThatOpen-- > 0 ? &GetState() : nullptr;
}

int UnlhaCloseArchive(void* /*archive*/) {
  GetState().recording.Log("CloseArchive");
  return 0;
}

int UnlhaFindFirst(void* /*archive*/, const char* text, void* record) {
  State& state = GetState();
  state.recording.Log("FindFirst " + std::string(text));
  state.text = text;
  state.next = 0;
  return FindOn(record);
}

int UnlhaFindNext(void* /*archive*/, void* record) {
  return FindOn(record);
}

int UnlhaGetAttribute(void* /*archive*/) {
  GetState().recording.Log("GetAttribute");
  return GetState().found->attribute;
}

int UnlhaExtractMem(void* /*window*/, const char* line, unsigned char* buffer, std::uint32_t size,
                    std::int32_t* time, std::uint16_t* attribute, std::uint32_t* written) {
  State& state = GetState();
  state.recording.Log("ExtractMem " + std::to_string(size) + (time != nullptr ? " time" : "") +
                      (attribute != nullptr ? " attribute:" : ":") + line);
  const std::string& contents = state.found->contents;
  *written = std::min(size, static_cast<std::uint32_t>(contents.size()));
  std::copy_n(contents.begin(), *written, buffer);
  if (time != nullptr) *time = state.found->stamp;
  if (attribute != nullptr) *attribute = static_cast<std::uint16_t>(state.found->attribute);
  return Work();
}

}  // extern "C"

// The long part of UnlhaCompressMem, which stands in a source of its own so that a module can lack
// it.
int RecordingCompressMem(const std::string& line) {
  GetState().recording.Log(line);
  return Work();
}
