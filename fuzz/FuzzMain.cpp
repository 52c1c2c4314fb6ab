// FuzzMain.cpp - a fuzz target as a program: for libFuzzer where the build asks for it, else over
// the files, or folders of files, that its command line names.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Bounds.h"
#include "fuzz/Fuzz.h"
#include "fuzz/Mutation.h"

namespace fs = std::filesystem;

namespace kozor::fuzz {

void Require(bool condition, const char* file, int line) {
  if (condition) return;
  std::fprintf(stderr, "%s:%d: a finding\n", file, line);
  std::abort();
}

}  // namespace kozor::fuzz

#ifdef KOZOR_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kozor::fuzz::RunWithinBounds({data, size});
  return 0;
}

#ifdef KOZOR_MUTATOR

namespace {

std::size_t Give(const kozor::fuzz::Bytes& mutated, std::uint8_t* target, std::size_t room) {
  const std::size_t bytes = std::min(mutated.size(), room);
  std::copy_n(mutated.begin(), bytes, target);
  return bytes;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);

// Now and then blindly, as other targets' inputs are changed.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t room, unsigned seed) {
  kozor::fuzz::Dice dice(seed);
  if (dice.OneIn(8)) return LLVMFuzzerMutate(data, size, room);
  return Give(kozor::fuzz::Mutate({data, size}, dice), data, room);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t oneSize,
                                                 const std::uint8_t* other, std::size_t otherSize,
                                                 std::uint8_t* target, std::size_t room,
                                                 unsigned seed) {
  kozor::fuzz::Dice dice(seed);
  return Give(kozor::fuzz::CrossOver({one, oneSize}, {other, otherSize}, dice), target, room);
}

#endif

#else

namespace {

using kozor::fuzz::Bytes;

Bytes ReadInput(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
  return {chars.begin(), chars.end()};
}

std::vector<fs::path> InputsIn(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> inputs;
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) inputs.push_back(entry.path());
  }
  return inputs;
}

#ifdef KOZOR_MUTATOR

void WriteInput(const fs::path& path, const Bytes& input) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(input.data()),
             static_cast<std::streamsize>(input.size()));
}

// Runs this many inputs, each changed several times and sometimes crossed.  The current one is kept
// in the file "mutated-input", in case it ends the program.  With a folder they are only written
// there, by their numbers.
void RunMutations(const std::vector<Bytes>& seeds, unsigned long count, unsigned seed,
                  const fs::path& folder) {
  kozor::fuzz::Dice dice(seed);
  for (unsigned long i = 0; i < count;) {
    Bytes input = dice.OneOf(seeds);
    for (std::size_t left = dice.Below(8) + 1; left != 0 && i < count; --left, ++i) {
      input = dice.OneIn(6) ? CrossOver(input, dice.OneOf(seeds), dice) : Mutate(input, dice);
      input.resize(std::min<std::size_t>(input.size(), 8192));
      WriteInput(folder.empty() ? "mutated-input" : folder / std::to_string(i), input);
      if (folder.empty()) kozor::fuzz::RunWithinBounds(input);
      if (i % 10000 == 9999) std::printf("%lu mutations\n", i + 1), std::fflush(stdout);
    }
  }
  fs::remove("mutated-input");
  std::printf("%lu mutations\n", count);
}

#else

void RunMutations(const std::vector<Bytes>&, unsigned long, unsigned, const fs::path&) {
  std::puts("no mutator");
}

#endif

}  // namespace

// Inputs, and folders of them; then, if wanted, -mutations=COUNT, -seed=NUMBER and -write=FOLDER.
int main(int argc, char** argv) {
  std::vector<Bytes> inputs;
  unsigned long mutations = 0;
  unsigned seed = 1;
  fs::path folder;
  for (const std::string argument : std::span(argv, static_cast<std::size_t>(argc)).subspan(1)) {
    if (argument.starts_with("-mutations=")) {
      mutations = std::stoul(argument.substr(11));
    } else if (argument.starts_with("-seed=")) {
      seed = static_cast<unsigned>(std::stoul(argument.substr(6)));
    } else if (argument.starts_with("-write=")) {
      folder = argument.substr(7);
    } else {
      for (const fs::path& path : InputsIn(argument)) {
        std::printf("%s\n", path.string().c_str());
        std::fflush(stdout);
        inputs.push_back(ReadInput(path));
        kozor::fuzz::RunWithinBounds(inputs.back());
      }
    }
  }
  std::printf("%zu inputs\n", inputs.size());
  if (inputs.empty()) return 1;
  if (mutations != 0) RunMutations(inputs, mutations, seed, folder);
  return 0;
}

#endif
