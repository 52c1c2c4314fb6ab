// Recording.h - the script and the log that a test shares with the recording archiver.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kozor::test {

// A member that searches find.
struct ScriptedMember {
  std::string name;
  std::string contents{};
  std::uint16_t date = 0x2E45;
  std::uint16_t time = 0x6000;
  int attribute = 0x20;
  std::int32_t stamp = 1'000'000'000;  // result of the memory call, seconds since 1970
};

// One call of the archiver's callback.
struct ScriptedReport {
  unsigned int state;
  std::uint32_t bytesDone;
  std::uint32_t fileSize;
  std::string fileName;
};

struct Recording {
  // Script.  Searches find the members by name in quotes, by "*.*", by "*" and an ending, or by a
  // plain name.
  bool busy = false;
  bool refusesCallback = false;
  int archivesThatOpen = 1'000'000;
  int checkResult = 1;
  std::vector<ScriptedMember> members;
  // Replayed in each call that works on an archive, until the callback returns 0.
  std::vector<ScriptedReport> reports;
  bool heedsAnswers = true;
  // Runs in each such call, before the reports.
  std::function<void()> during;
  // Runs when the callback is removed.
  std::function<void()> whenReleased;
  // The results of such calls; 0 after the last entry.  A stopped call returns 0x8020.
  std::vector<int> results;

  // Log: a line for each call, in which `hide` is written as "#".
  std::vector<std::string> calls;
  std::string hide;
  std::vector<int> answers;  // of the callback

  void Log(std::string line) {
    for (auto at = line.find(hide); !hide.empty() && at != std::string::npos;
         at = line.find(hide)) {
      line.replace(at, hide.size(), "#");
    }
    calls.push_back(std::move(line));
  }
};

}  // namespace kozor::test

// Exported by the module; the state is empty when the module is loaded again.
extern "C" kozor::test::Recording* RecordingOfArchiver();
