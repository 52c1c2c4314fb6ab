// FaultTest.cpp - every system call and every allocation of a run fails once, in a run of its own.
//
// A run goes through once with its calls counted.  Then it is repeated for call after call, with
// each error that fits, and for allocation after allocation.  Each run must end by itself; say why
// when its exit code isn't 0, and be complete when it is; leave of each file the old or the new
// contents; and leave nothing else, or what the next run removes.
//
// A spread of all that is run.  With KOZOR_FAULT_POINTS=all in the environment it is everything.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "tests/support/TestFolder.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

constexpr int kShort = 0;  // in place of an error: a transfer of half the bytes

// Errors that a call can fail with, by its name.
std::vector<int> ErrorsOf(const std::string& call) {
  static const std::pair<std::string_view, std::vector<int>> kErrors[] = {
      {" open ", {EACCES, EMFILE, EIO, EINTR, ENOMEM, ENOSPC}},
      {" read pread ", {EIO, EINTR, kShort}},
      {" write pwrite ", {ENOSPC, EIO, EINTR, kShort}},
      {" ftruncate ", {EIO, EINTR}},
      {" fallocate ", {ENOSPC, EIO, EINTR, EOPNOTSUPP}},
      {" posix_fallocate ", {ENOSPC, EIO, EINTR}},
      {" fsync fdatasync ", {EIO, ENOSPC}},
      {" close lseek readlink ", {EIO}},
      {" mmap fdopendir ", {ENOMEM}},
      {" mkdir mkdirat symlinkat ", {EACCES, ENOSPC}},
      {" rename ", {EACCES, EIO, ENOSPC}},
      {" unlink ", {EACCES, EIO}},
      {" opendir ", {EACCES, EMFILE, ENOMEM}},
      {" flock ", {EINTR, ENOLCK}},
      {" fcntl ", {EINTR, ENOLCK, EMFILE}},
      {" pthread_create ", {EAGAIN}},
  };
  for (const auto& [calls, errors] : kErrors) {
    if (calls.find(' ' + call + ' ') != calls.npos) return errors;
  }
  return {EACCES, EIO, ENOMEM};
}

// What stands below a folder, by name.
struct Entry {
  std::string contents;  // kind, permission bits and bytes
  std::int64_t time = 0;

  bool Equals(const Entry& other, bool withTime) const {
    return contents == other.contents && (!withTime || time == other.time);
  }
};
using Snapshot = std::map<std::string, Entry>;

constexpr const char* kAddNew = "add --new a.lzh -C ../more .";

struct Row {
  const char* name;
  const char* words;       // of the command line, run in the folder "run"
  const char* start;       // the folder that "run" is a copy of; null for an empty one
  bool withTimes = false;  // whether times of files count
};

void PrintTo(const Row& row, std::ostream* out) {
  *out << row.words;
}

// Runs that only look must say the same; the others need not.
bool OnlyLooks(const Row& row) {
  static const std::set<std::string_view> kLooking = {"list", "info", "test", "verify", "print"};
  const std::string_view words = row.words;
  return kLooking.contains(words.substr(0, words.find(' ')));
}

class Faults : public testing::TestWithParam<Row> {
 protected:
  void SetUp() override {
    // Where there is another file system, a work directory on it.
    const fs::path memory = fs::is_directory("/dev/shm") ? "/dev/shm" : folder.Path();
    elsewhere = memory / folder.Path().filename();
    fs::create_directory(elsewhere);
    fs::create_directory_symlink(elsewhere, folder.Path("memory"));
    MakeTree(folder, "src", {{"a.txt", 100}, {"b.bin", 150000}, {"sub/c.txt", 3000}});
    MakeTree(folder, "more", {{"a.txt", 70000}, {"d.txt", 5000}});
    MakeTree(folder, "big", {{"e.bin", 1400000}, {"f.bin", 300000}});
    fs::create_directory_symlink("sub", folder.Path("src/link"));
    fs::permissions(folder.Path("src/sub/c.txt"), fs::perms{0640});
    fs::create_directories(folder.Path("old"));
    fs::create_directories(folder.Path("set"));
    MustRun("add ../old/a.lzh -C ../src a.txt b.bin sub");
    MustRun("backup --id 7 --volume-size 100K ../set/v-#.vol -C ../src .");
    fs::copy(folder.Path("set"), folder.Path("bare"));
    fs::remove(folder.Path("bare/v-catalogue.vol.json"));
    // An archive that has just been written is read once more.
    for (const char* made : {"old", "set", "bare"}) Age(made);
    MakeTree(folder, "out", {{"out/a.txt", 33}, {"out/sub/other.txt", 44}});
    std::ofstream(folder.Path("out/out/a.txt")) << "older";
  }

