// StandardStreams.cpp - see StandardStreams.h.
#include "StandardStreams.h"

#include <array>
#include <cstdio>

#include "Console.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

std::vector<unsigned char> ReadStandardInput() {
  constexpr std::size_t kBlockBytes = 1 << 16;
  constexpr std::size_t kMaxBytes = 0xFFFFFFFF;
  const InterruptibleInput interruptible;
  std::vector<unsigned char> data;
  std::array<unsigned char, kBlockBytes> block{};
  while (const std::size_t got = std::fread(block.data(), 1, block.size(), stdin)) {
    data.insert(data.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    if (data.size() > kMaxBytes) throw Failure("standard input: more than 4 GiB can't be stored");
  }
  StopIfAsked();
  if (std::ferror(stdin)) throw Failure("standard input: can't read");
  return data;
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

bool AskUser(const std::string& question) {
  HideProgress();
  std::fprintf(stderr, "%s ", question.c_str());
  std::fflush(stderr);
  const InterruptibleInput interruptible;
  std::array<char, 256> answer{};
  const bool answered = std::fgets(answer.data(), answer.size(), stdin) != nullptr;
  return answered && answer[0] != 'q' && answer[0] != 'Q';
}

}  // namespace kozor::program
