// Console.h - what the program shows: complaints and a progress bar, both on standard error.
#pragma once

#include <string>
#include <string_view>

namespace kozor::program {

// Prints "kozor: text" and makes the exit code 1.
void Complain(const std::string& text);
// How often Complain has been called.
int Complaints();
// Prints "kozor: text" without a bearing on the exit code.
void Remark(const std::string& text);

// How many files of a run are done, the current one counted in part.  `record` is what OnAbort of
// either class is told.
template <typename Record>
double FilesDone(const Record& record) {
  constexpr int kFileRunning = 2;
  if (record.phase != kFileRunning || record.bytesTotal == 0) return record.filesDone;
  return record.filesDone +
         static_cast<double>(record.bytesDone) / static_cast<double>(record.bytesTotal);
}

// Shows how far a run has come, on a terminal only and a few times a second at most.
void ShowProgress(double done, double total, std::string_view name);
// Takes the bar off the screen again.
void HideProgress();

// A name for the screen: control characters and bytes that aren't UTF-8 appear as \xNN, so that a
// name can't move the cursor or hide a part of itself.
std::string Visible(std::string_view name);
// The same for a path of the library, with '/' in place of its backslashes.
std::string VisibleLibraryName(std::string_view name);

}  // namespace kozor::program
