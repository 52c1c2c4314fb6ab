// TestFolder.cpp - see TestFolder.h.
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>

namespace kozor::test {

namespace fs = std::filesystem;

Bytes Join(std::initializer_list<Bytes> pieces) {
  Bytes all;
  for (const Bytes& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
  return all;
}

TestFolder::~TestFolder() {
  std::error_code ignored;
  MakeRemovable(root);
  fs::remove_all(root, ignored);
}

fs::path TestFolder::Path(std::string_view name) const {
  return name.empty() ? root : root / fs::path(std::u8string(name.begin(), name.end()));
}

void TestFolder::WriteFile(std::string_view name, std::span<const std::uint8_t> bytes) const {
  const fs::path path = Path(name);
  fs::create_directories(path.parent_path());
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw std::runtime_error("can't write " + path.string());
}

Bytes TestFolder::ReadFile(std::string_view name) const {
  std::ifstream in(Path(name), std::ios::binary);
  if (!in) throw std::runtime_error("can't read " + Path(name).string());
  Bytes bytes(static_cast<std::size_t>(fs::file_size(Path(name))));
  in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

std::vector<std::string> TestFolder::List(std::string_view name) const {
  std::vector<std::string> names;
  const fs::path below = Path(name);
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(below)) {
    std::string relative = entry.path().lexically_relative(below).generic_string();
    if (entry.is_directory() && !entry.is_symlink()) relative += '/';
    names.push_back(std::move(relative));
  }
  std::sort(names.begin(), names.end());
  return names;
}

void TestFolder::Damage(std::string_view name, std::size_t offset, std::uint8_t byte) const {
  std::fstream file(Path(name), std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file.put(static_cast<char>(byte));
  if (!file.flush()) throw std::runtime_error("can't damage " + Path(name).string());
}

void MakeTree(const TestFolder& folder, std::string_view below,
              std::initializer_list<TreeEntry> entries) {
  std::int64_t time = 1'000'000'000;
  for (const TreeEntry& entry : entries) {
    const std::string name =
        std::string(below) + (below.empty() ? "" : "/") + std::string(entry.name);
    if (name.ends_with('/')) {
      fs::create_directories(folder.Path(name));
      continue;
    }
    const auto seed = static_cast<std::uint32_t>(std::hash<std::string_view>{}(entry.name));
    folder.WriteFile(name, TextBytes(entry.size, seed));
    folder.SetTime(name, time);
    time += 86'399;
  }
}

namespace {

// A line for each file, and if wanted for each directory.
std::set<std::string> Described(const fs::path& top, bool withDirectories) {
  std::set<std::string> lines;
  constexpr auto kFollow = fs::directory_options::follow_directory_symlink;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top, kFollow)) {
    const std::string name = entry.path().lexically_relative(top).generic_string();
    if (entry.is_directory() && withDirectories) lines.insert(name + '/');
    if (!entry.is_regular_file()) continue;
    std::ostringstream bytes;
    if (entry.file_size() != 0) bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    const std::size_t sum = std::hash<std::string>()(bytes.str());
    lines.insert(name + ": " + std::to_string(entry.file_size()) + " bytes, sum " +
                 std::to_string(sum) + ", time " + std::to_string(TimeOf(entry.path())));
  }
  return lines;
}

}  // namespace

std::string CompareTrees(const fs::path& expected, const fs::path& actual, bool withDirectories) {
  const std::set<std::string> left = Described(expected, withDirectories);
  const std::set<std::string> right = Described(actual, withDirectories);
  std::string differences;
  for (const std::string& line : left) {
    if (!right.contains(line)) differences += "- " + line + '\n';
  }
  for (const std::string& line : right) {
    if (!left.contains(line)) differences += "+ " + line + '\n';
  }
  return differences;
}

Bytes RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 generator(seed);
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(generator() >> 24);
  return bytes;
}

Bytes TextBytes(std::size_t size, std::uint32_t seed) {
  static constexpr std::array<std::string_view, 16> kWords = {
      "volume ", "file ",   "the ",  "archive ", "of ",  "and ",    "member ", "header\r\n",
      "a ",      "medium ", "size ", "window ",  "bit ", "length ", "12,345 ", "\r\n"};
  std::mt19937 generator(seed);
  Bytes bytes;
  bytes.reserve(size + 16);
  while (bytes.size() < size) {
    const std::string_view word = kWords[generator() % kWords.size()];
    bytes.insert(bytes.end(), word.begin(), word.end());
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace kozor::test
