// FuzzMain.cpp - a fuzz target as a program: for libFuzzer if so configured, else for the files, or
// folders of files, on its command line.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Fuzz.h"

namespace fs = std::filesystem;

namespace kozor::fuzz {

void Require(bool condition) {
  if (!condition) std::abort();
}

ScratchFolder::ScratchFolder() {
  std::string name = (fs::temp_directory_path() / "kozor-fuzz-XXXXXX").string();
  Require(mkdtemp(name.data()) != nullptr);
  root = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(root, ignored);
}

std::string ScratchFolder::LibraryPath(const std::string& name) const {
  std::string path = "C:" + Path(name).string();
  std::ranges::replace(path, '/', '\\');
  return path;
}

void ScratchFolder::Write(const std::string& name, std::span<const std::uint8_t> bytes) const {
  std::ofstream file(Path(name), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  Require(file.good());
}

}  // namespace kozor::fuzz

#ifdef KOZOR_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kozor::fuzz::TestInput(kozor::fuzz::Input({data, size}));
  return 0;
}

#else

namespace {

void RunFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
  const std::vector<std::uint8_t> bytes(chars.begin(), chars.end());
  std::printf("%s\n", path.string().c_str());
  std::fflush(stdout);
  kozor::fuzz::TestInput(kozor::fuzz::Input(bytes));
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t runs = 0;
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      RunFile(argv[i]);
      ++runs;
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      RunFile(entry.path());
      ++runs;
    }
  }
  std::printf("%zu inputs\n", runs);
  return runs != 0 ? 0 : 1;
}

#endif
