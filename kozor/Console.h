// Console.h - how the program talks to its user: results on standard output; complaints, remarks,
// questions and progress on standard error; and standard input as bytes.
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
// How often Complain has been called.
int Complaints();
// Prints "kozor: text" without a bearing on the exit code; not when quiet.
void Remark(const std::string& text);
// Names a file that is done; only when verbose.
void Mention(const std::string& text);

// How far a run has come, in bytes over all its files: a bar, the rate and the time left, a few
// times a second at most.
class Progress {
 public:
  // `totalBytes` 0 when it isn't known: bytes and rate are shown then.  `runTitle` stands in front
  // of each file's name.
  explicit Progress(std::uint64_t totalBytes = 0, std::string runTitle = "")
      : total(totalBytes), title(std::move(runTitle)) {}

  // `bytes` of the current file are done.
  void Running(std::uint64_t bytes, std::string_view libraryName);
  // The current file is done, all `bytes` of it.
  void FileEnds(std::uint64_t bytes);
  // Complains unless as many files are done as were selected: a folder that can't be read a second
  // time is skipped without a word below us.
  void RequireAll(std::size_t selected) const;

 private:
  void Draw(std::uint64_t done, std::string_view libraryName);

  std::uint64_t total;
  std::string title;
  std::size_t files = 0;       // that are done
  std::uint64_t finished = 0;  // their bytes
  std::uint64_t shown = 0;     // never less than before
};

// Takes the bar off the screen again.
void HideProgress();

// A name for the screen: control characters and bytes that aren't UTF-8 appear as \xNN, so that a
// name can't move the cursor or hide a part of itself.
std::string Visible(std::string_view name);
// The same for a path of the library, with '/' in place of its backslashes.
std::string VisibleLibraryName(std::string_view name);

// "1.2 GiB".
std::string SizeText(std::uint64_t bytes);

// What standard output doesn't take is a Failure.
void WriteStandardOutput(const unsigned char* data, std::size_t size);
void PrintText(const std::string& text);
void PrintLine(const std::string& line);
// Throws Failure unless everything printed has really been taken.
void FinishStandardOutput();

void CopyToStandardOutput(const std::filesystem::path& path);

// Standard input up to its end, into a new file.
void SaveStandardInput(const std::filesystem::path& path);
// Everything up to the end of standard input.  Throws Failure for more than 4 GiB less one byte,
// and Interrupted when a signal comes meanwhile.
std::vector<unsigned char> ReadStandardInput();

// Whether there is a user to ask: standard input and standard error are a terminal.
bool CanAsk();
// Shows `question` on standard error and waits for a line.  False when the input ends or a signal
// comes.
bool AskUser(const std::string& question, std::string& answer);

}  // namespace kozor::program
