// Console.cpp - see Console.h.
#include "Console.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <span>

#include "Failure.h"
#include "Host.h"
#include "platform/text/CodePage.h"

namespace kozor::program {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
constexpr int kBarWidth = 24;

Verbosity verbosity = Verbosity::Usual;
ShowWhen showProgress = ShowWhen::Auto;
int complaints = 0;
bool barShown = false;
Clock::time_point lastDrawn;

bool ProgressIsShown() {
  static const bool kTerminal = ErrorsGoToTerminal();
  if (showProgress == ShowWhen::Auto) return kTerminal && verbosity != Verbosity::Quiet;
  return showProgress == ShowWhen::Always;
}

void PrintOnErrors(const std::string& text) {
  HideProgress();
  std::fprintf(stderr, "kozor: %s\n", text.c_str());
}

// "1:02:03", or "2:03" below an hour.
std::string DurationText(double seconds) {
  const auto whole = static_cast<long>(std::min(seconds, 359'999.0));
  std::array<char, 32> text{};
  if (whole >= 3600) {
    std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                  whole % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%ld:%02ld", whole / 60, whole % 60);
  }
  return text.data();
}

// The end of a long name, which is more specific than its beginning.  Never splits a character.
std::string LastPart(const std::string& name, std::size_t width) {
  if (name.size() <= width) return name;
  std::size_t start = name.size() - width;
  while (start < name.size() && (static_cast<unsigned char>(name[start]) & 0xC0U) == 0x80) ++start;
  return name.substr(start);
}

// Calls `take` for each piece of standard input up to its end.
template <typename Take>
void ReadInputInBlocks(Take take) {
  const InterruptibleInput interruptible;
  std::array<unsigned char, 1 << 16> block{};
  while (const std::size_t got = std::fread(block.data(), 1, block.size(), stdin)) {
    take(std::span<const unsigned char>(block).first(got));
  }
  StopIfAsked();
  if (std::ferror(stdin)) throw Failure("standard input: can't read");
}

}  // namespace

void SetVerbosity(Verbosity wanted) {
  verbosity = wanted;
}

void SetProgress(ShowWhen when) {
  showProgress = when;
}

void Complain(const std::string& text) {
  ++complaints;
  PrintOnErrors(text);
}

int Complaints() {
  return complaints;
}

void Remark(const std::string& text) {
  if (verbosity != Verbosity::Quiet) PrintOnErrors(text);
}

void Mention(std::string_view libraryName, std::string_view result) {
  if (verbosity != Verbosity::Verbose) return;
  HideProgress();
  std::fprintf(stderr, "%s\n", VisibleLibraryName(libraryName).append(result).c_str());
}

void Progress::Running(std::uint64_t bytes, std::string_view libraryName) {
  if (!ProgressIsShown()) return;
  const auto now = Clock::now();
  if (now - lastDrawn < kRedrawInterval) return;
  lastDrawn = now;
  Draw(finished + bytes, libraryName);
}

void Progress::FileEnds(std::uint64_t bytes) {
  finished += bytes;
  ++files;
}

bool Progress::RequireAll(std::size_t selected) const {
  if (files >= selected) return true;
  Complain(std::to_string(selected - files) + " of " + std::to_string(selected) +
           " files were left out: a directory could not be read again");
  return false;
}

void Progress::Draw(std::uint64_t done, std::string_view libraryName) {
  static const Clock::time_point kStart = Clock::now();
  shown = std::max(shown, done);
  const double seconds = std::chrono::duration<double>(Clock::now() - kStart).count();
  const double rate = seconds > 0 ? static_cast<double>(shown) / seconds : 0;
  std::string line = SizeText(shown);
  if (total > 0) {
    const double share = std::min(1.0, static_cast<double>(shown) / static_cast<double>(total));
    const auto filled = static_cast<std::size_t>(std::lround(share * kBarWidth));
    std::array<char, 16> percent{};
    std::snprintf(percent.data(), percent.size(), "] %3.0f%%", std::floor(share * 100));
    line = '[' + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + percent.data();
  }
  if (seconds > 1 && rate > 0) {
    line += "  " + SizeText(static_cast<std::uint64_t>(rate)) + "/s";
    if (total > shown) line += "  " + DurationText(static_cast<double>(total - shown) / rate);
  }
  line += "  ";
  const std::string name =
      (title.empty() ? "" : Visible(title) + ": ") + VisibleLibraryName(libraryName);
  const auto width = static_cast<std::size_t>(std::max(TerminalWidth(), 60));
  std::fprintf(stderr, "\r%s%s\033[K", line.c_str(),
               LastPart(name, width - std::min(width - 10, line.size() + 1)).c_str());
  std::fflush(stderr);
  barShown = true;
}

void HideProgress() {
  if (!barShown) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  barShown = false;
}

std::string Visible(std::string_view name) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string shown;
  while (!name.empty()) {
    const text::Decoded next = text::DecodeUtf8(name);
    if (text::IsShowable(next.character)) {
      shown += name.substr(0, next.bytes);
    } else {
      for (const char c : name.substr(0, next.bytes)) {
        const auto byte = static_cast<unsigned char>(c);
        shown += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 15U]};
      }
    }
    name.remove_prefix(next.bytes);
  }
  return shown;
}