  void TearDown() override {
    EXPECT_TRUE(fs::is_empty(elsewhere));
    fs::remove_all(elsewhere);
  }

  void MustRun(const std::string& words) {
    fs::create_directories(folder.Path("run"));
    const CommandResult outcome = Kozor(words, {});
    ASSERT_EQ(outcome.status, 0) << outcome.output;
  }

  // Runs the program in the folder "run" with the faulty calls set up by "NAME=VALUE".
  CommandResult Kozor(const std::string& words, const std::string& setting) const {
    const std::string preload = setting.empty() ? "" : "LD_PRELOAD='" KOZOR_FAULTY_CALLS "' ";
    return RunCommand("cd '" + folder.Path("run").string() + "' && set -f && timeout 60 env " +
                      preload + setting + " '" KOZOR_PROGRAM "' " + words + " < /dev/null");
  }

  void StartAnew() {
    fs::remove_all(folder.Path("run"));
    if (GetParam().start == nullptr) {
      fs::create_directory(folder.Path("run"));
    } else {
      fs::copy(folder.Path(GetParam().start), folder.Path("run"), fs::copy_options::recursive);
    }
    Age("run");
  }

  void Age(const std::string& name) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.Path(name))) {
      if (entry.is_regular_file()) fs::last_write_time(entry.path(), fs::file_time_type());
    }
  }

  Snapshot Now() const {
    Snapshot found;
    for (const std::string& name : folder.List("run")) {
      const std::string inRun = "run/" + name;
      const fs::path path = folder.Path(inRun);
      const fs::file_status status = fs::symlink_status(path);
      const auto mode = static_cast<unsigned>(status.permissions());
      Entry& entry = found[name];
      entry.contents = std::to_string(mode) + ' ';
      if (fs::is_symlink(status)) entry.contents += fs::read_symlink(path).string();
      if (!fs::is_regular_file(status)) continue;
      entry.contents += folder.ReadText(inRun);
      entry.time = TimeOf(path);
    }
    return found;
  }

  // What is wrong with a run that a fault was in; empty when nothing is.
  std::string OffenceOf(const CommandResult& outcome) {
    const auto tells = [&](const char* text) {
      return outcome.output.find(text) != std::string::npos;
    };
    constexpr int kTooLong = 124;  // the exit code of timeout; signals are above it
    if (outcome.status >= kTooLong) return "crashes";
    const bool withTimes = GetParam().withTimes && !tells("its time can't be set");
    const Snapshot now = Now();
    std::string litter;
    for (const auto& [name, contents] : now) {
      const bool isOld = before.contains(name) && before[name].Equals(contents, withTimes);
      const bool isNew = after.contains(name) && after[name].Equals(contents, withTimes);
      if (isOld || isNew) continue;
      if (!before.contains(name) && !after.contains(name)) {
        litter = name;
      } else if (outcome.status == 0 || !MayBePartOfNew(name, outcome.output)) {
        return name + " is neither old nor new";
      }
    }
    for (const auto& [name, contents] : before) {
      if (after.contains(name) && !now.contains(name)) return name + " is gone";
    }
    if (outcome.status != 0) {
      if (!tells("kozor: ")) return "says nothing";
    } else {
      for (const auto& [name, contents] : after) {
        const bool isThere = now.contains(name) && now.at(name).Equals(contents, withTimes);
        if (!isThere) return "exit 0 without " + name;
      }
      if (OnlyLooks(GetParam()) && outcome.output != said) return "exit 0 and other words";
    }
    if (litter.empty()) return "";
    // It may be there because the fault hit the very call that removes it.
    Kozor(GetParam().words, "");
    for (const auto& [name, contents] : Now()) {
      if (!before.contains(name) && !after.contains(name)) return "leaves " + name;
    }
    ++cleanedLater;
    return "";
  }

  // An archive without the files that were named and left out, unless it would replace another one;
  // what a backup has written before it failed.
  bool MayBePartOfNew(const std::string& name, const std::string& output) {
    if (std::string_view(GetParam().words).starts_with("backup ")) return true;
    const bool mayLack = output.find("left out") != std::string::npos &&
                         GetParam().words != std::string_view(kAddNew);
    if (!name.ends_with(".lzh") || !mayLack) return false;
    const bool hasOld = before.contains(name);
    const std::string oldNames = hasOld ? Kozor("list --names ../old/a.lzh", "").output : "";
    const std::string names = Kozor("list --names " + name, "").output;
    std::istringstream lines(oldNames);
    for (std::string line; std::getline(lines, line);) {
      if (names.find(line) == std::string::npos) return false;
    }
    return Kozor("test " + name, "").status == 0;
  }

  void Try(const std::string& setting, const std::string& what) {
    StartAnew();
    const CommandResult outcome = Kozor(GetParam().words, setting);
    const std::string offence = OffenceOf(outcome);
    ++points;
    if (offence.empty()) return;
    ++offences;
    ADD_FAILURE() << setting << " (" << what << "): " << offence << "\nexit " << outcome.status
                  << ": " << outcome.output;
  }

  TestFolder folder;
  fs::path elsewhere;
  Snapshot before;
  Snapshot after;
  std::string said;  // by the run without a fault
  int points = 0;
  int offences = 0;
  int cleanedLater = 0;
};

