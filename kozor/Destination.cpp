// Destination.cpp - see Destination.h.
#include "Destination.h"

#include <algorithm>
#include <span>
#include <vector>

#include "Console.h"
#include "Failure.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40;
constexpr std::size_t kBlockBytes = 1 << 16;

// Whether a link in `folder` may lead out of the destination, whatever links exist inside it.
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
  return target.has_root_path();
}

}  // namespace

Destination::Destination(fs::path directory, Links linksRule)
    : root(std::move(directory)), links(linksRule) {}

const OpenFolderHandle& Destination::Root() {
  if (!rootDirectory) {
    MakeDirectories(root);
    auto opened = std::make_shared<Descriptor>(OpenDirectory(root));
    if (!opened->IsOpen()) throw Failure(Visible(root.string()) + ": " + LastSystemError());
    rootDirectory = std::move(opened);
    root = Canonical(root).value_or(root);
  }
  return rootDirectory;
}

std::optional<fs::path> Destination::Inside(const fs::path& real) const {
  const auto [end, rest] = std::mismatch(root.begin(), root.end(), real.begin(), real.end());
  if (end != root.end()) return std::nullopt;
  fs::path inside;
  for (auto part = rest; part != real.end(); ++part) inside /= *part;
  return inside;
}

// The target of a link that existed in the destination: relative to the destination, or absolute if
// it leads out and may.  A dangling link counts as leading out, because a file created through it
// would be at its target.
fs::path Destination::Resolve(const fs::path& link) {
  const fs::path whole = root / link;
  const std::optional<fs::path> real = Canonical(whole);
  if (real) {
    if (const auto inside = Inside(*real)) return *inside;
  }
  if (links == Links::StayInside) {
    throw FileFailure("refused: the link " + Visible(whole.string()) +
                      " leads out of the destination");
  }
  return real ? *real : WeaklyCanonical(whole);
}

// Opens a directory below the destination; `reached` receives its real path.
OpenFolderHandle Destination::Open(const fs::path& path, fs::path& reached, int linksLeft) {
  constexpr std::size_t kMostLevels = 32;
  lastDirectory = nullptr;
  lastIsNew = false;
  if (path.has_root_directory()) {
    MakeDirectories(path);
    reached = path;
    auto opened = std::make_shared<Descriptor>(OpenDirectory(path));
    if (!opened->IsOpen()) FailBySystem();
    return opened;
  }
  OpenFolderHandle directory = Root();
  reached.clear();
  auto part = path.begin();
  auto level = levels.begin();
  for (; part != path.end() && level != levels.end() && part->string() == level->name;
       ++part, ++level) {
    directory = level->directory;
    lastIsNew = level->isNew;
    reached /= *part;
  }
  levels.erase(level, levels.end());
  for (; part != path.end(); ++part) {
    auto next = std::make_shared<Descriptor>(
        OpenOrMakeFolder(directory->Number(), part->string(), lastIsNew));
    if (!next->IsOpen()) {
      const std::string problem = LastSystemError();
      if (!IsLink(directory->Number(), part->string())) throw FileFailure(problem);
      if (linksLeft == 0) throw FileFailure("too many levels of symbolic links");
      fs::path rest = Resolve(reached / *part);
      while (++part != path.end()) rest /= *part;
      return Open(rest, reached, linksLeft - 1);
    }
    directory = std::move(next);
    reached /= *part;
    if (levels.size() < kMostLevels) levels.push_back({part->string(), directory, lastIsNew});
  }
  return directory;
}

void Destination::OpenFolderOf(const fs::path& path) {
  const fs::path folder = path.parent_path();
  if (lastDirectory && folder == lastAsked) return;
  lastDirectory = Open(folder, lastReached, kMostLinks);
  lastAsked = folder;
}

Place Destination::FindNew(const fs::path& path, FinalLink finalLink) {
  OpenFolderOf(path);
  if (lastIsNew) return {lastDirectory, path.filename().string(), lastReached};
  return Find(path, finalLink);
}

Place Destination::Find(const fs::path& path, FinalLink finalLink) {
  OpenFolderOf(path);
  Place place{lastDirectory, path.filename().string(), lastReached};
  place.occupant = LookAt(place);
  const bool isLink = place.occupant && place.occupant->isLink;
  if (finalLink == FinalLink::IsMeant || !isLink) return place;
  return Find(Resolve(lastReached / place.name), FinalLink::IsMeant);
}

WorkFolder& Destination::Work() {
  if (!work) work.emplace(Root()->Number());
  return *work;
}

std::uint64_t Destination::FreeBytes() {
  Root();
  return FreeBytesAt(root);
}

bool Destination::MoveIn(const std::string& workName, const Place& place, Existing existing) {
  const bool replace = existing == Existing::IsReplaced;
  const Move move = MoveTo(Work().Directory(), workName, place.Directory(), place.name, replace);
  if (move != Move::OtherFileSystem) return move == Move::Done;
  // The place is on another file system, mounted below the destination.
  const WorkFolder besidePlace(place.Directory());
  const HostHandle beside = besidePlace.Directory();
  CopyFileIn(Work().Directory(), workName, beside, workName);
  if (MoveTo(beside, workName, place.Directory(), place.name, replace) != Move::Done) return false;
  Work().Remove(workName);
  return true;
}

bool Destination::HasContentsOf(const std::string& workName, const Place& place) {
  const std::string link = LinkTarget(Work().Directory(), workName);
  if (!link.empty()) return link == LinkTarget(place.Directory(), place.name);
  const Descriptor ours = OpenFile(Work().Directory(), workName);
  const Descriptor theirs = OpenFile(place.Directory(), place.name);
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
  FinishDirectory(Open(path, ignored, kMostLinks)->Number(), mode, lastWrite);
}

void Destination::PrepareLink(const std::string& workName, const Place& place,
                              const fs::path& target, std::uint64_t lastWrite) {
  if (links == Links::StayInside && MayLeadOut(place.folder, target)) {
    throw FileFailure("refused: the link to " + Visible(target.string()) +
                      " leads out of the destination (--allow-outside creates it)");
  }
  try {
    MakeLink(Work().Directory(), workName, target, lastWrite);
  } catch (const FileFailure& failure) {
    throw FileFailure("a symbolic link can't be made here: " + std::string(failure.what()));
  }
}

}  // namespace kozor::program
