// ResponseFile.cpp - see ResponseFile.h.
#include "engine/commands/ResponseFile.h"

#include <algorithm>

#include "engine/container/Failure.h"
#include "engine/container/File.h"

namespace kozor::commands {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLineEnds = "\r\n\x1A";  // 0x1A ended text files once

std::string ReadAll(const std::string& path) {
  container::File file;
  if (!file.Open(path, container::File::Mode::Read)) {
    throw container::Failure(container::ResultCode::ResponseFileNotRead);
  }
  std::string text(static_cast<std::size_t>(file.Size()), '\0');
  text.resize(file.ReadAt(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()}));
  return text;
}

std::string NameOf(std::string_view line) {
  const std::size_t begin = std::min(line.find_first_not_of(kBlanks), line.size());
  const std::size_t end = line.find_last_not_of(kBlanks) + 1;
  std::string name(line.substr(begin, end - begin));
  std::erase(name, '"');
  return name;
}

}  // namespace

std::vector<std::string> ReadResponseFile(const std::string& path) {
  const std::string text = ReadAll(path);
  std::vector<std::string> names;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t end = std::min(rest.find_first_of(kLineEnds), rest.size());
    std::string name = NameOf(rest.substr(0, end));
    if (!name.empty()) names.push_back(std::move(name));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return names;
}

}  // namespace kozor::commands