TEST_P(Faults, LeaveTheOldOrTheNewAndAreTold) {
  StartAnew();
  before = Now();
  const CommandResult whole =
      Kozor(GetParam().words, "KOZOR_CALLS=" + folder.Path("calls").string());
  ASSERT_EQ(whole.status, 0) << whole.output;
  said = whole.output;
  after = Now();

  const char* const wanted = std::getenv("KOZOR_FAULT_POINTS");
  const bool all = wanted != nullptr && std::string_view(wanted) == "all";
  constexpr std::size_t kSample = 10;  // of calls, and of allocations
  std::vector<std::string> calls;
  std::ifstream log(folder.Path("calls"));
  for (std::string line; std::getline(log, line);) calls.push_back(line);
  ASSERT_TRUE(!calls.empty() && calls.back().starts_with("allocations "));
  const std::size_t allocations = std::stoul(calls.back().substr(12));
  calls.pop_back();
  ASSERT_GE(calls.size(), kSample);
  ASSERT_GE(allocations, kSample);

  std::size_t turn = 0;
  const std::size_t step = all ? 1 : calls.size() / kSample;
  for (std::size_t call = 0; call < calls.size(); call += step) {
    const std::vector<int> errors = ErrorsOf(calls[call]);
    for (std::size_t i = 0; i < errors.size(); ++i) {
      if (!all && i != turn % errors.size()) continue;
      Try("KOZOR_FAULT=" + std::to_string(call + 1) + ":" + std::to_string(errors[i]), calls[call]);
    }
    ++turn;
  }
  const int ofCalls = points;
  const std::size_t allocationStep = all ? 1 : allocations / kSample;
  for (std::size_t i = 1; i <= allocations; i += allocationStep) {
    Try("KOZOR_ALLOC=" + std::to_string(i), "malloc");
  }
  std::printf("%d faults of %zu calls, %d of %zu allocations, %d offences, %d cleaned later\n",
              ofCalls, calls.size(), points - ofCalls, allocations, offences, cleanedLater);
}

constexpr Row kRows[] = {
    {"Append", "add a.lzh -C ../more d.txt", "old"},
    {"Replace", "add --overwrite a.lzh -C ../more .", "old"},
    {"Create", "add a.lzh -C ../src .", nullptr},
    {"CreateOnThreads", "add a.lzh -C ../big .", nullptr},
    {"CreateInPlaceOfOld", kAddNew, "old"},
    {"AppendTree", "add a.lzh --dir ../more --overwrite", "old"},
    {"InWorkDirectory", "add --overwrite --work-dir ../memory a.lzh -C ../more .", "old"},
    {"MakeProgram", "add --sfx a.lzh -C ../more d.txt", "old"},
    {"Delete", "delete a.lzh b.bin a.txt", "old"},
    {"DeleteAll", "delete a.lzh *.*", "old"},
    {"Extract", "extract --force ../old/a.lzh -d out", "out", true},
    {"Backup", "backup --id 7 --volume-size 100K v-#.vol -C ../src .", nullptr},
    {"BackupWithoutCatalogue",
     "backup --no-catalogue --id 7 --volume-size 100K v-#.vol -C ../src .", nullptr},
    {"Restore", "restore --force ../set/v-#.vol -d out", "out", true},
    {"RestoreWithoutCatalogue", "restore --force ../bare/v-#.vol -d out", "out", true},
    {"List", "list -l ../old/a.lzh", nullptr},
    {"Test", "test ../old/a.lzh", nullptr},
    {"Print", "print ../old/a.lzh a.txt", nullptr},
    {"InfoOfVolume", "info ../set/v-1.vol", nullptr},
    {"Verify", "verify ../set/v-#.vol", nullptr},
};

INSTANTIATE_TEST_SUITE_P(, Faults, testing::ValuesIn(kRows),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace kozor::test
