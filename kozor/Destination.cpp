// Destination.cpp - see Destination.h.
#include "Destination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <span>
#include <vector>

#include "Console.h"
#include "Failure.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr int kFolder = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int kReadFile = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
constexpr int kMostLinks = 40;
constexpr mode_t kAnyMode = 0777;  // the process's mask applies

[[noreturn]] void FailBySystem() {
  throw FileFailure(SystemErrorText(errno));
}

bool IsLink(int directory, const char* name) {
  struct stat state {};
  return fstatat(directory, name, &state, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(state.st_mode);
}

// Empty for what is no link.
std::string LinkTarget(int directory, const std::string& name) {
  std::array<char, 4096> target{};
  const ssize_t bytes = readlinkat(directory, name.c_str(), target.data(), target.size());
  return bytes < 0 ? "" : std::string(target.data(), static_cast<std::size_t>(bytes));
}

// Whether a link in a folder may lead out of the destination, whatever links stand in there.
bool MayLeadOut(const fs::path& folder, const fs::path& target) {
  auto depth = std::distance(folder.begin(), folder.end());
  bool hasGoneDown = false;
  for (const fs::path& part : target) {
    if (part != "..") {
      hasGoneDown = true;
    } else if (hasGoneDown || depth-- == 0) {
      return true;
    }
  }
  return target.is_absolute();
}

// Opens one directory in another, and makes it first where it is missing.
int OpenOrMake(int directory, const char* name) {
  const int opened = openat(directory, name, kFolder);
  if (opened >= 0 || errno != ENOENT) return opened;
  if (mkdirat(directory, name, kAnyMode) != 0 && errno != EEXIST) return -1;
  return openat(directory, name, kFolder);
}

// Fills as much of the block as the file has left; returns how much.
std::size_t ReadBlock(int file, std::span<char> block) {
  std::size_t got = 0;
  while (got < block.size()) {
    const ssize_t bytes = read(file, block.data() + got, block.size() - got);
    if (bytes == 0) break;
    if (bytes < 0 && errno == EINTR) continue;
    if (bytes < 0) FailBySystem();
    got += static_cast<std::size_t>(bytes);
  }
  return got;
}

constexpr std::size_t kBlockBytes = 1 << 16;

// A file's contents and metadata into a new file.  Attributes that the target's file system doesn't
// take are left out.
void CopyFile(int fromDirectory, const std::string& from, int toDirectory, const std::string& to) {
  const Descriptor source(openat(fromDirectory, from.c_str(), kReadFile));
  struct stat state {};
  if (!source.IsOpen() || fstat(source.Number(), &state) != 0) FailBySystem();
  Descriptor target(openat(toDirectory, to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!target.IsOpen()) FailBySystem();
  std::vector<char> block(kBlockBytes);
  while (const std::size_t got = ReadBlock(source.Number(), block)) {
    WriteAll(target.Number(), std::as_bytes(std::span(block).first(got)));
  }
  const std::array<timespec, 2> times = {state.st_atim, state.st_mtim};
  if (fchmod(target.Number(), state.st_mode & 07777) != 0) FailBySystem();
  if (futimens(target.Number(), times.data()) != 0) FailBySystem();
  if (!target.Finish()) FailBySystem();
}

enum class Move { Done, Occupied, OtherFileSystem };

Move MoveTo(int fromDirectory, const std::string& from, const Place& place,
            Destination::Existing existing) {
  const auto rename = [&](unsigned flags) {
    return renameat2(fromDirectory, from.c_str(), place.directory, place.name.c_str(), flags) == 0;
  };
  if (existing == Destination::Existing::Stays) {
    if (rename(RENAME_NOREPLACE)) return Move::Done;
    if (errno == EEXIST) return Move::Occupied;
    // A file system without that: look first.
    const bool isUnknown = errno == EINVAL || errno == ENOSYS;
    if (isUnknown && LookAt(place)) return Move::Occupied;
    if (!isUnknown && errno != EXDEV) FailBySystem();
  }
  if (rename(0)) return Move::Done;
  if (errno != EXDEV) FailBySystem();
  return Move::OtherFileSystem;
}

}  // namespace

std::optional<Occupant> LookAt(const Place& place) {
  struct stat state {};
  if (fstatat(place.directory, place.name.c_str(), &state, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return std::nullopt;
    FailBySystem();
  }
  return Occupant{.isDirectory = S_ISDIR(state.st_mode),
                  .isFile = S_ISREG(state.st_mode),
                  .isLink = S_ISLNK(state.st_mode),
                  .isReadOnly = S_ISREG(state.st_mode) && (state.st_mode & 0222) == 0,
                  .size = static_cast<std::uint64_t>(state.st_size),
                  .time = state.st_mtim.tv_sec,
                  .nanoseconds = state.st_mtim.tv_nsec};
}

Destination::Destination(fs::path directory, Links linksRule)
    : root(std::move(directory)), links(linksRule) {}

int Destination::Root() {
  if (!rootDirectory.IsOpen()) {
    std::error_code error;
    fs::create_directories(root, error);
    rootDirectory = Descriptor(open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!rootDirectory.IsOpen()) {
      throw Failure(Visible(root.string()) + ": " + SystemErrorText(errno));
    }
    root = fs::canonical(root, error);
  }
  return rootDirectory.Number();
}

std::optional<fs::path> Destination::Inside(const fs::path& real) const {
  const auto [end, rest] = std::mismatch(root.begin(), root.end(), real.begin(), real.end());
  if (end != root.end()) return std::nullopt;
  fs::path inside;
  for (auto part = rest; part != real.end(); ++part) inside /= *part;
  return inside;
}

// Where a link that stood in the destination leads: relative to it, or absolute when it leads out
// and may.  A link that leads nowhere counts as one that leads out: a file made through it would
// stand where it points.
fs::path Destination::Resolve(const fs::path& link) {
  std::error_code error;
  const fs::path whole = root / link;
  fs::path real = fs::canonical(whole, error);
  if (!error) {
    if (const auto inside = Inside(real)) return *inside;
  }
  if (links == Links::StayInside) {
    throw FileFailure("refused: the link " + Visible(whole.string()) +
                      " leads out of the destination");
  }
  if (error) real = fs::weakly_canonical(whole, error);
  if (error) throw FileFailure(error.message());
  return real;
}

// Opens a directory below the destination; `reached` is where it really is.  Good until the next
// call.
int Destination::Open(const fs::path& path, fs::path& reached, int linksLeft) {
  constexpr std::size_t kMostLevels = 32;
  lastDirectory = -1;
  if (path.is_absolute()) {
    std::error_code error;
    fs::create_directories(path, error);
    reached = path;
    beyondLevels = Descriptor(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!beyondLevels.IsOpen()) FailBySystem();
    return beyondLevels.Number();
  }
  int directory = Root();
  reached.clear();
  auto part = path.begin();
  auto level = levels.begin();
  for (; part != path.end() && level != levels.end() && *part == level->name; ++part, ++level) {
    directory = level->directory.Number();
    reached /= *part;
  }
  levels.erase(level, levels.end());
  for (; part != path.end(); ++part) {
    Descriptor next(OpenOrMake(directory, part->c_str()));
    if (!next.IsOpen()) {
      const int error = errno;
      if (!IsLink(directory, part->c_str())) throw FileFailure(SystemErrorText(error));
      if (linksLeft == 0) throw FileFailure(SystemErrorText(ELOOP));
      fs::path rest = Resolve(reached / *part);
      while (++part != path.end()) rest /= *part;
      return Open(rest, reached, linksLeft - 1);
    }
    directory = next.Number();
    reached /= *part;
    if (levels.size() < kMostLevels) {
      levels.push_back({part->string(), std::move(next)});
    } else {
      beyondLevels = std::move(next);
    }
  }
  return directory;
}

Place Destination::Find(const fs::path& path, FinalLink finalLink) {
  const fs::path folder = path.parent_path();
  if (lastDirectory < 0 || folder != lastAsked) {
    lastDirectory = Open(folder, lastReached, kMostLinks);
    lastAsked = folder;
  }
  Place place{lastDirectory, path.filename().string(), lastReached};
  place.occupant = LookAt(place);
  const bool isLink = place.occupant && place.occupant->isLink;
  if (finalLink == FinalLink::IsMeant || !isLink) return place;
  return Find(Resolve(lastReached / place.name), FinalLink::IsMeant);
}

WorkFolder& Destination::Work() {
  if (!work) work.emplace(Root());
  return *work;
}

std::uint64_t Destination::FreeBytes() {
  std::error_code error;
  Root();
  const fs::space_info space = fs::space(root, error);
  return error ? 0 : space.available;
}

bool Destination::MoveIn(const std::string& workName, const Place& place, Existing existing) {
  const Move move = MoveTo(Work().Directory(), workName, place, existing);
  if (move != Move::OtherFileSystem) return move == Move::Done;
  // The place is on a file system mounted below the destination.
  const WorkFolder besidePlace(place.directory);
  CopyFile(Work().Directory(), workName, besidePlace.Directory(), workName);
  if (MoveTo(besidePlace.Directory(), workName, place, existing) != Move::Done) return false;
  unlinkat(Work().Directory(), workName.c_str(), 0);
  return true;
}

bool Destination::HasContentsOf(const std::string& workName, const Place& place) {
  const std::string link = LinkTarget(Work().Directory(), workName);
  if (!link.empty()) return link == LinkTarget(place.directory, place.name);
  const Descriptor ours(openat(Work().Directory(), workName.c_str(), kReadFile));
  const Descriptor theirs(openat(place.directory, place.name.c_str(), kReadFile));
  if (!ours.IsOpen() || !theirs.IsOpen()) return false;
  std::vector<char> first(kBlockBytes);
  std::vector<char> second(kBlockBytes);
  for (;;) {
    const std::size_t got = ReadBlock(ours.Number(), first);
    if (ReadBlock(theirs.Number(), second) != got) return false;
    if (!std::equal(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(got),
                    second.begin())) {
      return false;
    }
    if (got == 0) return true;
  }
}

void Destination::MakeFolder(const fs::path& path) {
  fs::path ignored;
  Open(path, ignored, kMostLinks);
}

void Destination::FinishFolder(const fs::path& path, unsigned int mode, std::uint64_t lastWrite) {
  fs::path ignored;
  const int folder = Open(path, ignored, kMostLinks);
  const timespec time = HostTime(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  if (utimensat(folder, ".", times.data(), 0) != 0) FailBySystem();
  if (mode != 0 && fchmodat(folder, ".", mode, 0) != 0) FailBySystem();
}

void Destination::PrepareLink(const std::string& workName, const Place& place,
                              const fs::path& target, std::uint64_t lastWrite) {
  if (links == Links::StayInside && MayLeadOut(place.folder, target)) {
    throw FileFailure("refused: the link to " + Visible(target.string()) +
                      " leads out of the destination (--allow-outside makes it)");
  }
  if (symlinkat(target.c_str(), Work().Directory(), workName.c_str()) != 0) FailBySystem();
  const timespec time = HostTime(lastWrite);
  const std::array<timespec, 2> times = {time, time};
  utimensat(Work().Directory(), workName.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
}

}  // namespace kozor::program
