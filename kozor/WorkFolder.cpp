// WorkFolder.cpp - see WorkFolder.h.
#include "WorkFolder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string_view>
#include <utility>

#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr std::string_view kPrefix = ".kozor-";
constexpr std::size_t kDigits = 16;

std::string UniqueName() {
  std::random_device random;
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "%.*s%08x%08x", static_cast<int>(kPrefix.size()),
                kPrefix.data(), random(), random());
  return name.data();
}

bool IsWorkName(std::string_view name) {
  return name.size() == kPrefix.size() + kDigits && name.starts_with(kPrefix) &&
         name.find_first_not_of("0123456789abcdef", kPrefix.size()) == std::string_view::npos;
}

// Removes everything in an open directory; ignores errors.
void Empty(HostHandle directory) {
  for (const std::string& name : NamesIn(directory)) {
    if (RemoveFile(directory, name)) continue;
    {
      const Descriptor below = OpenFolder(directory, name);
      if (!below.IsOpen()) continue;
      Empty(below.Number());
    }
    RemoveEmptyFolder(directory, name);
  }
}

void RemoveLeftovers(HostHandle parent) {
  for (const std::string& name : NamesIn(parent)) {
    if (!IsWorkName(name)) continue;
    Descriptor folder = HoldLeftover(parent, name);
    if (!folder.IsOpen()) continue;
    Empty(folder.Number());
    RemoveHeldFolder(parent, name, folder);
  }
}

}  // namespace

WorkFolder::WorkFolder(HostHandle parentDirectory) : parent(OpenFolder(parentDirectory, ".")) {
  RemoveLeftovers(parent.Number());
  while (!directory.IsOpen()) {
    name = UniqueName();
    directory = MakeHeldFolder(parent.Number(), name);
  }
}

WorkFolder::~WorkFolder() {
  try {
    Empty(directory.Number());
  } catch (const std::exception&) {  // no memory: the next run removes it
  }
  RemoveHeldFolder(parent.Number(), name, directory);
}

std::string WorkFolder::LibraryPathOf(const std::string& file) const {
  return LibraryPath(PathIn(directory.Number(), file));
}

void WorkFolder::RequireRoom(std::uint64_t bytes) const {
  constexpr const char* kName = "room";
  Descriptor file = CreateNewFile(directory.Number(), kName);
  try {
    Reserve(file.Number(), bytes);
  } catch (const FileFailure&) {
    file.Close();
    Remove(kName);
    throw;
  }
  file.Close();
  Remove(kName);
}

void WorkFolder::Remove(const std::string& file) const {
  RemoveFile(directory.Number(), file);
}

bool WorkFolder::IgnoresCase() const {
  if (!ignoresCase) {
    std::string capitals = name;
    for (char& c : capitals) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    ignoresCase = LookAt(parent.Number(), capitals).has_value();
  }
  return *ignoresCase;
}

unsigned int WorkFolder::FirstMode(HostHandle newFile) const {
  std::call_once(modeIsKnown, [&] { firstMode = ModeOf(newFile); });
  return firstMode;
}

TemporaryFolder::TemporaryFolder() try : parent(std::filesystem::temp_directory_path()) {
  const Descriptor directory = OpenDirectory(parent);
  if (!directory.IsOpen()) FailBySystem();
  folder.emplace(directory.Number());
} catch (const FileFailure& failure) {
  throw Failure("the directory for temporary files (" + std::string(kTemporaryVariable) +
                "): " + failure.what());
}

NewFile::NewFile(const WorkFolder& workFolder, std::string fileName, std::uint64_t bytes)
    : folder(workFolder), name(std::move(fileName)) {
  constexpr std::uint64_t kMostInBuffer = 256 << 10;
  const auto length = static_cast<std::size_t>(bytes);
  if (bytes > kMostInBuffer) {
    file = CreateNewFile(folder.Directory(), name);
    contents = ReserveAndMap(file.Number(), bytes);
  } else {
    buffer = std::make_unique_for_overwrite<unsigned char[]>(length);
    contents = {buffer.get(), length};
  }
}

void NewFile::Unmap() {
  if (!buffer) program::Unmap(contents);
  contents = {};
}

void NewFile::Finish(unsigned int mode, std::uint64_t lastWrite) {
  if (buffer) {
    file = CreateNewFile(folder.Directory(), name);
    WriteAll(file.Number(), std::as_bytes(contents));
  }
  Unmap();
  const bool hasMode = mode == folder.FirstMode(file.Number());
  FinishFile(file, hasMode ? 0 : mode, lastWrite);
}

std::span<unsigned char> ScratchMemory::Get(std::uint64_t bytes) {
  constexpr std::uint64_t kMostInMemory = 4 << 20;
  file.reset();
  if (bytes <= kMostInMemory) {
    const auto size = static_cast<std::size_t>(bytes);
    memory.resize(std::max(memory.size(), size));
    return std::span(memory).first(size);
  }
  if (!folder) folder.emplace();
  file = std::make_unique<NewFile>(folder->Folder(), "scratch", bytes);
  folder->Folder().Remove("scratch");
  return file->Contents();
}

}  // namespace kozor::program
