// RecordingArchiver.cpp - a mock archiver: logs its calls and replays a script.
//
// It accesses the records by the offsets of the interface and includes none of the headers that
// declare it.
#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>

#include "platform/win32/Win32.h"
#include "recording/Recording.h"

namespace {

using kozor::test::Recording;
using kozor::test::ScriptedMember;
using kozor::test::ScriptedReport;

using Callback = int(WINAPI*)(void* window, unsigned int message, unsigned int state, void* record);

struct Archiver : Recording {
  Callback callback = nullptr;
  std::string text;  // of the search that runs
  std::size_t next = 0;
  const ScriptedMember* found = nullptr;
};

Archiver& Self() {
  static Archiver self;
  return self;
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
  Archiver& self = Self();
  while (self.next < self.members.size()) {
    const ScriptedMember& member = self.members[self.next++];
    if (!Matches(self.text, member.name)) continue;
    Put(record, 0, static_cast<std::uint32_t>(member.contents.size()));
    Put(record, 22, member.date);
    Put(record, 24, member.time);
    std::memcpy(static_cast<char*>(record) + 26, member.name.c_str(), member.name.size() + 1);
    self.found = &member;
    return 0;
  }
  return -1;
}

int Answer(const ScriptedReport& report) {
  std::array<char, 1024> record{};
  Put(record.data(), 0, report.fileSize);
  Put(record.data(), 4, report.bytesDone);
  std::strcpy(record.data() + 524, report.fileName.c_str());
  return Self().callback(nullptr, 0, report.state, record.data());
}

// The long part of a call.
int Work() {
  Archiver& self = Self();
  if (self.during) self.during();
  for (const ScriptedReport& report : self.reports) {
    self.answers.push_back(Answer(report));
    if (self.answers.back() == 0 && self.heedsAnswers) return 0x8020;
  }
  if (self.results.empty()) return 0;
  const int result = self.results.front();
  self.results.erase(self.results.begin());
  return result;
}

}  // namespace

extern "C" {

Recording* RecordingOfArchiver() {
  return &Self();
}

int WINAPI UnlhaGetRunning() {
  Self().Log("GetRunning");
  return Self().busy ? 1 : 0;
}

int WINAPI Unlha(void* window, const char* line, char* output, std::uint32_t outputSize) {
  const bool plain = window == nullptr && output == nullptr && outputSize == 0;
  Self().Log((plain ? "Unlha: " : "Unlha with output: ") + std::string(line));
  return Work();
}

int WINAPI UnlhaCheckArchive(const char* path, int mode) {
  Self().Log("CheckArchive " + std::string(path) + " " + std::to_string(mode));
  return Self().checkResult;
}

int WINAPI UnlhaSetOwnerWindowEx(void* window, Callback callback) {
  Self().Log(window == nullptr ? "SetOwnerWindowEx" : "SetOwnerWindowEx of a window");
  if (Self().refusesCallback) return 0;
  Self().callback = callback;
  return 1;
}

int WINAPI UnlhaKillOwnerWindowEx(void* /*window*/) {
  Self().Log("KillOwnerWindowEx");
  if (Self().whenReleased) Self().whenReleased();
  Self().callback = nullptr;
  return 1;
}

int WINAPI UnlhaSetCursorMode(int mode) {
  Self().Log("SetCursorMode " + std::to_string(mode));
  return 1;
}

void* WINAPI UnlhaOpenArchive(void* /*window*/, const char* path, std::uint32_t mode) {
  std::ostringstream line;
  line << "OpenArchive " << path << " 0x" << std::hex << mode;
  Self().Log(line.str());
  return Self().archivesThatOpen-- > 0 ? &Self() : nullptr;
}

int WINAPI UnlhaCloseArchive(void* /*archive*/) {
  Self().Log("CloseArchive");
  return 0;
}

int WINAPI UnlhaFindFirst(void* /*archive*/, const char* text, void* record) {
  Self().Log("FindFirst " + std::string(text));
  Self().text = text;
  Self().next = 0;
  return FindOn(record);
}

int WINAPI UnlhaFindNext(void* /*archive*/, void* record) {
  return FindOn(record);
}

int WINAPI UnlhaGetAttribute(void* /*archive*/) {
  Self().Log("GetAttribute");
  return Self().found->attribute;
}

int WINAPI UnlhaExtractMem(void* /*window*/, const char* line, unsigned char* buffer,
                           std::uint32_t size, std::int32_t* time, std::uint16_t* attribute,
                           std::uint32_t* written) {
  Self().Log("ExtractMem " + std::to_string(size) + (time != nullptr ? " time" : "") +
             (attribute != nullptr ? " attribute:" : ":") + line);
  const ScriptedMember& member = *Self().found;
  *written = std::min(size, static_cast<std::uint32_t>(member.contents.size()));
  std::copy_n(member.contents.begin(), *written, buffer);
  if (time != nullptr) *time = member.stamp;
  if (attribute != nullptr) *attribute = static_cast<std::uint16_t>(member.attribute);
  return Work();
}

#ifndef LACKS_COMPRESS_MEM
int WINAPI UnlhaCompressMem(void* /*window*/, const char* line, const unsigned char* data,
                            std::uint32_t size, const std::int32_t* time,
                            const std::uint16_t* attribute, std::uint32_t* written) {
  const bool plain = time == nullptr && attribute == nullptr && written == nullptr;
  const std::string contents =
      data == nullptr ? "null" : std::string(reinterpret_cast<const char*>(data), size);
  Self().Log((plain ? "CompressMem " : "CompressMem with outputs ") + contents + " " +
             std::to_string(size) + ":" + line);
  return Work();
}
#endif

}  // extern "C"
