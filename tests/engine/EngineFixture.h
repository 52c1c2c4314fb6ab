// EngineFixture.h - the archiver module as a caller uses it, and a work folder.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "tests/engine/Engine.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;
using testing::IsEmpty;

inline constexpr std::uint32_t kSearchBelow = 0x801202;
inline constexpr std::uint32_t kSearchHere = 0x801102;

// The results of UnlhaExtractMem.
struct Extracted {
  int code = 0;
  Bytes bytes = {};
  std::int32_t time = 0;
  std::uint16_t attribute = 0;
  std::uint32_t written = 0;
};

// Compares without printing megabytes.
inline testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  const auto [at, ignored] =
      std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  return testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size()
                                     << ", alike up to " << at - actual.begin();
}

class EngineTest : public testing::Test {
 protected:
  ~EngineTest() override {
    engine.KillOwnerWindowEx(nullptr);
    listener = nullptr;
  }

  int Command(const std::string& line) { return engine.Command(nullptr, line.c_str(), nullptr, 0); }
  // Every command line has the library's own options.  `a` with a base directory, both below the
  // test's folder.
  int Add(const std::string& archive, const std::string& base,
          const std::vector<std::string>& names, const std::string& switches = "-w0") {
    const std::string line = std::string("a") + kOptions + " " + switches + Quoted(archive) +
                             " \"" + folder.Lib(base) + "\\\"" + Joined(names);
    return Command(line);
  }
  int AddTree(const std::string& archive, const std::string& directory) {
    return Add(archive, directory, {}, "-w0 -d1");
  }
  int Delete(const std::string& archive, const std::vector<std::string>& names) {
    const std::string line = std::string("d") + kOptions + " -w0" + Quoted(archive) + Joined(names);
    return Command(line);
  }
  int Compress(const std::string& archive, const std::string& name, const Bytes& data) {
    const std::string line = kOptions + std::string(" -w0") + Quoted(archive) + " \"" + name + '"';
    return engine.CompressMem(nullptr, line.c_str(), data.data(),
                              static_cast<std::uint32_t>(data.size()), nullptr, nullptr, nullptr);
  }
  Extracted Extract(const std::string& archive, const std::string& name) {
    const auto found = Search(archive, '"' + name + '"');
    return found.empty() ? Extracted{.code = -1} : ExtractInto(archive, name, found[0].size);
  }
  // With a buffer of exactly `capacity` bytes.
  Extracted ExtractInto(const std::string& archive, const std::string& name, std::size_t capacity) {
    const std::string line = kOptions + Quoted(archive) + " \"" + name + '"';
    Extracted result;
    result.bytes.resize(capacity);
    result.code = engine.ExtractMem(nullptr, line.c_str(), result.bytes.data(),
                                    static_cast<std::uint32_t>(capacity), &result.time,
                                    &result.attribute, &result.written);
    EXPECT_LE(result.written, capacity);
    return result;
  }

  // 0 if the archive can't be opened.
  HARC Open(const std::string& archive, std::uint32_t mode = kSearchBelow) {
    return engine.OpenArchive(nullptr, folder.Lib(archive).c_str(), mode);
  }
  bool Opens(const std::string& archive) { return engine.CloseArchive(Open(archive)) == 0; }
  // All members that a search finds; none if the archive can't be opened.
  std::vector<UnlhaMemberRecord> Search(const std::string& archive, const std::string& text = "*.*",
                                        std::uint32_t mode = kSearchBelow) {
    std::vector<UnlhaMemberRecord> records;
    const HARC handle = Open(archive, mode);
    UnlhaMemberRecord record{};
    for (int found = engine.FindFirst(handle, text.c_str(), &record); found == 0;
         found = engine.FindNext(handle, &record)) {
      records.push_back(record);
    }
    engine.CloseArchive(handle);
    return records;
  }
  // Their names; fails the test if the archive can't be opened.
  std::vector<std::string> Names(const std::string& archive, const std::string& text = "*.*",
                                 std::uint32_t mode = kSearchBelow) {
    EXPECT_TRUE(Opens(archive)) << archive;
    std::vector<std::string> names;
    for (const UnlhaMemberRecord& record : Search(archive, text, mode))
      names.emplace_back(record.name);
    return names;
  }

  // Calls `told` for each report while the object lives; it returns 0 to stop the archiver.
  using Told = std::function<int(UINT state, const UnlhaProgressRecord& record)>;
  void Listen(Told told) {
    listener = std::move(told);
    EXPECT_EQ(engine.SetOwnerWindowEx(nullptr, Callback), 1);
  }

  std::string Quoted(const std::string& name) const { return " \"" + folder.Lib(name) + '"'; }
  // Of the first member of x.lzh, which we wrote: "-lh5-".
  std::string MethodOfFirstMember() const {
    const Bytes archive = folder.ReadFile("x.lzh");
    return {archive.begin() + 2, archive.begin() + 7};
  }
  // Temporaries of the archiver in the folder.
  std::vector<std::string> Temporaries() const {
    std::vector<std::string> found;
    for (const std::string& name : folder.List()) {
      if (name.find("lhtmp") != std::string::npos) found.push_back(name);
    }
    return found;
  }

  TestFolder folder;
  Engine engine;

 private:
  static constexpr const char* kOptions = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

  static int CALLBACK Callback(HWND, UINT, UINT state, void* record) {
    return listener(state, *static_cast<UnlhaProgressRecord*>(record));
  }
  static std::string Joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += " \"" + word + '"';
    return line;
  }

  static inline Told listener;
};

}  // namespace kozor::test
