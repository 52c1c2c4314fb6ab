// Console.h - user interaction: results on standard output; complaints, remarks, questions and
// progress on standard error; and standard input as bytes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::program {

enum class Verbosity { Quiet, Usual, Verbose };
enum class ShowWhen { Auto, Always, Never };  // Auto: on a terminal
void SetVerbosity(Verbosity wanted);
void SetProgress(ShowWhen when);

// Prints "kozor: text" and makes the exit code 1.
void Complain(const std::string& text);
// The number of calls of Complain.
int Complaints();
// Prints "kozor: text" unless quiet; doesn't affect the exit code.
void Remark(const std::string& text);
// Prints the library name of a finished file, and then `result`, if verbose.
void Mention(std::string_view libraryName, std::string_view result = "");

// The progress of a run in bytes over all files: a bar, the rate and the time left, redrawn a few
// times per second at most.
class Progress {
 public:
  // If `totalBytes` is 0 (unknown), bytes and rate are shown.  `runTitle` is printed before each
  // file name.
  explicit Progress(std::uint64_t totalBytes = 0, std::string runTitle = "")
      : total(totalBytes), title(std::move(runTitle)) {}

  // `bytes` of the current file are done.
  void Running(std::uint64_t bytes, std::string_view libraryName);
  // The current file is finished, with `bytes` bytes.
  void FileEnds(std::uint64_t bytes);
  // Complains if fewer files are finished than were selected: the library silently skips a folder
  // that can't be read a second time.
  bool RequireAll(std::size_t selected) const;

 private:
  void Draw(std::uint64_t done, std::string_view libraryName);

  std::uint64_t total;
  std::string title;
  std::size_t files = 0;       // finished
  std::uint64_t finished = 0;  // their bytes
  std::uint64_t shown = 0;     // never decreases
};

// Erases the bar.
void HideProgress();

// Makes a name safe for a terminal: control characters and invalid UTF-8 bytes become \xNN, so that
// a name can't move the cursor or hide a part of itself.
std::string Visible(std::string_view name);
// The same for a library path, with '/' instead of backslashes.
std::string VisibleLibraryName(std::string_view name);

// "1.2 GiB".
std::string SizeText(std::uint64_t bytes);

// These throw Failure if standard output can't be written.
void WriteStandardOutput(const unsigned char* data, std::size_t size);
void PrintText(const std::string& text);
void PrintLine(const std::string& line);
// Flushes; throws Failure if anything printed could not be written.
void FinishStandardOutput();

void CopyToStandardOutput(const std::filesystem::path& path);

// Copies standard input up to its end to a new file.
void SaveStandardInput(const std::filesystem::path& path);
// Reads standard input up to its end.  Throws Failure if it exceeds 4 GiB - 1 bytes, and
// Interrupted after a signal.
std::vector<unsigned char> ReadStandardInput();

// Whether there is a user to ask: standard input and standard error are a terminal.
bool CanAsk();
// Shows `question` on standard error and waits for a line.  Returns false at the end of input or
// after a signal.
bool AskUser(const std::string& question, std::string& answer);

}  // namespace kozor::program
