// PowerLossTest.cpp - the state of the disk after a power loss in the middle of a change.
//
// The change runs once with its writes, truncations, flushes and renames recorded.  Then every
// state is constructed in which a power loss at any moment could leave the disk, and the archive in
// it is read: it must hold the old members or the new ones.
//
// The model of the disk: flushed data is present.  Of later changes to a file's data any may be
// present or missing, and a write may be partial.  Changes of names reach the disk in order, at the
// latest when their directory is flushed.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

// One line of the log that FaultyCalls.cpp writes, with the bytes after it.
struct Change {
  std::string verb;
  std::size_t number = 0;  // offset of a write, size after a truncation
  std::string bytes;
  std::string path;
  std::string newPath;
};

std::vector<Change> ReadLog(const fs::path& path) {
  std::ifstream log(path, std::ios::binary);
  std::vector<Change> changes;
  for (std::string line; std::getline(log, line);) {
    std::istringstream fields(line);
    Change change;
    std::size_t count = 0;
    fields >> change.verb >> change.number >> count >> std::ws;
    std::getline(fields, change.path, '\t');
    std::getline(fields, change.newPath, '\t');
    change.bytes.resize(count);
    log.read(change.bytes.data(), static_cast<std::streamsize>(change.bytes.size()));
    changes.push_back(change);
  }
  return changes;
}

// A file on the disk: the data that is certainly present, and the changes that may be.
struct File {
  std::string flushed;
  std::vector<Change> pending;
};

void Apply(std::string& bytes, const Change& change) {
  if (change.verb == "truncate") return bytes.resize(change.number);
  bytes.resize(std::max(bytes.size(), change.number + change.bytes.size()));
  bytes.replace(change.number, change.bytes.size(), change.bytes);
}

// All possible contents of a file after a power loss: with none, all, one, all but one, and all up
// to one of the pending changes, the last one complete or partial.
std::set<std::string> PossibleContents(const File& file) {
  const std::size_t count = file.pending.size();
  std::set<std::string> contents;
  const auto add = [&](const auto& isThere) {
    std::string bytes = file.flushed;
    for (std::size_t i = 0; i < count; ++i) {
      if (isThere(i)) Apply(bytes, file.pending[i]);
    }
    contents.insert(bytes);
  };
  add([](std::size_t) { return true; });
  for (std::size_t one = 0; one < count; ++one) {
    add([&](std::size_t i) { return i == one; });
    add([&](std::size_t i) { return i != one; });
    add([&](std::size_t i) { return i < one; });
    std::string torn = file.flushed;
    for (std::size_t i = 0; i < one; ++i) Apply(torn, file.pending[i]);
    Change half = file.pending[one];
    if (half.verb != "write") continue;
    half.bytes.resize(half.bytes.size() / 2);
    Apply(torn, half);
    contents.insert(torn);
  }
  return contents;
}

using Names = std::map<std::string, std::shared_ptr<File>>;

// A disk on which the recorded changes happen.
class Disk {
 public:
  explicit Disk(const Names& names) : current(names), onDisk(names) {}

  void Do(const Change& change) {
    if (change.verb == "create" || change.verb == "rename" || change.verb == "remove") {
      ChangeNames(change);
    } else if (const auto found = current.find(change.path); found != current.end()) {
      ChangeData(*found->second, change);
    } else if (change.verb == "flush") {  // a directory: nothing else is flushed
      onDisk = current;
      pendingNames.clear();
    }
  }

  // All files that a path can lead to after a power loss now.  `missing` receives whether it can
  // lead to none.
  std::set<std::string> PossibleContentsOf(const std::string& path, bool& missing) const {
    std::set<std::string> contents;
    Names names = onDisk;
    for (std::size_t done = 0;; ++done) {
      const auto found = names.find(path);
      if (found == names.end()) {
        missing = true;
      } else {
        contents.merge(PossibleContents(*found->second));
      }
      if (done == pendingNames.size()) return contents;
      names = pendingNames[done];
    }
  }

 private:
  void ChangeNames(const Change& change) {
    auto entry = current.extract(change.path);
    if (change.verb == "create") current[change.path] = std::make_shared<File>();
    if (change.verb == "rename" && entry) current[change.newPath] = entry.mapped();
    pendingNames.push_back(current);
  }
  static void ChangeData(File& file, const Change& change) {
    if (change.verb != "flush") return file.pending.push_back(change);
    for (const Change& pending : file.pending) Apply(file.flushed, pending);
    file.pending.clear();
  }