std::string VisibleLibraryName(std::string_view name) {
  std::string text(name);
  std::replace(text.begin(), text.end(), '\\', '/');
  return Visible(text);
}

std::string SizeText(std::uint64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " B";
  auto size = static_cast<double>(bytes);
  std::size_t unit = 0;
  constexpr std::array<const char*, 5> kUnits = {"B", "KiB", "MiB", "GiB", "TiB"};
  while (size >= 1000 && unit + 1 < kUnits.size()) {
    size /= 1024;
    ++unit;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", size, kUnits[unit]);
  return text.data();
}

void WriteStandardOutput(const unsigned char* data, std::size_t size) {
  if (std::fwrite(data, 1, size, stdout) != size) throw Failure("standard output: can't write");
}

void PrintText(const std::string& text) {
  WriteStandardOutput(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

void PrintLine(const std::string& line) {
  PrintText(line + '\n');
}

void FinishStandardOutput() {
  if (std::fflush(stdout) != 0) throw Failure("standard output: can't write");
}

void CopyToStandardOutput(const std::filesystem::path& path) {
  std::ifstream file(CallPath(path), std::ios::binary);
  std::array<char, 1 << 16> block{};
  while (file.read(block.data(), block.size()) || file.gcount() > 0) {
    WriteStandardOutput(reinterpret_cast<const unsigned char*>(block.data()),
                        static_cast<std::size_t>(file.gcount()));
  }
  if (!file.eof()) throw Failure(Visible(path.string()) + ": can't read");
}

void SaveStandardInput(const std::filesystem::path& path) {
  std::ofstream file(CallPath(path), std::ios::binary);
  ReadInputInBlocks([&](std::span<const unsigned char> block) {
    file.write(reinterpret_cast<const char*>(block.data()),
               static_cast<std::streamsize>(block.size()));
  });
  file.close();
  if (!file) throw Failure(Visible(path.string()) + ": can't write");
}

std::vector<unsigned char> ReadStandardInput() {
  constexpr std::size_t kMaxBytes = 0xFFFFFFFF;
  std::vector<unsigned char> data;
  ReadInputInBlocks([&](std::span<const unsigned char> block) {
    data.insert(data.end(), block.begin(), block.end());
    if (data.size() > kMaxBytes) throw Failure("standard input: more than 4 GiB can't be stored");
  });
  return data;
}

bool CanAsk() {
  return InputIsTerminal() && ErrorsGoToTerminal();
}

bool AskUser(const std::string& question, std::string& answer) {
  HideProgress();
  std::fprintf(stderr, "%s ", question.c_str());
  std::fflush(stderr);
  const InterruptibleInput interruptible;
  std::array<char, 4096> line{};
  if (std::fgets(line.data(), line.size(), stdin) == nullptr) return false;
  answer = line.data();
  while (!answer.empty() && (answer.back() == '\n' || answer.back() == '\r')) answer.pop_back();
  return true;
}

}  // namespace kozor::program
