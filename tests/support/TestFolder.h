// TestFolder.h - the shared vocabulary of the tests: a temporary folder, trees of files in it, and
// ways to compare and damage them.  Works only on host paths and is independent of the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Host.h"

namespace kozor::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes ToBytes(std::string_view text) {
  return {text.begin(), text.end()};
}
// One run of bytes after the other.
Bytes Join(std::initializer_list<Bytes> pieces);

// A new empty folder; the destructor removes it, including read-only files.
class TestFolder {
 public:
  TestFolder() : root(MakeTestDirectory()) {}
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  // The host path of `name` in the folder; '/' separates.  An empty name gives the folder itself.
  std::filesystem::path Path(std::string_view name = "") const;
  // The same as a library path with a drive.
  std::string Lib(std::string_view name = "") const { return LibraryPathOf(Path(name)); }

  void WriteFile(std::string_view name, std::span<const std::uint8_t> bytes) const;
  void WriteFile(std::string_view name, std::string_view text) const {
    WriteFile(name, ToBytes(text));
  }
  Bytes ReadFile(std::string_view name) const;
  std::string ReadText(std::string_view name) const {
    const Bytes bytes = ReadFile(name);
    return {bytes.begin(), bytes.end()};
  }
  bool Exists(std::string_view name) const {
    return std::filesystem::symlink_status(Path(name)).type() !=
           std::filesystem::file_type::not_found;
  }
  // Sets the last-write time in seconds since 1970.
  void SetTime(std::string_view name, std::int64_t seconds) const {
    SetTimeOf(Path(name), seconds);
  }
  std::int64_t GetTime(std::string_view name) const { return TimeOf(Path(name)); }
  // The sorted names of everything below `name`, relative to it, with '/' as separator and after
  // directories.
  std::vector<std::string> List(std::string_view name = "") const;

  // Overwrites one byte; truncates a file.
  void Damage(std::string_view name, std::size_t offset, std::uint8_t byte) const;
  void Truncate(std::string_view name, std::uintmax_t size) const {
    std::filesystem::resize_file(Path(name), size);
  }

 private:
  const std::filesystem::path root;
};

// A file of a tree: text-like contents of the given size, made from the name.  A name that ends in
// '/' is a directory.
struct TreeEntry {
  std::string_view name;
  std::size_t size = 0;
};

// Makes the files and their directories below `below`, each with a different last-write time.
void MakeTree(const TestFolder& folder, std::string_view below,
              std::initializer_list<TreeEntry> entries);

// The differences between two trees in names, bytes and times in whole seconds, as in a patch;
// empty if they are equal.  Directories are compared only if `withDirectories`.
std::string CompareTrees(const std::filesystem::path& expected, const std::filesystem::path& actual,
                         bool withDirectories = false);

// Incompressible and compressible bytes; the same for the same seed on every machine.
Bytes RandomBytes(std::size_t size, std::uint32_t seed = 1);
Bytes TextBytes(std::size_t size, std::uint32_t seed = 1);

}  // namespace kozor::test