  Names current;                    // as running programs see them
  Names onDisk;                     // certain after a power loss
  std::vector<Names> pendingNames;  // the states since, in their order
};

struct Row {
  const char* name;
  const char* words;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.words;
}

class FaultsPowerLoss : public testing::TestWithParam<Row> {
 protected:
  std::string InFolder(const std::string& command) const {
    return "cd '" + folder.Path("now").string() + "' && " + command;
  }
  static std::string Kozor(const std::string& words) { return "'" KOZOR_PROGRAM "' " + words; }

  // The contents of an archive with these bytes, as extracted by the program, or the reason if it
  // is damaged.
  std::string Reading(const std::string& bytes) {
    const auto [known, isNew] = readings.try_emplace(bytes);
    if (!isNew) return known->second;
    folder.WriteFile("crashed/a.lzh", bytes);
    const CommandResult result = RunCommand(
        "cd '" + folder.Path("crashed").string() + "' && rm -rf out && mkdir out && " +
        Kozor("extract a.lzh -d out") + " && find out -type f -exec cksum {} + | sort -k 3");
    known->second = std::to_string(result.status) + "\n" + result.output;
    return known->second;
  }

  TestFolder folder;
  std::map<std::string, std::string> readings;  // by the archive's bytes
};

TEST_P(FaultsPowerLoss, LeavesTheOldArchiveOrTheNew) {
  MakeTree(folder, "now/src", {{"a.txt", 100}, {"b.bin", 150000}, {"c.txt", 3000}});
  MakeTree(folder, "now/more", {{"a.txt", 70000}, {"d.txt", 5000}});
  ASSERT_EQ(RunCommand(InFolder(Kozor("add a.lzh -C src ."))).status, 0);
  const std::string before = folder.ReadText("now/a.lzh");
  const std::string log = folder.Path("log").string();
  const CommandResult run = RunCommand(InFolder(
      "KOZOR_DISK='" + log + "' LD_PRELOAD='" KOZOR_FAULTY_CALLS "' " + Kozor(GetParam().words)));
  ASSERT_EQ(run.status, 0) << run.output;
  const std::string oldReading = Reading(before);
  const std::string newReading = Reading(folder.ReadText("now/a.lzh"));
  ASSERT_NE(oldReading, newReading);

  const std::string path = folder.Path("now/a.lzh").string();
  auto archive = std::make_shared<File>();
  archive->flushed = before;
  Disk disk({{path, archive}});
  const std::vector<Change> changes = ReadLog(log);
  ASSERT_GT(changes.size(), 3U);
  bool canBeMissing = false;
  for (std::size_t i = 0; i <= changes.size(); ++i) {
    for (const std::string& bytes : disk.PossibleContentsOf(path, canBeMissing)) {
      const std::string reading = Reading(bytes);
      ASSERT_TRUE(reading == oldReading || reading == newReading)
          << "after " << i << " of " << changes.size() << " changes:\n"
          << reading;
    }
    ASSERT_FALSE(canBeMissing) << "after " << i << " of " << changes.size() << " changes";
    if (i < changes.size()) disk.Do(changes[i]);
  }
  std::string last;
  for (const std::string& bytes : disk.PossibleContentsOf(path, canBeMissing))
    last = Reading(bytes);
  EXPECT_EQ(last, newReading) << "the change is not on the disk when the program ends";
  std::printf("%zu changes, %zu archives read\n", changes.size(), readings.size());
}

INSTANTIATE_TEST_SUITE_P(, FaultsPowerLoss,
                         testing::Values(Row{"Append", "add a.lzh -C more d.txt"},
                                         Row{"Replace", "add --overwrite a.lzh -C more ."},
                                         Row{"New", "add --new a.lzh -C more ."},
                                         Row{"FromMemory", "add a.lzh --stdin e < src/b.bin"},
                                         Row{"InWorkDirectory",
                                             "add --overwrite --work-dir /dev/shm a.lzh -C more ."},
                                         Row{"Delete", "delete a.lzh b.bin"}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace kozor::test
